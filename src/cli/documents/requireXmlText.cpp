#include "documents/requireXmlText.hpp"

#include <vector>

#include "CommandError.hpp"
#include "libtarn/util/XmlCheck.hpp"

namespace tarn {

using libtarn::util::XmlFault;
using libtarn::util::XmlFaults;

void requireXmlText(const std::string& option, const std::string& text) {
  // In a section where only the characters and their encoding can be wrong.
  const std::string start = "<p><![CDATA[";
  std::string characters = text;
  for (char& c : characters) {
    if (c == ']') c = ' ';
  }
  const std::string document = start + characters + "]]></p>";
  const XmlFaults faults = libtarn::util::checkXml(document, 1);
  if (faults.list.empty()) return;
  const XmlFault& fault = faults.list.front();
  throwUsageError(option + ": " + fault.message, text, fault.offset - start.size());
}

}  // namespace tarn
