#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "CommandError.hpp"
#include "libtarn/util/TextPosition.hpp"

namespace tarn {

/// One thing that is wrong in a text, with what is known of where it is.
struct Fault {
  std::string message;
  std::string path;      ///< The tags and names from the root down to the element.
  std::string distName;  ///< Of the managed object that the element is or lies in.
  std::optional<libtarn::util::TextPosition> place;
  std::string note;  ///< About a second place, such as that of the first of two equal names.
  std::optional<libtarn::util::TextPosition> notePlace;
};

/// Returns the subject of the error for a fault in the file at `path`: its place, and the object.
std::string subjectOf(const std::string& path, const Fault& fault);

/// What a check found in one file.
struct Finding {
  Status status = Status::Done;
  std::optional<CommandError> error;  ///< Why the text could not be read.
  std::vector<Fault> faults;
  std::size_t faultCount = 0;  ///< With those left out.

  /// True if there was not enough memory for the check.
  bool lacksMemory() const { return status == Status::FileError && !error; }
};

/// What a check looks for.
struct CheckScope {
  bool all = false;         ///< Every fault, not only the first.
  bool strict = false;      ///< Also what only a conforming XML parser refuses.
  std::size_t limit = 100;  ///< Most faults for a file; 0 for as many as 64 MiB hold.
};

/// Checks the file at `path`. Throws nothing for a fault in the file, nor for one that takes more
/// memory than there is.
Finding checkFile(const std::string& path, const CheckScope& scope);

}  // namespace tarn
