#include "documents/Column.hpp"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <map>
#include <utility>
#include <variant>

#include "CommandError.hpp"
#include "documents/ValueText.hpp"
#include "libtarn/model/LibTarnExtension.hpp"
#include "output/json.hpp"
#include "output/operationText.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnExtension;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::List;
using libtarn::model::Scalar;
using libtarn::model::Structure;

namespace {

std::size_t parameterCount(const LibTarnManagedObject& object) {
  const auto scalars = object.getScalarParameters();
  const auto lists = object.getListParameters();
  return static_cast<std::size_t>(std::distance(scalars.begin(), scalars.end()) +
                                  std::distance(lists.begin(), lists.end()));
}

// A single value stays where it is. The lines of a list, or the parts of an item, stand with "; "
// between them.
void addValue(const ValuePath::Place& place, Rows& rows) {
  if (std::holds_alternative<std::monostate>(place)) {
    rows.add(Rows::NOTHING);
  } else if (const auto* const scalar = std::get_if<Scalar*>(&place)) {
    rows.add((*scalar)->getValue());
  } else {
    std::string text = textAt(place);
    if (!text.empty()) text.pop_back();
    std::string joined;
    for (const char c : text) {
      if (c == '\n') {
        joined += "; ";
      } else {
        joined += c == '\t' ? ' ' : c;
      }
    }
    rows.addKept(joined);
  }
}

template <class Collection>
Json membersOf(const Collection& scalars) {
  Json members = Json::object();
  for (const auto& entry : scalars) members[entry.first] = entry.second->getValue();
  return members;
}

Json jsonOf(const List& list) {
  Json values = Json::array();
  for (const Scalar* value = list.getScalarValues(); value;
       value = value->getNextSiblingElement()) {
    values.push_back(value->getValue());
  }
  for (const Structure* item = list.getStructuredValues(); item;
       item = item->getNextSiblingElement()) {
    values.push_back(membersOf(item->getComponents()));
  }
  return values;
}

// Of several parameters with one name the first one counts, as for a look-up.
Json jsonOf(const LibTarnExtension& extension) {
  Json values = Json::object();
  for (const Scalar* parameter = extension.getParameters(); parameter;
       parameter = parameter->getNextSiblingElement()) {
    values.emplace(textOrEmpty(parameter->getName()), parameter->getValue());
  }
  return {{"name", textOrEmpty(extension.getName())}, {"values", std::move(values)}};
}

}  // namespace

Column::Column(std::string text, bool isPath)
    : path_(std::move(text)),
      kind_(isPath ? Kind::Value : kindOf(path_.text())),
      isFound_(kind_ != Kind::Value) {}

Column::Kind Column::kindOf(const std::string& text) {
  const std::map<std::string, Kind> kinds = {{"dn", Kind::DistName},
                                             {"class", Kind::Class},
                                             {"operation", Kind::Operation},
                                             {"version", Kind::Version},
                                             {"parameters", Kind::ParameterCount},
                                             {"file", Kind::File}};
  const auto found = kinds.find(text);
  return found == kinds.end() ? Kind::Value : found->second;
}

Rows::Column Column::description() const {
  std::string heading = name();
  if (kind_ != Kind::Value) {
    std::transform(heading.begin(), heading.end(), heading.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  }
  return {name(), heading, kind_ == Kind::ParameterCount ? Rows::Kind::Number : Rows::Kind::Text};
}

void Column::addCell(const LibTarnManagedObject& object, const std::string& file, Rows& rows) {
  switch (kind_) {
    case Kind::DistName:
      return rows.add(textOrEmpty(object.getDistName().getText()));
    case Kind::Class:
      return rows.add(textOrEmpty(object.getClass()));
    case Kind::Operation:
      return rows.add(operationText(object));
    case Kind::Version:
      return rows.add(textOrEmpty(object.getVersion()));
    case Kind::ParameterCount:
      return rows.addNumber(parameterCount(object));
    case Kind::File:
      return rows.add(file);
    case Kind::Value:
      const ValuePath::Place place = path_.find(object);
      isFound_ = isFound_ || !std::holds_alternative<std::monostate>(place);
      return addValue(place, rows);
  }
}

std::vector<Column> readColumns(const std::string& option, const std::string& text) {
  std::vector<Column> columns;
  ValueText reader(option, text, ",");
  do {
    std::string name = reader.readName();
    columns.emplace_back(std::move(name), reader.wasQuoted());
  } while (reader.skip(','));
  if (!reader.isAtEnd()) reader.refuse("a comma is expected after this name");
  return columns;
}

std::vector<Rows::Column> contentColumns() {
  return {{"values", "", Rows::Kind::Json},
          {"lists", "", Rows::Kind::Json},
          {"extensions", "", Rows::Kind::Json}};
}

void addContentCells(const LibTarnManagedObject& object, Rows& rows) {
  Json lists = Json::object();
  for (const auto& entry : object.getListParameters()) lists[entry.first] = jsonOf(*entry.second);
  Json extensions = Json::array();
  for (const LibTarnExtension* extension = object.getExtensions(); extension;
       extension = extension->getNextSiblingElement()) {
    extensions.push_back(jsonOf(*extension));
  }
  rows.addKept(jsonText(membersOf(object.getScalarParameters())));
  rows.addKept(jsonText(lists));
  rows.addKept(jsonText(extensions));
}

}  // namespace tarn
