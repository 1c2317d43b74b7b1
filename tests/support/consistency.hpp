#pragma once

#include <string>

#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/rapidxml/rapidxml.hpp"

namespace tarn_test {

/// How far the indexes of a document must agree with its tree.
enum class Indexes {
  /// Every element that an index is for is found through it, and nothing else.
  IN_STEP,
  /// They agree with themselves: a host has unlinked or renamed elements past the operations that
  /// keep the indexes.
  SOUND
};

/// What does not hold in the tree below `top`, which `pool` holds: links both ways, parents, kinds,
/// terminators of names and values, the pool of every node and attribute. Empty when all holds.
/// Reads every byte of every text.
std::string brokenTree(const rapidxml::xml_node<char>& top, const libDomXml::IMemoryPool* pool);

/// As brokenTree(), for the whole of `document`, its declaration and root included, with the
/// indexes and kept values of its elements. Sorts indexes that have not been asked yet.
std::string brokenDocument(const libtarn::model::LibTarnDocument& document,
                           Indexes indexes = Indexes::IN_STEP);

}  // namespace tarn_test
