#include "documents/ValuePath.hpp"

#include <charconv>
#include <system_error>
#include <utility>

#include "libtarn/model/LibTarnExtension.hpp"

namespace tarn {

using libtarn::model::LibTarnExtension;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::List;
using libtarn::model::Scalar;
using libtarn::model::Structure;

namespace {

std::optional<ValuePath::InList> inListOf(const std::string& text) {
  const std::size_t open = text.rfind('[');
  const std::size_t close = text.find(']', open == std::string::npos ? 0 : open);
  if (open == std::string::npos || close == std::string::npos) return std::nullopt;
  ValuePath::InList path{text.substr(0, open), 0, std::nullopt};
  const char* const begin = text.data() + open + 1;
  const char* const end = text.data() + close;
  const auto [rest, error] = std::from_chars(begin, end, path.index);
  if (error != std::errc() || rest != end) return std::nullopt;
  if (close + 1 == text.size()) return path;
  if (text[close + 1] != '.') return std::nullopt;
  path.component = text.substr(close + 2);
  return path;
}

template <class Element>
Element* elementAt(Element* first, std::size_t index) {
  Element* element = index > 0 ? first : nullptr;
  while (element && --index > 0) element = element->getNextSiblingElement();
  return element;
}

template <class Element>
ValuePath::Place placeOf(Element* element) {
  return element ? ValuePath::Place(element) : std::monostate();
}

std::string lineOf(const Scalar& scalar) { return scalar.getValue() + std::string("\n"); }

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

}  // namespace

ValuePath::ValuePath(std::string text) : text_(std::move(text)), inList_(inListOf(text_)) {
  for (std::size_t dot = text_.find('.'); dot != std::string::npos;
       dot = text_.find('.', dot + 1)) {
    inExtensions_.push_back({text_.substr(0, dot), text_.substr(dot + 1)});
  }
}

ValuePath::Place ValuePath::find(const LibTarnManagedObject& object) const {
  if (Scalar* const scalar = object.getScalarParameter(text_.c_str())) return scalar;
  if (List* const list = object.getListParameter(text_)) return list;
  if (inList_) {
    const Place place = findInList(object);
    if (!std::holds_alternative<std::monostate>(place)) return place;
  }
  for (const InExtension& each : inExtensions_) {
    const LibTarnExtension* const extension = object.getExtension(each.extension);
    Scalar* const found = extension ? extension->getParameter(each.parameter) : nullptr;
    if (found) return found;
  }
  return std::monostate();
}

Scalar* ValuePath::findValue(const LibTarnManagedObject& object) const {
  const Place place = find(object);
  Scalar* const* const scalar = std::get_if<Scalar*>(&place);
  return scalar ? *scalar : nullptr;
}

bool ValuePath::remove(LibTarnManagedObject& object, const Place& place) const {
  if (std::holds_alternative<List*>(place)) return object.removeListParameter(text_) == 0;
  if (const auto* const scalar = std::get_if<Scalar*>(&place)) {
    return removeScalar(object, **scalar);
  }
  if (const auto* const item = std::get_if<Structure*>(&place)) (*item)->removeThisElement();
  return true;
}

bool ValuePath::removeScalar(LibTarnManagedObject& object, Scalar& scalar) const {
  if (object.getScalarParameter(text_.c_str()) == &scalar) {
    return object.removeScalarParameter(text_) == 0;
  }
  if (inList_ && object.hasListParameter(inList_->list)) {
    if (inList_->component) return false;
    scalar.removeThisElement();
    return true;
  }
  for (const InExtension& each : inExtensions_) {
    LibTarnExtension* const extension = object.getExtension(each.extension);
    if (extension && extension->getParameter(each.parameter) == &scalar) {
      return extension->removeParameter(each.parameter) == 0;
    }
  }
  return true;  // is already removed
}

ValuePath::Place ValuePath::findInList(const LibTarnManagedObject& object) const {
  const List* const list = object.getListParameter(inList_->list);
  if (!list) return std::monostate();
  Structure* const item = elementAt(list->getStructuredValues(), inList_->index);
  if (item && inList_->component) return placeOf(item->getComponent(*inList_->component));
  if (item) return item;
  return inList_->component ? Place() : placeOf(elementAt(list->getScalarValues(), inList_->index));
}

std::string textAt(const ValuePath::Place& place) {
  if (const auto* const scalar = std::get_if<Scalar*>(&place)) return (*scalar)->getValue();
  if (const auto* const list = std::get_if<List*>(&place)) return linesOf(**list);
  if (const auto* const item = std::get_if<Structure*>(&place)) return lineOf(**item);
  return "";
}

}  // namespace tarn
