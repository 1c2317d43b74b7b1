#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "libtarn/util/TextPosition.hpp"

namespace tarn {

/// A file of comma-separated values as RFC 4180 describes it, with a header line. Line ends may be
/// LF alone; a byte order mark is skipped.
class CsvFile {
 public:
  struct Row {
    libtarn::util::TextPosition place;  // where it begins
    std::vector<std::string> fields;
  };

  /// Reads the file at `path`, "-" for standard input. Throws CommandError, with the place, for
  /// what is no CSV. A row may have more fields or fewer than the header.
  explicit CsvFile(const std::string& path);

  const std::vector<std::string>& header() const { return header_; }
  const std::vector<Row>& rows() const { return rows_; }

 private:
  class Reader;

  std::vector<std::string> header_;
  std::vector<Row> rows_;
};

}  // namespace tarn
