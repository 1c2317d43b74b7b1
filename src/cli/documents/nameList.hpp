#pragma once

#include <string>
#include <vector>

namespace tarn {

/// Reads distinguished names from the file at `path`, "-" for standard input: one on each line,
/// escaped as `tarn list --format dn` writes them, or, when there is a NUL in the file, one before
/// each NUL, as `--format dn0` writes them. Empty lines count for nothing. Throws CommandError.
std::vector<std::string> readNameList(const std::string& path);

}  // namespace tarn
