#include "output/reportPage.hpp"

#include <algorithm>
#include <string_view>
#include <vector>

#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/LibTarnExtension.hpp"
#include "libtarn/model/List.hpp"
#include "libtarn/model/Scalar.hpp"
#include "libtarn/model/Structure.hpp"
#include "libtarn/model/validation/Violation.hpp"
#include "libtarn/model/validation/validateObject.hpp"
#include "output/HostLog.hpp"
#include "output/json.hpp"
#include "output/operationText.hpp"
#include "pageTemplate.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnExtension;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::List;
using libtarn::model::Scalar;
using libtarn::model::Structure;
using libtarn::model::validation::Violation;

namespace {

// Of the document and of each object.
constexpr std::size_t MOST_VIOLATIONS = 1000;
// Of all violations on the page, with their paths, which it does not show.
constexpr std::size_t MOST_VIOLATION_BYTES = std::size_t{16} << 20U;
constexpr std::string_view DATA_MARK = "@TARN_DATA@";

Json pairOf(const Scalar& scalar) {
  return Json::array({textOrEmpty(scalar.getName()), scalar.getValue()});
}

template <class Collection>
Json pairsOf(const Collection& scalars) {
  Json pairs = Json::array();
  for (const auto& entry : scalars) pairs.push_back(pairOf(*entry.second));
  return pairs;
}

Json listOf(const List& list) {
  Json values = Json::array();
  for (const Scalar* value = list.getScalarValues(); value;
       value = value->getNextSiblingElement()) {
    values.push_back(value->getValue());
  }
  for (const Structure* item = list.getStructuredValues(); item;
       item = item->getNextSiblingElement()) {
    values.push_back(pairsOf(item->getComponents()));
  }
  return Json::array({textOrEmpty(list.getName()), values});
}

Json extensionOf(const LibTarnExtension& extension) {
  Json pairs = Json::array();
  for (const Scalar* parameter = extension.getParameters(); parameter;
       parameter = parameter->getNextSiblingElement()) {
    pairs.push_back(pairOf(*parameter));
  }
  return Json::array({textOrEmpty(extension.getName()), pairs});
}

Json messagesOf(const std::vector<Violation>& violations) {
  Json messages = Json::array();
  for (const Violation& violation : violations) messages.push_back(violation.message);
  return messages;
}

/// Violations of one part of the document: messages for the page, and how many it leaves out.
struct Findings {
  Json messages;
  std::size_t leftOut;
};

/// Looks for violations, and bounds what all of them take together.
class ViolationSearch {
 public:
  explicit ViolationSearch(LibTarnDocument& document) : document_(document) {}

  /// Those of one object. It is validated alone, on the path that it has in the document.
  Findings ofObject(const LibTarnManagedObject& object) {
    std::vector<Violation> violations;
    std::size_t count = 0;
    libtarn::model::validation::validateObject(object, &violations, MOST_VIOLATIONS, bytesLeft_,
                                               &count);
    objectCount_ += count;
    return findings(violations, count);
  }

  /// Those that are no object's: of the root, of cmData and of its header. Asked for when all
  /// objects have been, since their violations are found again and taken off.
  Findings aroundObjects() {
    std::vector<Violation> violations;
    std::size_t all = 0;
    document_.validate(&violations, MOST_VIOLATIONS, MOST_VIOLATION_BYTES, &all);
    HostLog::takeError();  // what the violations say, too
    const std::string objectPath = std::string(LibTarnDocument::TAG_NAME) + " > " +
                                   LibTarnCmData::TAG_NAME + " > " + LibTarnManagedObject::TAG_NAME;
    const auto isOfObject = [&objectPath](const Violation& violation) {
      return violation.path.compare(0, objectPath.size(), objectPath) == 0;
    };
    violations.erase(std::remove_if(violations.begin(), violations.end(), isOfObject),
                     violations.end());
    return findings(violations, std::max(violations.size(), all - std::min(all, objectCount_)));
  }

  /// Of all that were looked for.
  std::size_t leftOut() const { return leftOut_; }

 private:
  Findings findings(const std::vector<Violation>& violations, std::size_t count) {
    for (const Violation& violation : violations) {
      bytesLeft_ -= std::min(bytesLeft_, violation.message.size() + violation.path.size());
    }
    leftOut_ += count - violations.size();
    return {messagesOf(violations), count - violations.size()};
  }

  LibTarnDocument& document_;
  std::size_t bytesLeft_ = MOST_VIOLATION_BYTES;
  std::size_t objectCount_ = 0;
  std::size_t leftOut_ = 0;
};

Json objectOf(const LibTarnManagedObject& object, ViolationSearch& search) {
  Json lists = Json::array();
  for (const auto& entry : object.getListParameters()) lists.push_back(listOf(*entry.second));
  Json extensions = Json::array();
  for (const LibTarnExtension* extension = object.getExtensions(); extension;
       extension = extension->getNextSiblingElement()) {
    extensions.push_back(extensionOf(*extension));
  }
  const Findings findings = search.ofObject(object);
  return Json::array({textOrEmpty(object.getDistName().getText()), textOrEmpty(object.getClass()),
                      operationText(object), textOrEmpty(object.getVersion()),
                      pairsOf(object.getScalarParameters()), lists, extensions, findings.messages,
                      findings.leftOut});
}

// Nothing in the data may end the script element that it stands in.
std::string scriptText(const Json& json) {
  std::string text;
  for (const char c : jsonText(json)) {
    if (c == '<') {
      text += "\\u003c";
    } else {
      text += c;
    }
  }
  return text;
}

std::string dataOf(const std::string& path, const LibTarnDocument& document,
                   ViolationSearch& search) {
  std::string data = "{\"file\":" + scriptText(path) + ",\"objects\":[";
  const LibTarnCmData* const cmData = document.getLibTarnCmData();
  if (cmData) {
    const char* separator = "\n";
    for (const LibTarnManagedObject* object : cmData->getLibTarnManagedObjects()) {
      data += separator + scriptText(objectOf(*object, search));
      separator = ",\n";
    }
  }
  const Findings findings = search.aroundObjects();
  return data + "],\"violations\":" + scriptText(findings.messages) +
         ",\"leftOut\":" + std::to_string(findings.leftOut) + "}";
}

}  // namespace

ReportPage reportPage(const std::string& path, LibTarnDocument& document) {
  ViolationSearch search(document);
  ReportPage page{REPORT_PAGE, 0};
  page.text.replace(page.text.find(DATA_MARK), DATA_MARK.size(), dataOf(path, document, search));
  page.violationsLeftOut = search.leftOut();
  return page;
}

}  // namespace tarn
