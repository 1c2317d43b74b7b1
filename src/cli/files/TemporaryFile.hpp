#pragma once

#include <csignal>
#include <string>

#include "files/Descriptor.hpp"

namespace tarn {

/// A new file, for its owner only, that is to take the place of another one in its folder. It is
/// removed at the end of its life unless it was put in place, and also by every signal that ends
/// the program and can be handled. Signals that are ignored or handled already stay so. There is
/// one at a time.
class TemporaryFile {
 public:
  /// In the open folder `folder`, which outlives it, named after `name`. When none can be made
  /// file() is not open, and errno says why.
  TemporaryFile(int folder, const std::string& name);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  Descriptor& file() { return file_; }
  /// Renames it within its folder, over what is there. Returns false, with errno, when it cannot
  /// be. Takes no memory.
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
