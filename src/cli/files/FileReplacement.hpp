#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <string>

#include "files/Descriptor.hpp"
#include "files/TemporaryFile.hpp"

namespace tarn {

/// Replaces a file as a whole, or creates it. Construct it before the command reads any input: from
/// then on
///
/// - the file is locked until the process ends, so other commands that replace the file wait.
///   Programs that do not ask for the lock do not wait;
/// - a change of the file is noticed: it is replaced only if it is unchanged.
///
/// An existing file gives its access rights to the new one, as far as the user may give them. The
/// old file may be kept under its name with a suffix. The path leads to one of the two at any
/// moment. When a function throws CommandError, the file is unchanged and no temporary file is
/// left. A signal that can be handled leaves none either.
class FileReplacement {
 public:
  /// `name` is the name that the user gave, `target` the path without links. Throws when the user
  /// may not write the file, when another command has held its lock for a minute, and when the old
  /// file cannot be kept under the name of the target with `suffix`. Without a suffix it is not
  /// kept.
  FileReplacement(std::string name, std::filesystem::path target, const std::string& suffix);

  /// True if there is a file already and it is compressed with gzip.
  bool holdsGzip() const;

  /// Writes the content to a temporary file in the same folder, with the rights of the file, and
  /// flushes it to the disk.
  void write(const std::string& content);

  /// Replaces the file with the temporary one, and keeps the old one if it is to be kept. This is
  /// the last step that can fail: after the replacement it allocates no memory and throws nothing.
  void commit();

 private:
  void lockTarget();
  bool openTarget();
  void requireFile() const;
  bool isTarget(const struct stat& status) const;
  bool isUnchanged() const;
  std::filesystem::path keptPath() const;
  void requireKeepable() const;
  void finish(TemporaryFile& made) const;
  void keep();
  void keepCopy();
  bool readBlock(std::string& block, off_t offset) const;

  std::string name_;
  std::filesystem::path target_;
  std::string folderName_;
  std::string baseName_;
  std::string keptName_;  // of the old file; "" when it is not kept
  Descriptor folder_;
  Descriptor file_;        // the locked one; none when there is no file yet
  struct stat status_ {};  // of file_ when it was locked, or got a second name
  std::optional<TemporaryFile> temporary_;
};

}  // namespace tarn
