#include "output/outputFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

#include "CommandError.hpp"
#include "output/Progress.hpp"

namespace tarn {

namespace {

// Bytes that are written between two updates of the progress.
constexpr std::size_t STEP_SIZE = std::size_t{1} << 22U;

// Returns false, with errno, when not all of it can be written.
template <class Report>
bool writeInSteps(int file, const std::string& text, Report report) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t count =
        ::write(file, text.data() + done, std::min(STEP_SIZE, text.size() - done));
    if (count < 0 && errno != EINTR) return false;
    if (count <= 0) continue;
    done += static_cast<std::size_t>(count);
    report(done);
  }
  return true;
}

// A program that reads a pipe may be using the terminal, and a terminal shows what is written.
bool isFile(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

bool writeWithoutProgress(int file, const std::string& text) {
  const ProgressPause pause;
  return writeInSteps(file, text, [](std::size_t /*done*/) {});
}

}  // namespace

bool isReserved(int descriptor) {
  const int flags = ::fcntl(descriptor, F_GETFL);
  return flags >= 0 && (static_cast<unsigned>(flags) & static_cast<unsigned>(O_PATH)) != 0;
}

bool writeAll(int file, const std::string& path, const std::string& text) {
  Progress progress("Writing", path, text.size());
  return writeInSteps(file, text, [&progress](std::size_t done) { progress.reach(done); });
}

void writeOutput(const std::string& text) {
  const char* const name = "standard output";
  if (isFile(STDOUT_FILENO) ? writeAll(STDOUT_FILENO, name, text)
                            : writeWithoutProgress(STDOUT_FILENO, text)) {
    return;
  }
  const int error = errno;
  if (error == EPIPE) throw OutputClosed();
  if (isReserved(STDOUT_FILENO)) throw CommandError(Status::FileError, name, "is closed");
  throwFileError(name, error);
}

}  // namespace tarn
