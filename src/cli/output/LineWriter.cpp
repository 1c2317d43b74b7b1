#include "output/LineWriter.hpp"

#include <cstddef>

#include "output/outputFile.hpp"

namespace tarn {

namespace {

constexpr std::size_t OUTPUT_BLOCK = std::size_t{1} << 18U;

}  // namespace

void LineWriter::endLine(char end) {
  lines_ += end;
  if (lines_.size() >= OUTPUT_BLOCK) flush();
}

void LineWriter::flush() {
  writeOutput(lines_);
  lines_.clear();
}

}  // namespace tarn
