#pragma once

// Indexing while parsing.
//
// A document's indexes are filled in the order of the document, and the first object or parameter
// whose name is taken ends that. But doing so once the parse is done means going through all of the
// document's memory a second time. So each managed object is indexed as soon as its end tag has
// been read, when it is still in the caches, and what is filled then comes into effect for all
// objects of a cmData at once, when the parse is done (see addOnceTrue() of the indexes).
//
// Only what is plain is done that way. As soon as anything is not (a name that is there already, an
// operation that is unknown, indexes of the host's own), the cmData drops what has been filled and
// is indexed in order after the parse, which then tells what is wrong.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "DomElement.hpp"
#include "attributeNames.hpp"
#include "indexation/textHash.hpp"
#include "model/indexation/TarnCollection.hpp"

namespace libtarn {
namespace model {

class LibTarnManagedObjectImp;

/// How the names of entries are to one another. UNKNOWN: some may be the same.
enum class NameOrder { SORTED, DIFFERENT, UNKNOWN };

/// Elements of one kind just parsed, with their names. The text that they were parsed from holds no
/// zero byte.
template <class Element>
class ParsedNames {
 public:
  using Entry = indexation::ParameterEntry<Element>;

  void clear() {
    entries_.clear();
    digests_.clear();
  }

  /// `node` is the element as a node. False when it has no name.
  bool add(const libDomXml::DomElement& node, Element* element) {
    const rapidxml::xml_attribute<char>* const name =
        node.first_attribute(NAME_ATTRIBUTE, sizeof(NAME_ATTRIBUTE) - 1);
    entries_.emplace_back(name ? name->value() : "", element);
    digests_.push_back(name ? digestOf(name->value(), name->value_size()) : 0);
    return name != nullptr;
  }

  const std::vector<Entry>& entries() const { return entries_; }

  NameOrder order() {
    if (entries_.size() <= FEW) {
      if (digestsDiffer()) return NameOrder::DIFFERENT;
    } else if (areSorted()) {
      return NameOrder::SORTED;
    }
    return namesDiffer() ? NameOrder::DIFFERENT : NameOrder::UNKNOWN;
  }

 private:
  static constexpr std::size_t FEW = 32;
  // Names that crowd are made by those who want to slow a load down.
  static constexpr std::size_t MOST_PROBES = 64;

  struct Slot {
    std::uint32_t hash;
    std::uint32_t number;  // of the entry, from 1; 0 for an empty slot
  };

  // Names of different digests are different. Made of the ends of a name, where most differ.
  static std::uint32_t digestOf(const char* name, std::size_t size) {
    constexpr std::uint64_t PRIME = 0x9E3779B97F4A7C15U;
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    if (size >= sizeof(first)) {
      std::memcpy(&first, name, sizeof(first));
      std::memcpy(&last, name + size - sizeof(last), sizeof(last));
    } else {
      for (std::size_t i = 0; i < size; ++i)
        last = last << 8U | static_cast<unsigned char>(name[i]);
    }
    return static_cast<std::uint32_t>(((first ^ size) * PRIME ^ last) * PRIME >> 32U);
  }

  bool digestsDiffer() const {
    bool same = false;
    for (std::size_t i = 1; i < digests_.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) same |= digests_[i] == digests_[j];
    }
    return !same;
  }

  bool areSorted() const {
    std::size_t sorted = 1;
    while (sorted < entries_.size() &&
           std::strcmp(entries_[sorted - 1].first, entries_[sorted].first) < 0) {
      ++sorted;
    }
    return sorted >= entries_.size();
  }

  // False also when it is too hard to tell.
  bool namesDiffer() {
    std::size_t capacity = 8;
    while (capacity < 2 * entries_.size()) capacity *= 2;
    slots_.assign(capacity, Slot{0, 0});
    std::uint32_t number = 0;
    for (const Entry& entry : entries_) {
      const std::uint32_t hash = indexation::textHash(entry.first, std::strlen(entry.first));
      std::size_t position = hash & (capacity - 1);
      for (std::size_t probes = 0; slots_[position].number != 0; ++probes) {
        const Slot& slot = slots_[position];
        const bool isSame =
            slot.hash == hash && std::strcmp(entries_[slot.number - 1].first, entry.first) == 0;
        if (isSame || probes == MOST_PROBES) return false;
        position = (position + 1) & (capacity - 1);
      }
      slots_[position] = {hash, ++number};
    }
    return true;
  }

  std::vector<Entry> entries_;
  std::vector<std::uint32_t> digests_;
  std::vector<Slot> slots_;
};

/// What has been parsed, and what is used again for one object after the other.
struct IndexingParse {
  /// The objects of every cmData, those of one of them in a row, as long as all is plain.
  std::vector<indexation::HashedObject> objects;
  /// Those of them that have an operation.
  std::vector<LibTarnManagedObjectImp*> withOperation;
  /// A zero byte, written as a reference, has been read: nothing is plain.
  bool zeroByte = false;
  /// Whether all that has been parsed below cmData is known to follow the rules of the format;
  /// false from the start when nobody asks. The rules themselves are the Validator's: what is found
  /// here to follow them needs no walk with it, and whatever is not is left to that walk.
  bool followsRules = false;

  ParsedNames<Scalar> scalars;
  ParsedNames<List> lists;
  ParsedNames<Scalar> components;
};

}  // namespace model
}  // namespace libtarn
