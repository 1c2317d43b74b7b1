#include "output/report/ObjectLines.hpp"

#include <string_view>

#include "libtarn/model/LibTarnExtension.hpp"
#include "libtarn/model/Structure.hpp"
#include "output/operationText.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnExtension;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::List;
using libtarn::model::Scalar;
using libtarn::model::Structure;

namespace {

const Scalar& scalarOf(const Scalar& scalar) { return scalar; }

template <class Entry>
const Scalar& scalarOf(const Entry& entry) {
  return *entry.second;
}

/// The parameters of an extension, as a range.
class Siblings {
 public:
  class Iterator {
   public:
    explicit Iterator(const Scalar* scalar) : scalar_(scalar) {}
    const Scalar& operator*() const { return *scalar_; }
    Iterator& operator++() {
      scalar_ = scalar_->getNextSiblingElement();
      return *this;
    }
    bool operator!=(const Iterator& other) const { return scalar_ != other.scalar_; }

   private:
    const Scalar* scalar_;
  };

  explicit Siblings(const Scalar* first) : first_(first) {}
  Iterator begin() const { return Iterator(first_); }
  Iterator end() const { return Iterator(nullptr); }

 private:
  const Scalar* first_;
};

}  // namespace

void ObjectLines::append(const LibTarnManagedObject& object) {
  lines_.begin();
  const char* separator = "[";
  for (const char* text :
       {textOrEmpty(object.getDistName().getText()), textOrEmpty(object.getClass()),
        operationText(object), textOrEmpty(object.getVersion())}) {
    page_ += separator;
    appendPageText(page_, text);
    separator = ",";
  }
  page_ += ',';
  appendPairs(object.getScalarParameters());
  page_ += ",[";
  separator = "";
  for (const auto& entry : object.getListParameters()) {
    page_ += separator;
    appendList(*entry.second);
    separator = ",";
  }
  page_ += "],[";
  separator = "[";
  for (const LibTarnExtension* extension = object.getExtensions(); extension;
       extension = extension->getNextSiblingElement()) {
    page_ += separator;
    appendPageText(page_, textOrEmpty(extension->getName()));
    page_ += ',';
    appendPairs(Siblings(extension->getParameters()));
    page_ += ']';
    separator = ",[";
  }
  page_ += "]]";
}

void ObjectLines::appendList(const List& list) {
  page_ += '[';
  appendPageText(page_, textOrEmpty(list.getName()));
  for (const Scalar* value = list.getScalarValues(); value;
       value = value->getNextSiblingElement()) {
    page_ += ',';
    appendPageText(page_, value->getValue());
  }
  for (const Structure* item = list.getStructuredValues(); item;
       item = item->getNextSiblingElement()) {
    page_ += ',';
    appendPairs(item->getComponents());
  }
  page_ += ']';
}

template <class Scalars>
void ObjectLines::appendPairs(const Scalars& scalars) {
  names_.clear();
  pairs_.clear();
  for (const auto& entry : scalars) {
    const Scalar& scalar = scalarOf(entry);
    names_.append(textOrEmpty(scalar.getName())).push_back('\0');
    pairs_.push_back(&scalar);
  }
  page_ += '[' + std::to_string(numberOf(names_));
  for (const Scalar* scalar : pairs_) {
    page_ += ',';
    appendPageText(page_, scalar->getValue());
  }
  page_ += ']';
}

std::size_t ObjectLines::numberOf(const std::string& names) {
  const auto [it, isNew] = numbers_.try_emplace(names, numbers_.size());
  if (isNew) inOrder_.push_back(&it->first);
  return it->second;
}

void ObjectLines::end() {
  lines_.end();
  PageLines lines(page_, "names");
  for (const std::string* names : inOrder_) {
    lines.begin();
    page_ += '[';
    const std::string_view all = *names;
    for (std::size_t start = 0; start < all.size();) {
      const std::size_t end = all.find('\0', start);
      if (start > 0) page_ += ',';
      appendPageText(page_, all.substr(start, end - start));
      start = end + 1;
    }
    page_ += ']';
  }
  lines.end();
}

}  // namespace tarn
