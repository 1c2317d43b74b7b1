#include "documents/writtenText.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "CommandError.hpp"
#include "documents/documentFile.hpp"
#include "files/TextFile.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"
#include "libtarn/util/TextPosition.hpp"
#include "libtarn/util/XmlCheck.hpp"
#include "libtarn/util/checkPrinted.hpp"
#include "libtarn/util/dumpElement.hpp"
#include "libtarn/util/dumpTarnDocument.hpp"
#include "output/Progress.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;
using libtarn::util::checkXml;
using libtarn::util::NO_OFFSET;
using libtarn::util::XmlFault;
using libtarn::util::XmlFaults;
using Kind = XmlFault::Kind;

namespace {

// Bounds the memory for the faults of a file that is looked through for one of them.
constexpr std::size_t MOST_FAULTS = 10'000;

/// A fault of a result, and the object that has it.
struct ResultFault {
  XmlFault fault;              // its offset is in the printed text
  std::string distName;        // empty outside of objects
  std::size_t textOffset = 0;  // of the object in the text that was loaded, or NO_OFFSET
};

// Prints each object, since the printed text does not say which object a place is in.
ResultFault locate(Document& document, const std::string& printed, XmlFault&& first) {
  const auto* const cmData = document.getLibTarnCmData();
  if (!cmData) return {std::move(first), "", 0};
  std::string text;
  for (const LibTarnManagedObject* object : cmData->getLibTarnManagedObjects()) {
    libtarn::util::dumpElement(*object, text);
    XmlFaults faults = checkXml(text, 1);
    if (faults.list.empty()) continue;
    XmlFault& fault = faults.list.front();
    fault.offset += printed.find(text);
    return {std::move(fault), textOrEmpty(object->getDistName().getText()),
            document.getTextOffset(*object)};
  }
  return {std::move(first), "", 0};
}

bool isOfCharacter(Kind kind) {
  return kind == Kind::NulByte || kind == Kind::ForbiddenCharacter || kind == Kind::InvalidUtf8 ||
         kind == Kind::ForbiddenReference;
}

// A reference to a character is printed as the character.
bool canComeFrom(const XmlFault& input, const XmlFault& result) {
  return input.kind == result.kind || (isOfCharacter(input.kind) && isOfCharacter(result.kind));
}

// Returns the offset in the file that was loaded, or NO_OFFSET for a fault that is not from there.
std::size_t findInInput(TextFile& file, const ResultFault& found) {
  if (found.textOffset == NO_OFFSET) return NO_OFFSET;
  const std::vector<char> text = file.read();
  for (const XmlFault& each : checkXml({text.data(), text.size() - 1}, MOST_FAULTS).list) {
    if (each.offset >= found.textOffset && canComeFrom(each, found.fault)) return each.offset;
  }
  return NO_OFFSET;
}

[[noreturn]] void throwNotXml(Document& document, const std::string& printed, XmlFault&& first) {
  const ResultFault found = locate(document, printed, std::move(first));
  std::string subject = document.path();
  std::string where;
  const bool canBeReadAgain = subject != "-";
  std::size_t offset = NO_OFFSET;
  if (canBeReadAgain) {
    TextFile file(subject);
    offset = findInInput(file, found);
    if (offset != NO_OFFSET) subject = subjectAt(subject, file.locate(offset));
  }
  if (offset == NO_OFFSET) {
    const auto place = libtarn::util::locate(printed.c_str(), found.fault.offset);
    where = fmt::format(", at {}:{} of the result", place.line, place.column);
  }
  if (!found.distName.empty()) subject = subjectOf(subject, found.distName);
  throw CommandError(
      Status::Malformed, subject,
      "XML parsers would refuse the result, which is not written: " + found.fault.message + where);
}

bool isLetterInAscii(const XmlFaults& faults) {
  return faults.count == 1 && faults.list.front().kind == Kind::Encoding &&
         faults.list.front().relatedOffset != NO_OFFSET;
}

// Returns `text`, which is valid UTF-8, with references for all characters that are not in ASCII.
// These are in values, where references mean the same, or checkXml() refuses the result.
std::string withReferences(std::string_view text) {
  std::string out;
  out.reserve(text.size() + text.size() / 8);
  for (std::size_t at = 0; at < text.size();) {
    const auto first = static_cast<unsigned char>(text[at]);
    if (first < 0x80U) {
      out += text[at++];
      continue;
    }
    const std::size_t size = first < 0xE0U ? 2 : first < 0xF0U ? 3 : 4;
    std::uint32_t code = first & (0x7FU >> size);
    for (std::size_t i = 1; i < size; ++i) {
      code = code << 6U | (static_cast<unsigned char>(text[at + i]) & 0x3FU);
    }
    out += fmt::format("&#{};", code);
    at += size;
  }
  return out;
}

}  // namespace

std::string writtenText(Document& document, const std::string& destination) {
  const Progress progress("Printing", destination);
  std::string text;
  libtarn::util::dumpTarnDocument(document, text);
  XmlFaults faults = libtarn::util::checkPrinted(text, 1);
  if (isLetterInAscii(faults)) {
    text = withReferences(text);
    faults = checkXml(text, 1);
  }
  if (faults.count > 0) throwNotXml(document, text, std::move(faults.list.front()));
  return text;
}

bool makeWritable(std::string& text, std::string& reason) {
  XmlFaults faults = checkXml(text, 1);
  if (isLetterInAscii(faults)) {
    text = withReferences(text);
    faults = checkXml(text, 1);
  }
  if (faults.count == 0) return true;
  const auto place = libtarn::util::locate(text.c_str(), faults.list.front().offset);
  reason = fmt::format("XML parsers would refuse it at {}:{}: {}", place.line, place.column,
                       faults.list.front().message);
  return false;
}

}  // namespace tarn
