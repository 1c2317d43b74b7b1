#pragma once

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/IElement.hpp"

namespace libtarn {
namespace model {

/// An entry in the history of a document, `log`: action, time and free text.
///
/// Lifetime and threads as for every IElement.
class TARN_API Log : public IElement {
 public:
  /// The tag.
  static constexpr const char* TAG_NAME = "log";
  /// Format of "dateTime", in local time, for strftime().
  static const char* const DATETIME_FORMAT;

  Log* getNextSiblingElement() const override = 0;

  /// Returns the attribute "action", null when absent.
  virtual const char* getAction() const = 0;
  /// Returns the attribute "dateTime", null when absent.
  virtual const char* getDateTime() const = 0;
  /// Sets "dateTime" to the current time. Each call emits a log line at level ERROR.
  virtual void updateDateTime() = 0;
  /// Returns the text, never null.
  virtual const char* getValue() const = 0;
};

}  // namespace model
}  // namespace libtarn
