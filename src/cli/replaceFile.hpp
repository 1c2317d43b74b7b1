#pragma once

#include <string>

namespace tarn {

/// Writes `text` to the file at `path`, wholly or not at all: it goes to a temporary file in the
/// same folder, is flushed to the disk, and takes the place of the file, whose mode it gets. The
/// target of a link is replaced, not the link; a device or a pipe is written as it is. Throws
/// CommandError, with the file as it was and no temporary file left.
void replaceFile(const std::string& path, const std::string& text);

}  // namespace tarn
