#pragma once

#include <string>

namespace tarn {

/// True if a file of that name is compressed.
bool isGzipName(const std::string& path);

/// Returns the content of a gzip file that holds `text`. Throws CommandError, with `path` as its
/// subject, in a build without zlib.
std::string gzip(const std::string& path, const std::string& text);

}  // namespace tarn
