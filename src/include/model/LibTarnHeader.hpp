#pragma once

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/IElement.hpp"

namespace libtarn {
namespace util {
class TarnFactory;
}

namespace model {

class Log;
class TarnDomElement;

/// The bounded history of a document, `header`.
///
/// Lifetime and threads as for every IElement.
class TARN_API LibTarnHeader : public IElement {
 public:
  /// The tag.
  static constexpr const char* TAG_NAME = "header";
  /// Largest number of entries after an addLog().
  static const unsigned int MAX_LOG_COUNT;

  LibTarnHeader* getNextSiblingElement() const override = 0;

  /// Returns the first entry, or null. getNextSiblingElement() returns the others.
  virtual Log* getLogs() const = 0;
  /// Returns a deep, detached copy in the document of `factory`.
  virtual TarnDomElement* clone(util::TarnFactory& factory) const = 0;
  /// Appends a detached entry of this document and unlinks the oldest ones beyond MAX_LOG_COUNT.
  virtual void addLog(Log& log) = 0;
};

}  // namespace model
}  // namespace libtarn
