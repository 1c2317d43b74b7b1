#pragma once

#include <optional>
#include <string>

#include "files/FileReplacement.hpp"

namespace tarn {

/// What a command line says of where the result goes.
struct Target {
  std::string output = "-";  ///< "-" is standard output.
  bool inPlace = false;      ///< The result replaces the document that was loaded.
};

/// Where the result of a command goes: standard output, something that is open or no regular file
/// and is written to as it is, or a file that is replaced. Made before the documents are read.
class Destination {
 public:
  /// `source` is the file that `target` may say to replace. Throws CommandError when the result
  /// could not go there.
  Destination(const std::string& source, const Target& target);

  /// Whether the result goes to standard output, under whichever name.
  bool isStandardOutput() const;

  /// Writes the text, compressed when the name ends in ".gz". A file that is replaced is as it was
  /// until commit(). Throws CommandError, and OutputClosed for standard output.
  void write(const std::string& text);

  /// Puts a file that is replaced in place, see FileReplacement. What may fail comes before.
  void commit();

 private:
  void writeContent(const std::string& content);

  std::string name_;
  std::optional<int> descriptor_;  // an open file of this process
  bool isOpenFile_ = false;        // of this process or another one
  std::optional<FileReplacement> replacement_;
};

}  // namespace tarn
