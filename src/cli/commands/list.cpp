#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/Selection.hpp"
#include "output/LineWriter.hpp"
#include "output/json.hpp"
#include "output/operationText.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;

namespace {

enum class ListFormat { Table, Tsv, Json, Dn };

struct ListRequest {
  std::string file;
  Selection selection;
  ListFormat format = ListFormat::Table;
};

constexpr std::size_t COLUMNS = 5;
constexpr std::array<const char*, COLUMNS> HEADINGS = {"DN", "CLASS", "OPERATION", "VERSION",
                                                       "PARAMETERS"};

using Row = std::array<const char*, COLUMNS - 1>;  // without the number of parameters

Row rowOf(const LibTarnManagedObject& object) {
  return {textOrEmpty(object.getDistName().getText()), textOrEmpty(object.getClass()),
          operationText(object), textOrEmpty(object.getVersion())};
}

// Counts parameters and lists.
std::size_t parameterCount(const LibTarnManagedObject& object) {
  const auto scalars = object.getScalarParameters();
  const auto lists = object.getListParameters();
  return static_cast<std::size_t>(std::distance(scalars.begin(), scalars.end()) +
                                  std::distance(lists.begin(), lists.end()));
}

// Appends `text` with tabs and line ends escaped.
void appendField(std::string& line, const char* text) {
  for (; *text != '\0'; ++text) {
    switch (*text) {
      case '\\':
        line += "\\\\";
        break;
      case '\t':
        line += "\\t";
        break;
      case '\n':
        line += "\\n";
        break;
      case '\r':
        line += "\\r";
        break;
      default:
        line += *text;
    }
  }
}

void writeTsv(const LibTarnManagedObject& object, LineWriter& writer) {
  for (const char* field : rowOf(object)) {
    appendField(writer.lines(), field);
    writer.lines() += '\t';
  }
  writer.lines() += fmt::format_int(parameterCount(object)).c_str();
  writer.endLine();
}

// Writes the members without a JSON object, which would cost more than everything else. The JSON
// library writes each text.
void writeJson(const LibTarnManagedObject& object, LineWriter& writer) {
  constexpr std::array<const char*, COLUMNS> MEMBERS = {
      "{\"dn\":", ",\"class\":", ",\"operation\":", ",\"version\":", ",\"parameters\":"};
  const Row row = rowOf(object);
  for (std::size_t i = 0; i < row.size(); ++i) {
    writer.lines() += MEMBERS[i];
    writer.lines() += jsonText(row[i]);
  }
  writer.lines() += MEMBERS.back();
  writer.lines() += fmt::format_int(parameterCount(object)).c_str();
  writer.lines() += '}';
  writer.endLine();
}

void writeDn(const LibTarnManagedObject& object, LineWriter& writer) {
  appendField(writer.lines(), rowOf(object)[0]);
  writer.endLine();
}

/// A row of the table. Rows are kept until the widths of the columns are known.
struct TableRow {
  std::array<std::string_view, COLUMNS> cells;
  std::array<std::uint32_t, COLUMNS> widths;
};

/// The rows, and the texts that were made for them.
class Table {
 public:
  explicit Table(std::size_t rowCount) { rows_.reserve(rowCount); }

  void addRow(const std::array<std::string_view, COLUMNS>& cells) {
    TableRow row{};
    for (std::size_t i = 0; i < COLUMNS; ++i) {
      const bool isPlain = isPrintableAscii(cells[i]);
      row.cells[i] = isPlain ? cells[i] : shown(cells[i]);
      row.widths[i] =
          static_cast<std::uint32_t>(isPlain ? cells[i].size() : displayWidth(row.cells[i]));
      widths_[i] = std::max<std::size_t>(widths_[i], row.widths[i]);
    }
    rows_.push_back(row);
  }

  void write(LineWriter& writer) const {
    for (const TableRow& row : rows_) {
      std::string line;
      std::string& target = &row == &rows_.front() ? line : writer.lines();
      appendRow(target, row);
      if (&row == &rows_.front()) writer.lines() += styled(Style::Bold, line);
      writer.endLine();
    }
  }

 private:
  std::string_view shown(std::string_view text) {
    if (isPrintable(text)) return text;
    made_.push_back(printable(text));
    return made_.back();
  }

  // No blanks after the last column.
  void appendRow(std::string& line, const TableRow& row) const {
    for (std::size_t i = 0; i + 1 < COLUMNS; ++i) {
      line += row.cells[i];
      line.append(widths_[i] + 2 - row.widths[i], ' ');
    }
    line += row.cells.back();
  }

  std::vector<TableRow> rows_;
  std::array<std::size_t, COLUMNS> widths_{};
  std::list<std::string> made_;
};

// Takes numbers from a table of texts, since most objects have few parameters.
class NumberTexts {
 public:
  std::string_view operator()(std::size_t number) {
    const auto [it, isNew] = texts_.try_emplace(number);
    if (isNew) it->second = std::to_string(number);
    return it->second;
  }

 private:
  std::map<std::size_t, std::string> texts_;
};

void writeTable(const std::vector<LibTarnManagedObject*>& objects, LineWriter& writer) {
  Table table(objects.size() + 1);
  NumberTexts numbers;
  table.addRow({HEADINGS[0], HEADINGS[1], HEADINGS[2], HEADINGS[3], HEADINGS[4]});
  for (const LibTarnManagedObject* object : objects) {
    const Row row = rowOf(*object);
    table.addRow({row[0], row[1], row[2], row[3], numbers(parameterCount(*object))});
  }
  table.write(writer);
}

void write(const std::vector<LibTarnManagedObject*>& objects, ListFormat format,
           LineWriter& writer) {
  if (format == ListFormat::Table) return writeTable(objects, writer);
  for (const LibTarnManagedObject* object : objects) {
    switch (format) {
      case ListFormat::Json:
        writeJson(*object, writer);
        break;
      case ListFormat::Dn:
        writeDn(*object, writer);
        break;
      default:
        writeTsv(*object, writer);
    }
  }
}

Status listObjects(const ListRequest& request) {
  Document document;
  LineWriter writer;
  write(loadSelected(request.file, request.selection, document), request.format, writer);
  writer.flush();
  return Status::Done;
}

}  // namespace

void addList(CommandLine& line) {
  auto [options, request] = line.add<ListRequest>(
      "list", "List the objects that match, in the order of their names", listObjects);
  addFile(options, request.file);
  addSelection(options, "", request.selection);
  options.addChoice<ListFormat>("--format", "FORM", request.format,
                                {{"table", ListFormat::Table},
                                 {"tsv", ListFormat::Tsv},
                                 {"json", ListFormat::Json},
                                 {"dn", ListFormat::Dn}},
                                "Form of the list: table, tsv, json, dn");
}

}  // namespace tarn
