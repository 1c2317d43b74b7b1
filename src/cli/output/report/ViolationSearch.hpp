#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

/// Violations of one part of the document: messages for the page, and how many it leaves out.
struct Findings {
  std::vector<std::string> messages;
  std::size_t leftOut = 0;

  std::size_t count() const { return messages.size() + leftOut; }
};

/// Finds the violations of a document part by part, and bounds what all of them take together.
class ViolationSearch {
 public:
  /// Validates the document, which must outlive this.
  explicit ViolationSearch(libtarn::model::LibTarnDocument& document);

  /// Those that are no object's: of the root, of cmData and of its header.
  const Findings& aroundObjects() const { return aroundObjects_; }

  /// Those of one object. It is validated alone, on the path that it has in the document.
  Findings ofObject(const libtarn::model::LibTarnManagedObject& object);

  /// Of all that were asked for.
  std::size_t leftOut() const { return leftOut_; }

 private:
  std::size_t countInObjects() const;

  libtarn::model::LibTarnDocument& document_;
  Findings aroundObjects_;
  std::size_t bytesLeft_;
  std::size_t leftOut_ = 0;
  bool isValid_;
};

}  // namespace tarn
