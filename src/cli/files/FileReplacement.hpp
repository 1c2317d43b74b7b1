#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <string>

#include "files/Descriptor.hpp"
#include "files/TemporaryFile.hpp"

namespace tarn {

/// A file that is to be replaced as a whole, or made. Made before anything that the result is made
/// of is read: from then on
///
/// - other commands that are to replace the file wait, by a lock on it that goes with the process.
///   Programs that do not ask for the lock are not held up;
/// - a change of the file is noticed: it is replaced only if it still is what it was.
///
/// A file that is there keeps its access rights, as far as the user may give them. All functions
/// throw CommandError, with the file as it was and no temporary file left; neither does a signal
/// leave one that can be handled.
class FileReplacement {
 public:
  /// `name` is what the user calls the file, `target` its path without links. Throws when the file
  /// may not be written, and when another command has held its lock for a minute.
  FileReplacement(std::string name, std::filesystem::path target);

  /// Writes the content to a temporary file in the same folder, with the rights of the file, and
  /// flushes it to the disk.
  void write(const std::string& content);

  /// Puts what was written in place. This is the last that can fail: behind it no memory is taken
  /// and nothing is thrown.
  void commit();

 private:
  void lockTarget();
  bool openTarget();
  void requireFile() const;
  bool isTarget(const struct stat& status) const;
  bool isUnchanged() const;

  std::string name_;
  std::filesystem::path target_;
  std::string folderName_;
  std::string baseName_;
  Descriptor folder_;
  Descriptor file_;        // the locked one; none when there is no file yet
  struct stat status_ {};  // of file_ when it was locked
  std::optional<TemporaryFile> temporary_;
};

}  // namespace tarn
