#pragma once

#include <string>

namespace tarn {

/// Thrown when the program that reads standard output has closed it: nothing more to do or to tell.
struct OutputClosed {};

/// Writes `text` to standard output. Throws CommandError when not all of it can be written, and
/// OutputClosed.
void writeOutput(const std::string& text);

/// Writes `text`, compressed when the name ends in ".gz", to the file at `path`, wholly or not at
/// all: it goes to a temporary file in the same folder, is flushed to the disk, and takes the place
/// of the file, whose mode it gets. The target of a link is replaced, not the link; a device or a
/// pipe is written as it is. Throws CommandError, with the file as it was and no temporary file
/// left; a signal that ends the program leaves none either.
void replaceFile(const std::string& path, const std::string& text);

}  // namespace tarn
