#pragma once

#include <optional>
#include <string>

#include "files/FileReplacement.hpp"

namespace tarn {

/// The options that say where the result goes.
struct Target {
  std::string output = "-";  ///< "-" is standard output.
  bool inPlace = false;      ///< The result replaces the document that was loaded.
  std::string suffix;  ///< In place: the old file is kept with this after its name; "": is not.
};

/// Where the result of a command goes: standard output; a file that is replaced; or an output that
/// is already open or is not a regular file, which is written to directly. Made before the
/// documents are read.
class Destination {
 public:
  /// `source` is the file that is replaced if `target` says "in place". Throws CommandError when
  /// the result cannot be written there.
  Destination(const std::string& source, const Target& target);

  /// The name that the user gave.
  const std::string& name() const { return name_; }
  /// True if the result goes to standard output, under any of its names.
  bool isStandardOutput() const;

  /// Writes the text. A file that is replaced stays unchanged until commit(). Throws CommandError,
  /// and OutputClosed for standard output.
  ///
  /// In place, the text is compressed when the file that it replaces is; otherwise when the name
  /// ends in ".gz".
  void write(const std::string& text);

  /// True if write() was the last step, since nothing is replaced.
  bool isWritten() const { return isWritten_; }

  /// Replaces the file, if the result replaces one: see FileReplacement::commit(). The last step of
  /// a command.
  void commit();

 private:
  bool isCompressed() const;
  void writeContent(const std::string& content);

  std::string name_;
  bool isInPlace_;
  bool isWritten_ = false;
  std::optional<int> descriptor_;  // an open file of this process
  bool isOpenFile_ = false;        // of this process or another one
  std::optional<FileReplacement> replacement_;
};

}  // namespace tarn
