#pragma once

#include <cstddef>
#include <list>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarn {

/// The form in which rows are written to standard output.
enum class RowFormat {
  Table,      ///< Aligned columns below their headings.
  Tsv,        ///< Tabs between the cells, no headings; tabs, line ends and backslashes are escaped.
  Csv,        ///< RFC 4180, with headings.
  Json,       ///< An array of objects.
  JsonLines,  ///< An object on each line.
};

/// Rows of cells below named columns. The texts of the cells belong to others, or are kept here.
class Rows {
 public:
  enum class Kind {
    Text,
    Number,  ///< Decimal digits, a number in JSON.
    Json,    ///< A value in JSON, for the JSON formats only.
    Hidden,  ///< What rows are ordered by; not written.
  };
  struct Column {
    std::string name;     ///< In JSON.
    std::string heading;  ///< In a table.
    Kind kind = Kind::Text;
  };
  /// The cell of a row that has nothing in a column: empty, in JSON null.
  static constexpr std::string_view NOTHING{};

  explicit Rows(std::vector<Column> columns) : columns_(std::move(columns)) {}

  /// The numbers of the columns that are written.
  std::vector<std::size_t> shownColumns() const;
  const std::vector<Column>& columns() const { return columns_; }
  std::size_t count() const { return columns_.empty() ? 0 : cells_.size() / columns_.size(); }
  std::string_view cell(std::size_t row, std::size_t column) const {
    return cells_[row * columns_.size() + column];
  }

  /// Adds the next cell of the row that is being added.
  void add(std::string_view cell) { cells_.push_back(cell); }
  /// As add(), for a text that is kept here.
  void addKept(std::string text);
  /// Adds a number as the next cell.
  void addNumber(std::size_t number);
  /// Removes all rows behind the first `count`.
  void cut(std::size_t count) { cells_.resize(count * columns_.size()); }

 private:
  std::vector<Column> columns_;
  std::vector<std::string_view> cells_;
  std::list<std::string> kept_;
  std::map<std::size_t, std::string> numbers_;  // few are different
};

/// Writes the rows of `numbers`, in that order. Throws OutputClosed and CommandError.
void writeRows(const Rows& rows, const std::vector<std::size_t>& numbers, RowFormat format);

}  // namespace tarn
