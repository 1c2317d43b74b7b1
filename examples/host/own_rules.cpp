// Gives a document two classes of the host: one decides which names objects may have, one indexes
// the parameters of an object.
//
// Usage: own_rules DOCUMENT

#include <algorithm>
#include <cstring>
#include <deque>
#include <libtarn/libtarn.hpp>
#include <libtarn/model/DistinguishedNameValidator.hpp>
#include <libtarn/model/indexation/TarnIndexFactory.hpp>

#include "files.hpp"

using libtarn::model::DistinguishedNameValidator;
using libtarn::model::IDistinguishedNameValidator;
using libtarn::model::LibTarnDocument;
using libtarn::model::Scalar;
using libtarn::model::TarnDomDocument;
namespace indexation = libtarn::model::indexation;

namespace {

// Accepts no names below a site.
class FlatNames : public IDistinguishedNameValidator {
 public:
  bool isValid(const char* distName) const override {
    return formatRules_.isValid(distName) &&
           std::count(distName, distName + std::strlen(distName), '/') <= 1;
  }

 private:
  DistinguishedNameValidator formatRules_;
};

// Keeps the parameters of an object in a sorted vector.
class VectorIndex : public indexation::ITarnUniqueIndex<Scalar> {
 public:
  using Entry = indexation::ParameterEntry<Scalar>;

  bool add(Scalar* parameter) override {
    // A name lives as long as its document. A `p` without one counts as having an empty name.
    const char* const name = parameter->getName() ? parameter->getName() : "";
    const auto position = positionOf(name);
    if (position != entries_.end() && std::strcmp(position->first, name) == 0) return false;
    entries_.insert(position, {name, parameter});
    return true;
  }
  bool remove(Scalar* parameter) override { return remove(parameter->getId().c_str()); }
  bool remove(const char* name) override {
    const auto position = positionOf(name);
    if (position == entries_.end() || std::strcmp(position->first, name) != 0) return false;
    entries_.erase(position);
    return true;
  }
  Scalar* find(const char* name) const override {
    const auto position = const_cast<VectorIndex*>(this)->positionOf(name);
    const bool found = position != entries_.end() && std::strcmp(position->first, name) == 0;
    return found ? position->second : nullptr;
  }
  // A collection borrows one piece of memory with all entries in order.
  indexation::ScalarCollection getCollection() const override {
    run_ = {entries_.data(), entries_.data() + entries_.size(), nullptr};
    return indexation::ScalarCollection(run_);
  }
  std::size_t size() const override { return entries_.size(); }

 private:
  std::vector<Entry>::iterator positionOf(const char* name) {
    return std::lower_bound(
        entries_.begin(), entries_.end(), name,
        [](const Entry& entry, const char* key) { return std::strcmp(entry.first, key) < 0; });
  }

  std::vector<Entry> entries_;
  mutable indexation::EntryRun<Entry> run_{};
};

// Indexes must live as long as their document, so this factory owns those that it makes. The
// library makes those of lists and objects, in the memory that the constructor gets.
class IndexFactory : public indexation::TarnIndexFactory {
 public:
  using TarnIndexFactory::TarnIndexFactory;
  indexation::ITarnUniqueIndex<Scalar>* createUniqueScalarNameTarnIndex() const override {
    return &scalarIndexes_.emplace_back();
  }
  std::size_t count() const { return scalarIndexes_.size(); }

 private:
  mutable std::deque<VectorIndex> scalarIndexes_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 64;
  // The host owns all three, and they outlive the document.
  FlatNames names;
  libDomXml::DomDocument memory(false);
  IndexFactory indexes(memory);
  LibTarnDocument document(new TarnDomDocument(&names, &indexes));

  if (document.parse(readText(argv[1]), false) != 0) return 1;
  const auto* const site = document.getLibTarnCmData()->getLibTarnManagedObject("NET-1/SITE-7");
  if (!site) return 4;
  for (const auto& [name, parameter] : site->getScalarParameters()) {
    std::cout << name << " = " << parameter->getValue() << '\n';
  }
  std::cout << (indexes.count() > 0 ? "kept in vectors\n" : "kept elsewhere\n");
  if (document.validate() != 0) std::cout << document.getDiagnostic().message << '\n';
  return 0;
}
