#pragma once

#include <optional>
#include <string>

#include "files/FileReplacement.hpp"

namespace tarn {

/// The options that say where the result goes.
struct Target {
  std::string output = "-";  ///< "-" is standard output.
  bool inPlace = false;      ///< The result replaces the document that was loaded.
};

/// Where the result of a command goes: standard output; a file that is replaced; or an output that
/// is already open or is not a regular file, which is written to directly. Made before the
/// documents are read.
class Destination {
 public:
  /// `source` is the file that is replaced if `target` says "in place". Throws CommandError when
  /// the result cannot be written there.
  Destination(const std::string& source, const Target& target);

  /// True if the result goes to standard output, under any of its names.
  bool isStandardOutput() const;

  /// Writes the text, compressed when the name ends in ".gz". A file that is replaced stays
  /// unchanged until commit(). Throws CommandError, and OutputClosed for standard output.
  void write(const std::string& text);

  /// Replaces the file, if the result replaces one: see FileReplacement::commit(). The last step of
  /// a command.
  void commit();

 private:
  void writeContent(const std::string& content);

  std::string name_;
  std::optional<int> descriptor_;  // an open file of this process
  bool isOpenFile_ = false;        // of this process or another one
  std::optional<FileReplacement> replacement_;
};

}  // namespace tarn
