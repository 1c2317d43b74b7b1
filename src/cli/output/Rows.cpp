#include "output/Rows.hpp"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "output/LineWriter.hpp"
#include "output/displayWidth.hpp"
#include "output/escaped.hpp"
#include "output/json.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"

namespace tarn {

namespace {

/// Aligns the cells. Shown texts and widths are kept until the widest cell of a column is known.
class Table {
 public:
  Table(const Rows& rows, const std::vector<std::size_t>& numbers) {
    const std::vector<std::size_t> columns = rows.shownColumns();
    columnCount_ = columns.size();
    widths_.resize(columnCount_);
    cells_.reserve((numbers.size() + 1) * columnCount_);
    for (const std::size_t column : columns) add(rows.columns()[column].heading);
    for (const std::size_t number : numbers) {
      for (const std::size_t column : columns) add(rows.cell(number, column));
    }
  }

  void write(LineWriter& writer) const {
    for (std::size_t start = 0; start < cells_.size(); start += columnCount_) {
      std::string heading;
      appendRow(start == 0 ? heading : writer.lines(), start);
      if (start == 0) writer.lines() += styled(Style::Bold, heading);
      writer.endLine();
    }
  }

 private:
  struct Cell {
    std::string_view text;
    std::uint32_t width;
  };

  void add(std::string_view text) {
    const std::size_t column = cells_.size() % columnCount_;
    const bool isPlain = isPrintableAscii(text);
    if (!isPlain && !isPrintable(text)) {
      made_.push_back(printable(text));
      text = made_.back();
    }
    const std::size_t width = isPlain ? text.size() : displayWidth(text);
    widths_[column] = std::max(widths_[column], width);
    cells_.push_back({text, static_cast<std::uint32_t>(width)});
  }

  // No blanks after the last cell with a text.
  void appendRow(std::string& line, std::size_t start) const {
    std::size_t blanks = 0;
    for (std::size_t i = 0; i < columnCount_; ++i) {
      const Cell& cell = cells_[start + i];
      if (!cell.text.empty()) {
        line.append(blanks, ' ');
        line += cell.text;
        blanks = 0;
      }
      blanks += widths_[i] + 2 - cell.width;
    }
  }

  std::size_t columnCount_ = 0;
  std::vector<std::size_t> widths_;
  std::vector<Cell> cells_;
  std::list<std::string> made_;
};

void appendCsvField(std::string& line, std::string_view text) {
  if (text.find_first_of("\",\r\n") == std::string_view::npos) {
    line += text;
    return;
  }
  line += '"';
  for (const char c : text) {
    if (c == '"') line += '"';
    line += c;
  }
  line += '"';
}

void writeCsv(const Rows& rows, const std::vector<std::size_t>& numbers, LineWriter& writer) {
  const std::vector<std::size_t> columns = rows.shownColumns();
  const auto writeLine = [&](auto textOf) {
    for (const std::size_t column : columns) {
      if (column != columns.front()) writer.lines() += ',';
      appendCsvField(writer.lines(), textOf(column));
    }
    writer.lines() += '\r';
    writer.endLine();
  };
  writeLine([&](std::size_t column) { return std::string_view(rows.columns()[column].name); });
  for (const std::size_t number : numbers) {
    writeLine([&](std::size_t column) { return rows.cell(number, column); });
  }
}

void writeTsv(const Rows& rows, const std::vector<std::size_t>& numbers, LineWriter& writer) {
  const std::vector<std::size_t> columns = rows.shownColumns();
  for (const std::size_t number : numbers) {
    for (const std::size_t column : columns) {
      if (column != columns.front()) writer.lines() += '\t';
      appendEscaped(writer.lines(), rows.cell(number, column));
    }
    writer.endLine();
  }
}

/// Writes rows as JSON without a JSON object for each, which would cost more than everything else.
/// The JSON library writes each text.
class JsonRows {
 public:
  explicit JsonRows(const Rows& rows) : rows_(rows), columns_(rows.shownColumns()) {
    for (const std::size_t column : columns_) {
      members_.push_back((members_.empty() ? "" : ",") + jsonText(rows.columns()[column].name) +
                         ":");
    }
  }

  void append(std::string& line, std::size_t number) const {
    line += '{';
    for (std::size_t i = 0; i < members_.size(); ++i) {
      line += members_[i];
      const std::string_view cell = rows_.cell(number, columns_[i]);
      if (!cell.data()) {
        line += "null";
      } else if (rows_.columns()[columns_[i]].kind == Rows::Kind::Text) {
        line += jsonText(cell);
      } else {
        line += cell;
      }
    }
    line += '}';
  }

 private:
  const Rows& rows_;
  std::vector<std::size_t> columns_;
  std::vector<std::string> members_;
};

void writeJsonLines(const Rows& rows, const std::vector<std::size_t>& numbers, LineWriter& writer) {
  const JsonRows json(rows);
  for (const std::size_t number : numbers) {
    json.append(writer.lines(), number);
    writer.endLine();
  }
}

void writeJson(const Rows& rows, const std::vector<std::size_t>& numbers, LineWriter& writer) {
  const JsonRows json(rows);
  writer.lines() += '[';
  const char* separator = "";
  for (const std::size_t number : numbers) {
    writer.lines() += separator;
    writer.endLine();
    json.append(writer.lines(), number);
    separator = ",";
  }
  writer.endLine();
  writer.lines() += ']';
  writer.endLine();
}

}  // namespace

std::vector<std::size_t> Rows::shownColumns() const {
  std::vector<std::size_t> numbers;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (columns_[i].kind != Kind::Hidden) numbers.push_back(i);
  }
  return numbers;
}

void Rows::addKept(std::string text) {
  kept_.push_back(std::move(text));
  add(kept_.back());
}

void Rows::addNumber(std::size_t number) {
  const auto [position, isNew] = numbers_.try_emplace(number);
  if (isNew) position->second = std::to_string(number);
  add(position->second);
}

void writeRows(const Rows& rows, const std::vector<std::size_t>& numbers, RowFormat format) {
  LineWriter writer;
  switch (format) {
    case RowFormat::Table:
      Table(rows, numbers).write(writer);
      break;
    case RowFormat::Tsv:
      writeTsv(rows, numbers, writer);
      break;
    case RowFormat::Csv:
      writeCsv(rows, numbers, writer);
      break;
    case RowFormat::Json:
      writeJson(rows, numbers, writer);
      break;
    case RowFormat::JsonLines:
      writeJsonLines(rows, numbers, writer);
      break;
  }
  writer.flush();
}

}  // namespace tarn
