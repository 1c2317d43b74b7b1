#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <list>

#include "commands.hpp"
#include "json.hpp"
#include "model/LibTarnManagedObjectImp.hpp"
#include "outputFile.hpp"
#include "terminal.hpp"

namespace tarn {

using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;

namespace {

constexpr std::size_t OUTPUT_BLOCK = std::size_t{1} << 18U;
constexpr std::size_t COLUMNS = 5;
constexpr std::array<const char*, COLUMNS> HEADINGS = {"DN", "CLASS", "OPERATION", "VERSION",
                                                       "PARAMETERS"};

using Row = std::array<const char*, COLUMNS - 1>;  // without the number of parameters

const char* textOrEmpty(const char* text) { return text ? text : ""; }

Row rowOf(const LibTarnManagedObject& object) {
  const auto& element = dynamic_cast<const libtarn::model::LibTarnManagedObjectImp&>(object);
  return {textOrEmpty(object.getDistName().getText()), textOrEmpty(object.getClass()),
          element.getAttribute("operation", ""), textOrEmpty(object.getVersion())};
}

// Single values and lists.
std::size_t parameterCount(const LibTarnManagedObject& object) {
  const auto scalars = object.getScalarParameters();
  const auto lists = object.getListParameters();
  return static_cast<std::size_t>(std::distance(scalars.begin(), scalars.end()) +
                                  std::distance(lists.begin(), lists.end()));
}

/// Takes lines and writes them in blocks.
class LineWriter {
 public:
  std::string& lines() { return lines_; }
  void endLine() {
    lines_ += '\n';
    if (lines_.size() >= OUTPUT_BLOCK) flush();
  }
  void flush() {
    writeOutput(lines_);
    lines_.clear();
  }

 private:
  std::string lines_;
};

// Appends `text` such that it holds no tab and no line end.
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

void writeJson(const LibTarnManagedObject& object, LineWriter& writer) {
  const Row row = rowOf(object);
  const Json json = {{"dn", row[0]},
                     {"class", row[1]},
                     {"operation", row[2]},
                     {"version", row[3]},
                     {"parameters", parameterCount(object)}};
  writer.lines() += jsonText(json);
  writer.endLine();
}

void writeDn(const LibTarnManagedObject& object, LineWriter& writer) {
  appendField(writer.lines(), rowOf(object)[0]);
  writer.endLine();
}

using Cells = std::array<std::string, COLUMNS>;

Cells cellsOf(const LibTarnManagedObject& object) {
  const Row row = rowOf(object);
  Cells cells;
  for (std::size_t i = 0; i < row.size(); ++i) cells[i] = printable(row[i]);
  cells[COLUMNS - 1] = std::to_string(parameterCount(object));
  return cells;
}

// The last column has no blanks behind it.
std::string tableLine(const Cells& cells, const std::array<std::size_t, COLUMNS>& widths) {
  std::string line;
  for (std::size_t i = 0; i + 1 < COLUMNS; ++i) {
    line += cells[i];
    line.append(widths[i] + 2 - displayWidth(cells[i]), ' ');
  }
  return line + cells[COLUMNS - 1];
}

void writeTable(const std::list<LibTarnManagedObject*>& objects, LineWriter& writer) {
  const Cells headings = {HEADINGS[0], HEADINGS[1], HEADINGS[2], HEADINGS[3], HEADINGS[4]};
  std::array<std::size_t, COLUMNS> widths{};
  const auto widen = [&widths](const Cells& cells) {
    for (std::size_t i = 0; i < COLUMNS; ++i)
      widths[i] = std::max(widths[i], displayWidth(cells[i]));
  };
  widen(headings);
  for (const LibTarnManagedObject* object : objects) widen(cellsOf(*object));
  writer.lines() += styled(Style::Bold, tableLine(headings, widths));
  writer.endLine();
  for (const LibTarnManagedObject* object : objects) {
    writer.lines() += tableLine(cellsOf(*object), widths);
    writer.endLine();
  }
}

void write(const std::list<LibTarnManagedObject*>& objects, ListFormat format, LineWriter& writer) {
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

}  // namespace

void listCommand(const std::string& path, const PatternOptions& mask, ListFormat format) {
  const ObjectPattern pattern = ObjectPattern::mask(mask);
  LibTarnDocument document;
  loadDocument(path, document);
  const std::list<LibTarnManagedObject*> objects = document.getMOsMatchingMask(pattern.object());
  if (objects.empty()) throw CommandError(Status::NothingMatched, path, "no object matches");
  LineWriter writer;
  write(objects, format, writer);
  writer.flush();
}

}  // namespace tarn
