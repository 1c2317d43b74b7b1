#include "documents/requireXmlText.hpp"

#include <algorithm>
#include <cstddef>

#include "CommandError.hpp"
#include "libtarn/util/XmlCheck.hpp"

namespace tarn {

using libtarn::util::XmlFault;
using libtarn::util::XmlFaults;

namespace {

constexpr std::size_t START_SIZE = 12;

// Looks at the text in a section where only characters and their encoding can be wrong.
XmlFaults faultsOf(const std::string& text) {
  std::string document = "<p><![CDATA[" + text;
  std::replace(document.begin() + START_SIZE, document.end(), ']', ' ');
  return libtarn::util::checkXml(document + "]]></p>", 1);
}

}  // namespace

bool isXmlText(const std::string& text) { return faultsOf(text).list.empty(); }

void requireXmlText(const std::string& option, const std::string& text, const char* changed) {
  const std::size_t found = text.find_first_of(changed);
  if (found != std::string::npos) {
    throwUsageError(option + ": other XML parsers would read another character", text, found);
  }
  const XmlFaults faults = faultsOf(text);
  if (faults.list.empty()) return;
  const XmlFault& fault = faults.list.front();
  throwUsageError(option + ": " + fault.message, text, fault.offset - START_SIZE);
}

}  // namespace tarn
