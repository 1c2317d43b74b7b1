#pragma once

#include <map>
#include <string>
#include <vector>

#include "libtarn/model/Scalar.hpp"
#include "libtarn/model/indexation/ITarnUniqueIndex.hpp"

namespace tarn_test {

/// An index of parameters as a host may write it: a map, copied into an array for every collection.
/// It overrides only what it must.
class MapIndex : public libtarn::model::indexation::ITarnUniqueIndex<libtarn::model::Scalar> {
 public:
  using Scalar = libtarn::model::Scalar;
  using Entry = libtarn::model::indexation::ParameterEntry<Scalar>;
  using Collection = libtarn::model::indexation::ScalarCollection;

  bool add(Scalar* element) override { return map_.emplace(element->getId(), element).second; }
  bool remove(Scalar* element) override { return map_.erase(element->getId()) == 1; }
  bool remove(const char* name) override { return map_.erase(name) == 1; }
  Scalar* find(const char* name) const override {
    const auto it = map_.find(name ? name : "");
    return it == map_.end() ? nullptr : it->second;
  }
  Collection getCollection() const override {
    entries_.clear();
    for (const auto& [name, element] : map_) entries_.emplace_back(name.c_str(), element);
    run_ = {entries_.data(), entries_.data() + entries_.size(), nullptr};
    return Collection(run_);
  }
  std::size_t size() const override { return map_.size(); }

 private:
  std::map<std::string, Scalar*> map_;
  mutable std::vector<Entry> entries_;
  mutable libtarn::model::indexation::EntryRun<Entry> run_{};
};

}  // namespace tarn_test
