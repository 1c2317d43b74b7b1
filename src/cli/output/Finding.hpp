#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "CommandError.hpp"
#include "libtarn/util/TextPosition.hpp"

namespace tarn {

/// A kind of fault, as a program that reads findings knows it.
struct Rule {
  const char* id;  ///< Does not change: words of small letters with dashes between them.
  const char* description;
};

/// Where a fault is in a text.
struct FaultPlace {
  libtarn::util::TextPosition position;  ///< The column counts bytes.
  std::size_t unicodeColumn = 0;  ///< In UTF-16 code units, from 1; 0 when it was not asked for.
};

/// One thing that is wrong in a text, with what is known of where it is.
struct Fault {
  const char* rule = "";  ///< The id of the rule.
  std::string message;
  std::string path;      ///< The tags and names from the root down to the element.
  std::string distName;  ///< Of the managed object that the element is or lies in.
  std::optional<FaultPlace> place;
  std::string note;  ///< About a second place, such as that of the first of two equal names.
  std::optional<FaultPlace> notePlace;
};

/// What a check found in one file.
struct Finding {
  Status status = Status::Done;
  std::optional<CommandError> error;  ///< Why the file could not be read.
  std::vector<Fault> faults;
  std::size_t faultCount = 0;  ///< With those left out.

  /// True if there was not enough memory for the check.
  bool lacksMemory() const { return status == Status::FileError && !error; }
  /// Why the file could not be checked; empty if it was.
  std::string failure() const;
  std::size_t leftOutCount() const { return faultCount - faults.size(); }
};

/// Returns the line of the error for a fault in the file at `path`, with its place and object.
std::string lineOf(const std::string& path, const Fault& fault);
/// Returns the subject of a fault's note: its place.
std::string noteSubject(const std::string& path, const Fault& fault);
/// Returns the subject of the error for a fault in the file at `path`: its place, and the object.
std::string subjectOf(const std::string& path, const Fault& fault);
/// Says how many faults were left out, which is one at least: "3 more violations".
std::string leftOutMessage(const Finding& finding);

}  // namespace tarn
