#pragma once

#include <string>

namespace tarn {

/// Whether a file of that name is to be compressed.
bool isGzipName(const std::string& path);

/// `text` as the content of a gzip file. Throws CommandError, which names `path`, in a build
/// without zlib.
std::string gzip(const std::string& path, const std::string& text);

}  // namespace tarn
