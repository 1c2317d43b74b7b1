#pragma once

#include <csignal>
#include <string>

#include "files/Descriptor.hpp"

namespace tarn {

/// A new file that only its owner may open, and that will replace another one in its folder.
///
/// The destructor removes it unless moveTo() succeeded; so does every signal that ends the program
/// and can be handled. Signals that are ignored or handled already stay so. At most one object of
/// this class exists at a time.
class TemporaryFile {
 public:
  /// Creates the file in the open folder `folder`, which outlives it, with a name made from `name`.
  /// When that fails, file() is not open and errno says why.
  TemporaryFile(int folder, const std::string& name);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  Descriptor& file() { return file_; }
  /// Renames the file within its folder and replaces the file of that name. Returns false, with
  /// errno, on failure. Allocates no memory.
  bool moveTo(const std::string& name);

 private:
  void create(const std::string& name);
  void handleSignals();
  void leaveSignals();

  int folder_;
  std::string name_;
  Descriptor file_;
  bool isThere_ = false;
  sigset_t handled_{};
};

}  // namespace tarn
