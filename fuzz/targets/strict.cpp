// The second reading of any text: faults in order and within the text, whatever the limit. A text
// without faults is accepted by the parser, and what the parser accepts is printed as a text that
// has no faults but those that its names and values brought along. For a document of the model, the
// quick check of what is printed finds as many faults as the whole reading.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "../support/Text.hpp"
#include "../support/check.hpp"
#include "libtarn/DomDocument.hpp"
#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/util/XmlCheck.hpp"
#include "libtarn/util/checkPrinted.hpp"
#include "libtarn/util/dumpTarnDocument.hpp"

namespace {

using libtarn::util::checkXml;
using libtarn::util::checkXmlTags;
using libtarn::util::NO_OFFSET;
using libtarn::util::XmlFault;
using libtarn::util::XmlFaults;
using Kind = XmlFault::Kind;

constexpr std::size_t MOST_OF_A_MESSAGE = 300;  // bytes

bool isSame(const XmlFault& a, const XmlFault& b) {
  return a.kind == b.kind && a.offset == b.offset && a.message == b.message &&
         a.relatedOffset == b.relatedOffset && a.relatedMessage == b.relatedMessage;
}

void checkList(const XmlFaults& faults, std::size_t size) {
  fuzz::check(faults.list.size() == faults.count, "without a limit all faults are listed");
  std::size_t last = 0;
  for (const XmlFault& fault : faults.list) {
    fuzz::check(last <= fault.offset && fault.offset <= size, "faults are in order");
    last = fault.offset;
    fuzz::check(fault.relatedOffset == NO_OFFSET || fault.relatedOffset < fault.offset,
                "a second place is before the first");
    fuzz::check(fault.relatedMessage.empty() == (fault.relatedOffset == NO_OFFSET),
                "a second place has words");
    fuzz::check(!fault.message.empty() && fault.message.size() <= MOST_OF_A_MESSAGE &&
                    fault.relatedMessage.size() <= MOST_OF_A_MESSAGE,
                "messages are short");
  }
}

void checkLimit(const XmlFaults& all, std::string_view text, std::size_t limit) {
  const XmlFaults some = checkXml(text, limit);
  fuzz::check(some.count == all.count, "a limit changes no count");
  fuzz::check(some.list.size() == std::min(limit, all.count),
              "as many are listed as the limit says");
  for (std::size_t i = 0; i < some.list.size(); ++i) {
    fuzz::check(isSame(some.list[i], all.list[i]), "the first faults are listed");
  }
}

bool isOfEndTag(const XmlFault& fault) {
  return fault.kind == Kind::EndTagMismatched || fault.kind == Kind::EndTagMissing ||
         fault.kind == Kind::EndTagWithoutStart;
}

void checkTags(const XmlFaults& all, std::string_view text) {
  const XmlFaults tags = checkXmlTags(text);
  std::size_t count = 0;
  for (const XmlFault& fault : all.list) {
    if (!isOfEndTag(fault)) continue;
    fuzz::check(count < tags.list.size() && isSame(tags.list[count], fault),
                "the faults of end tags are those of the whole reading");
    ++count;
  }
  fuzz::check(count == tags.count && count == tags.list.size(), "there are no other end tags");
}

// What the parser reads as something that is printed without a fault.
bool isGoneWhenPrinted(Kind kind) {
  return kind == Kind::LessThanInValue || kind == Kind::MalformedReference ||
         kind == Kind::UnknownEntity || kind == Kind::DashesInComment ||
         kind == Kind::CdataEndInText || kind == Kind::MissingBlank;
}

// What stays in names and values, as it is or written out.
bool isOfCharacter(Kind kind) {
  return kind == Kind::NulByte || kind == Kind::ForbiddenCharacter || kind == Kind::InvalidUtf8 ||
         kind == Kind::ForbiddenReference;
}

// A reference to a letter is printed as the letter, whatever encoding is declared.
bool isLetterInAscii(const XmlFault& fault) {
  return fault.kind == Kind::Encoding && fault.relatedOffset != NO_OFFSET;
}

void checkPrinted(libDomXml::DomDocument& document, const XmlFaults& faults) {
  bool mayHaveCharacters = false;
  for (const XmlFault& fault : faults.list) {
    if (isOfCharacter(fault.kind)) {
      mayHaveCharacters = true;
    } else if (!isGoneWhenPrinted(fault.kind)) {
      return;
    }
  }
  for (const XmlFault& fault : checkXml(document.printDocument()).list) {
    fuzz::check((mayHaveCharacters && isOfCharacter(fault.kind)) || isLetterInAscii(fault),
                "what is printed has no faults");
  }
}

void checkQuickCheck(char* text) {
  libtarn::model::LibTarnDocument document;
  if (document.parse(text, false) != 0) return;
  std::string printed;
  libtarn::util::dumpTarnDocument(document, printed);
  // Not terminated, so that every read past the end is seen.
  const std::vector<char> bytes(printed.begin(), printed.end());
  const XmlFaults quick = libtarn::util::checkPrinted({bytes.data(), bytes.size()});
  const XmlFaults whole = checkXml(printed);
  fuzz::check(quick.count == whole.count && quick.list.size() == whole.list.size(),
              "the quick check finds what the whole reading finds");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Not terminated, so that every read past the end is seen.
  const std::unique_ptr<char[]> bytes(new char[size]);
  if (size > 0) std::memcpy(bytes.get(), data, size);
  const std::string_view view(bytes.get(), size);
  const XmlFaults faults = checkXml(view);
  checkList(faults, size);
  checkLimit(faults, view, size % 4);
  checkTags(faults, view);

  checkQuickCheck(fuzz::Text(data, size).get());
  // Of a document type only the nesting is read, and in another way; the parser ends at a NUL.
  if (view.find("<!DOCTYPE") != std::string_view::npos) return 0;
  if (view.find('\0') != std::string_view::npos) return 0;
  fuzz::Text text(data, size);
  libDomXml::DomDocument document(false);
  const bool isParsed = document.rapidParse(text.get()) == 0;
  fuzz::check(isParsed || faults.count > 0, "a text without faults is accepted");
  if (isParsed) checkPrinted(document, faults);
  return 0;
}
