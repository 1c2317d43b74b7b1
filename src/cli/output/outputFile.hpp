#pragma once

#include <string>

namespace tarn {

/// Thrown when the program that reads standard output has closed it. The command ends without a
/// report.
struct OutputClosed {};

/// True if the standard stream `descriptor` was closed when the command began: main() has put in
/// its place what can be neither read nor written.
bool isReserved(int descriptor);

/// Writes `text` to standard output. Throws CommandError when not all of it can be written, and
/// OutputClosed.
void writeOutput(const std::string& text);

/// Writes `text` to the open file `file`, which the progress calls `path`. Returns false, with
/// errno, when not all of it can be written.
bool writeAll(int file, const std::string& path, const std::string& text);

}  // namespace tarn
