#include "output/outputFile.hpp"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

#include "CommandError.hpp"
#include "output/terminal.hpp"

namespace tarn {

namespace {

// Bytes that are written between two updates of the progress.
constexpr std::size_t STEP_SIZE = std::size_t{1} << 22U;

}  // namespace

bool writeAll(int file, const std::string& path, const std::string& text) {
  Progress progress("Writing", path, text.size());
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t count =
        ::write(file, text.data() + done, std::min(STEP_SIZE, text.size() - done));
    if (count < 0 && errno != EINTR) return false;
    if (count <= 0) continue;
    done += static_cast<std::size_t>(count);
    progress.advance(static_cast<std::size_t>(count));
  }
  return true;
}

void writeOutput(const std::string& text) {
  if (writeAll(STDOUT_FILENO, "standard output", text)) return;
  if (errno == EPIPE) throw OutputClosed();
  throwFileError("standard output", errno);
}

}  // namespace tarn
