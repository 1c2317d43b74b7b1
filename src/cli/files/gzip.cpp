#include "files/gzip.hpp"

#include "CommandError.hpp"

#ifdef TARN_WITH_ZLIB
#include <zlib.h>

#include <algorithm>
#include <array>
#include <climits>
#include <memory>
#include <new>

#include "files/blockSizes.hpp"
#include "output/Progress.hpp"
#endif

namespace tarn {

bool isGzipName(const std::string& path) {
  constexpr const char* EXTENSION = ".gz";
  constexpr std::size_t LENGTH = 3;
  return path.size() > LENGTH && path.compare(path.size() - LENGTH, LENGTH, EXTENSION) == 0;
}

#ifdef TARN_WITH_ZLIB

std::string gzip(const std::string& path, const std::string& text) {
  constexpr int WITH_GZIP_HEADER = 16;
  constexpr int MEMORY_LEVEL = 8;
  z_stream stream{};
  if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + WITH_GZIP_HEADER,
                   MEMORY_LEVEL, Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::bad_alloc();
  }
  const std::unique_ptr<z_stream, decltype(&deflateEnd)> end(&stream, &deflateEnd);
  Progress progress("Compressing", path, text.size());
  std::string result;
  std::array<char, GZIP_BLOCK> block{};
  std::size_t taken = 0;
  int state = Z_OK;
  while (state != Z_STREAM_END) {
    if (stream.avail_in == 0) {
      const std::size_t count = std::min<std::size_t>(text.size() - taken, INT_MAX);
      stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data() + taken));
      stream.avail_in = static_cast<uInt>(count);
      taken += count;
    }
    stream.next_out = reinterpret_cast<Bytef*>(block.data());
    stream.avail_out = static_cast<uInt>(block.size());
    state = deflate(&stream, taken == text.size() ? Z_FINISH : Z_NO_FLUSH);
    result.append(block.data(), block.size() - stream.avail_out);
    progress.reach(stream.total_in);
  }
  return result;
}

#else

std::string gzip(const std::string& path, const std::string& /*text*/) {
  throw CommandError(Status::FileError, path, "this build cannot write compressed files");
}

#endif

}  // namespace tarn
