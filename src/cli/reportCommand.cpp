#include <algorithm>
#include <string_view>

#include "commands.hpp"
#include "json.hpp"
#include "model/LibTarnCmData.hpp"
#include "model/LibTarnDocumentInternal.hpp"
#include "model/LibTarnExtension.hpp"
#include "model/LibTarnManagedObjectImp.hpp"
#include "model/List.hpp"
#include "model/Scalar.hpp"
#include "model/Structure.hpp"
#include "model/TarnDomDocument.hpp"
#include "model/validation/Validator.hpp"
#include "model/validation/Violation.hpp"
#include "outputFile.hpp"
#include "reportPage.hpp"

namespace tarn {

using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnExtension;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::LibTarnManagedObjectImp;
using libtarn::model::List;
using libtarn::model::Scalar;
using libtarn::model::Structure;
using libtarn::model::validation::Validator;
using libtarn::model::validation::Violation;

namespace {

// Of the document and of each object.
constexpr std::size_t MOST_VIOLATIONS = 1000;
constexpr std::string_view DATA_MARK = "@TARN_DATA@";

const char* textOrEmpty(const char* text) { return text ? text : ""; }

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

// Validated alone, on the path that it has in the document.
Json violationsOf(const LibTarnManagedObjectImp& object) {
  std::vector<Violation> violations;
  Validator validator(&violations, MOST_VIOLATIONS);
  validator.appendToPath(libtarn::model::LibTarnDocumentInternal::TAG_NAME, nullptr);
  validator.appendToPath(libtarn::model::LibTarnCmData::TAG_NAME, nullptr);
  object.accept(validator);
  return messagesOf(violations);
}

Json objectOf(const LibTarnManagedObject& object) {
  const auto& element = dynamic_cast<const LibTarnManagedObjectImp&>(object);
  Json lists = Json::array();
  for (const auto& entry : object.getListParameters()) lists.push_back(listOf(*entry.second));
  Json extensions = Json::array();
  for (const LibTarnExtension* extension = object.getExtensions(); extension;
       extension = extension->getNextSiblingElement()) {
    extensions.push_back(extensionOf(*extension));
  }
  return Json::array({textOrEmpty(object.getDistName().getText()), textOrEmpty(object.getClass()),
                      element.getAttribute("operation", ""), textOrEmpty(object.getVersion()),
                      pairsOf(object.getScalarParameters()), lists, extensions,
                      violationsOf(element)});
}

// Those that are no object's: of the root, of cmData and of its header.
Json violationsAround(const LibTarnDocument& document) {
  std::vector<Violation> violations;
  Validator validator(&violations, MOST_VIOLATIONS);
  document.getItsTarnDomDocument()->getRootElement()->accept(validator);
  const std::string objectPath = std::string(libtarn::model::LibTarnDocumentInternal::TAG_NAME) +
                                 " > " + libtarn::model::LibTarnCmData::TAG_NAME + " > " +
                                 LibTarnManagedObject::TAG_NAME;
  const auto isOfObject = [&objectPath](const Violation& violation) {
    return violation.path.compare(0, objectPath.size(), objectPath) == 0;
  };
  violations.erase(std::remove_if(violations.begin(), violations.end(), isOfObject),
                   violations.end());
  return messagesOf(violations);
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

std::string dataOf(const std::string& path, const LibTarnDocument& document) {
  std::string data = "{\"file\":" + scriptText(path) +
                     ",\"violations\":" + scriptText(violationsAround(document)) + ",\"objects\":[";
  const libtarn::model::LibTarnCmData* const cmData = document.getLibTarnCmData();
  if (cmData) {
    const char* separator = "\n";
    for (const LibTarnManagedObject* object : cmData->getLibTarnManagedObjects()) {
      data += separator + scriptText(objectOf(*object));
      separator = ",\n";
    }
  }
  return data + "]}";
}

}  // namespace

void reportCommand(const std::string& path, const std::string& output) {
  LibTarnDocument document(libtarn::model::OutOfMemory::Throw);
  loadDocument(path, document);
  std::string page = REPORT_PAGE;
  page.replace(page.find(DATA_MARK), DATA_MARK.size(), dataOf(path, document));
  if (output == "-") {
    writeOutput(page);
  } else {
    replaceFile(output, page);
  }
}

}  // namespace tarn
