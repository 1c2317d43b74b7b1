#pragma once

#include <sys/stat.h>

#include <string>

#include "files/Descriptor.hpp"

namespace tarn {

/// A new file that only its owner may open, and that will replace another one in its folder.
///
/// The destructor removes it unless moveTo() succeeded; so does every signal that ends the program
/// and can be handled. Signals that are ignored or handled already stay so. At most two objects of
/// this class exist at a time.
class TemporaryFile {
 public:
  enum class Kind {
    NewFile,
    SecondName,  ///< A second (hard) link to the file `name`, which is not opened.
  };

  /// Creates the file in the open folder `folder`, which outlives it, with a name made from `name`.
  /// When that fails, isThere() is false and errno says why.
  TemporaryFile(int folder, const std::string& name, Kind kind = Kind::NewFile);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  bool isThere() const { return isThere_; }
  /// The file, open for reading and writing.
  Descriptor& file() { return file_; }
  /// True if it is the file whose status is `status`.
  bool isFile(const struct stat& status) const;
  /// Renames the file within its folder and replaces the file of that name. Returns false, with
  /// errno, on failure. Allocates no memory.
  bool moveTo(const std::string& name);

 private:
  bool create(const std::string& name, Kind kind);
  void enter();
  void leave();

  int folder_;
  std::string name_;
  Descriptor file_;
  bool isThere_ = false;
};

}  // namespace tarn
