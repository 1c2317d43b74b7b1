#include <algorithm>
#include <charconv>
#include <optional>
#include <string>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/documentFile.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/LibTarnExtension.hpp"
#include "libtarn/model/List.hpp"
#include "libtarn/model/Scalar.hpp"
#include "libtarn/model/Structure.hpp"
#include "libtarn/util/dumpElement.hpp"
#include "output/outputFile.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnExtension;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::List;
using libtarn::model::Scalar;
using libtarn::model::Structure;

namespace {

struct GetRequest {
  std::string file;
  std::string distName;
  std::string name;  ///< Of a value in the object; "" for the whole object.
};

/// The parts of "NAME[INDEX].COMPONENT" or "NAME[INDEX]".
struct ItemPath {
  std::string list;
  std::size_t index;  // from 1
  std::optional<std::string> component;
};

std::optional<ItemPath> itemPathOf(const std::string& name) {
  const std::size_t open = name.rfind('[');
  const std::size_t close = name.find(']', open == std::string::npos ? 0 : open);
  if (open == std::string::npos || close == std::string::npos) return std::nullopt;
  ItemPath path{name.substr(0, open), 0, std::nullopt};
  const char* const begin = name.data() + open + 1;
  const char* const end = name.data() + close;
  const auto [rest, error] = std::from_chars(begin, end, path.index);
  if (error != std::errc() || rest != end) return std::nullopt;
  if (close + 1 == name.size()) return path;
  if (name[close + 1] != '.') return std::nullopt;
  path.component = name.substr(close + 2);
  return path;
}

template <class Element>
const Element* elementAt(const Element* first, std::size_t index) {
  const Element* element = index > 0 ? first : nullptr;
  while (element && --index > 0) element = element->getNextSiblingElement();
  return element;
}

std::string lineOf(const Scalar& scalar) { return scalar.getValue() + std::string("\n"); }

// The components of an item: "NAME=VALUE" each, with tabs between them.
std::string lineOf(const Structure& item) {
  std::string line;
  for (const auto& entry : item.getComponents()) {
    if (!line.empty()) line += '\t';
    line += std::string(entry.first) + "=" + entry.second->getValue();
  }
  return line + "\n";
}

std::string linesOf(const List& list) {
  std::string lines;
  for (const Scalar* value = list.getScalarValues(); value;
       value = value->getNextSiblingElement()) {
    lines += lineOf(*value);
  }
  for (const Structure* item = list.getStructuredValues(); item;
       item = item->getNextSiblingElement()) {
    lines += lineOf(*item);
  }
  return lines;
}

std::optional<std::string> itemOf(const LibTarnManagedObject& object, const std::string& name) {
  const std::optional<ItemPath> path = itemPathOf(name);
  const List* const list = path ? object.getListParameter(path->list) : nullptr;
  if (!list) return std::nullopt;
  if (const Structure* const item = elementAt(list->getStructuredValues(), path->index)) {
    if (!path->component) return lineOf(*item);
    const Scalar* const component = item->getComponent(*path->component);
    return component ? std::optional(lineOf(*component)) : std::nullopt;
  }
  const Scalar* const value = elementAt(list->getScalarValues(), path->index);
  return value && !path->component ? std::optional(lineOf(*value)) : std::nullopt;
}

// Splits "EXTENSION.NAME" at the first "." that leads to a parameter.
std::optional<std::string> extensionParameterOf(const LibTarnManagedObject& object,
                                                const std::string& name) {
  for (std::size_t dot = name.find('.'); dot != std::string::npos; dot = name.find('.', dot + 1)) {
    const LibTarnExtension* const extension = object.getExtension(name.substr(0, dot));
    const Scalar* const found = extension ? extension->getParameter(name.substr(dot + 1)) : nullptr;
    if (found) return lineOf(*found);
  }
  return std::nullopt;
}

// Looks for the whole name first, since names may hold brackets and dots.
std::optional<std::string> valueOf(const LibTarnManagedObject& object, const std::string& name) {
  if (const Scalar* const scalar = object.getScalarParameter(name.c_str())) return lineOf(*scalar);
  if (const List* const list = object.getListParameter(name)) return linesOf(*list);
  std::optional<std::string> item = itemOf(object, name);
  return item ? item : extensionParameterOf(object, name);
}

// Not indented, although it stands in a document.
std::string textOf(const LibTarnManagedObject& object) {
  std::string text;
  libtarn::util::dumpElement(object, text, 0);
  return text;
}

Status getValue(const GetRequest& request) {
  const Document document(request.file);
  const LibTarnCmData* const cmData = document.getLibTarnCmData();
  const LibTarnManagedObject* const object =
      cmData ? cmData->getLibTarnManagedObject(request.distName.c_str()) : nullptr;
  const std::string subject = subjectOf(request.file, request.distName);
  if (!object) throw CommandError(Status::NothingMatched, subject, "no such object");
  if (request.name.empty()) {
    writeOutput(textOf(*object));
    return Status::Done;
  }
  const std::optional<std::string> value = valueOf(*object, request.name);
  if (!value) {
    throw CommandError(Status::NothingMatched, subject, "nothing named '" + request.name + "'");
  }
  writeOutput(*value);
  return Status::Done;
}

}  // namespace

void addGet(CommandLine& line) {
  auto [options, request] = line.add<GetRequest>(
      "get", "Write one object, or the value of a parameter, list or item", getValue);
  addFile(options, request.file);
  options.addArgument("DN", request.distName, "Distinguished name of the object");
  options.addOptionalArgument("NAME", request.name,
                              "Parameter, list, NAME[2] or NAME[2].component (items count from 1), "
                              "or EXTENSION.NAME");
}

}  // namespace tarn
