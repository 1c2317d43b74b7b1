#pragma once

#include <string>

#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/rapidxml/rapidxml.hpp"

namespace tarn_test {

/// How far the indexes of a document must agree with its tree.
enum class Indexes {
  /// Each index finds all elements that it is for, and no others.
  IN_STEP,
  /// Indexes are consistent in themselves only: a host has unlinked or renamed elements with
  /// operations
  /// that do not update them.
  SOUND
};

/// Checks the tree below `top`, which is in `pool`: links both ways, parents, kinds, terminating
/// NULs of names and values, the pool of every node and attribute. Returns the first fault, or an
/// empty text. Reads every byte of every text.
std::string brokenTree(const rapidxml::xml_node<char>& top, const libDomXml::IMemoryPool* pool);

/// As brokenTree(), for all of `document`, its declaration and root included, with the indexes and
/// cached values of its elements. Sorts indexes that have not been sorted yet.
std::string brokenDocument(const libtarn::model::LibTarnDocument& document,
                           Indexes indexes = Indexes::IN_STEP);

}  // namespace tarn_test
