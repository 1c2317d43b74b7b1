#include <algorithm>
#include <cstddef>
#include <list>
#include <map>
#include <numeric>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/Column.hpp"
#include "documents/Selection.hpp"
#include "documents/VisitedFile.hpp"
#include "output/LineWriter.hpp"
#include "output/Rows.hpp"
#include "output/escaped.hpp"
#include "output/outputFile.hpp"
#include "output/printable.hpp"
#include "text/decimal.hpp"
#include "text/naturalOrder.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;

namespace {

enum class ListFormat { Table, Tsv, Csv, Json, JsonLines, Dn, Dn0 };

struct ListRequest {
  std::vector<std::string> files;
  Selection selection;
  ListFormat format = ListFormat::Table;
  std::string columns;  ///< "" for the usual ones.
  bool values = false;
  bool count = false;
  std::string countBy;
  std::string sort;
  std::size_t limit = 0;  ///< 0 for all.
  bool byteOrder = false;
};

/// What rows are ordered by: "NAME", or "-NAME" for the reverse order.
class SortKey {
 public:
  explicit SortKey(const std::string& text)
      : isReverse_(!text.empty() && text.front() == '-'), name_(text.substr(isReverse_ ? 1 : 0)) {}

  const std::string& name() const { return name_; }
  /// Numbers come before other texts, and what has no value last, in both directions.
  bool isBefore(std::string_view a, std::string_view b) const {
    const int rank = rankOf(a);
    if (rank != rankOf(b)) return rank < rankOf(b);
    const int order = rank == 0 ? compareDecimals(a, b) : compareNaturally(a, b);
    return isReverse_ ? order > 0 : order < 0;
  }

 private:
  static int rankOf(std::string_view cell) {
    if (!cell.data()) return 2;
    return isDecimal(cell) ? 0 : 1;
  }

  bool isReverse_;
  std::string name_;
};

void sortByColumn(const Rows& rows, std::size_t column, const SortKey& key,
                  std::vector<std::size_t>& numbers) {
  std::stable_sort(numbers.begin(), numbers.end(), [&](std::size_t a, std::size_t b) {
    return key.isBefore(rows.cell(a, column), rows.cell(b, column));
  });
}

Column columnOf(const std::string& option, const std::string& text) {
  std::vector<Column> columns = readColumns(option, text);
  if (columns.size() > 1) throwUsageError(option + " takes one name");
  return std::move(columns.front());
}

/// The list while it is made: the selected objects of each file, as rows.
///
/// Behind the columns that are written come hidden ones: the name, and what the list is ordered or
/// counted by.
class List {
 public:
  explicit List(const ListRequest& request)
      : request_(request),
        selector_(request.selection),
        sortKey_(request.sort),
        columns_(columnsOf(request)),
        rows_(describe()) {}

  void addFile(const std::string& path) {
    const std::size_t start = rows_.count();
    files_.emplace_back(path).visitObjects(
        [&](const LibTarnManagedObject& object) {
          if (selector_.selects(object)) addRow(object, path);
        },
        [&] { rows_.cut(start); });
    ends_.push_back(rows_.count());
  }

  void requireFound() const {
    const std::string subject = request_.files.size() == 1 ? request_.files.front() : "all files";
    selector_.requireFound(subject, rows_.count());
    for (const Column& column : columns_) {
      if (column.isFound()) continue;
      throw CommandError(Status::NothingMatched, subject,
                         "none of the objects has a value '" + column.name() + "'");
    }
  }

  const Rows& rows() const { return rows_; }
  std::string_view distName(std::size_t number) const { return rows_.cell(number, nameColumn_); }
  std::string_view key(std::size_t number) const { return rows_.cell(number, nameColumn_ + 1); }

  std::vector<std::size_t> countOfFiles() const {
    std::vector<std::size_t> counts;
    std::size_t start = 0;
    for (const std::size_t end : ends_) counts.push_back(end - std::exchange(start, end));
    return counts;
  }

  /// The numbers of the rows in the order of the list.
  std::vector<std::size_t> order() const {
    std::vector<std::size_t> numbers(rows_.count());
    std::iota(numbers.begin(), numbers.end(), std::size_t{0});
    std::size_t start = 0;
    for (const std::size_t end : ends_) sortByName(numbers, std::exchange(start, end), end);
    if (!request_.sort.empty()) sortByColumn(rows_, nameColumn_ + 1, sortKey_, numbers);
    return numbers;
  }

 private:
  static std::vector<Column> distinct(std::vector<Column> columns) {
    std::set<std::string> names;
    for (const Column& column : columns) {
      if (names.insert(column.name()).second) continue;
      throwUsageError("--columns names '" + column.name() + "' more than once");
    }
    return columns;
  }

  static std::vector<Column> columnsOf(const ListRequest& request) {
    if (!request.countBy.empty()) return {};
    if (!request.columns.empty()) return distinct(readColumns("--columns", request.columns));
    std::string usual = request.files.size() > 1 ? "file," : "";
    return readColumns("--columns", usual + "dn,class,operation,version,parameters");
  }

  std::vector<Rows::Column> describe() {
    std::vector<Rows::Column> descriptions;
    for (const Column& column : columns_) descriptions.push_back(column.description());
    if (request_.values) {
      for (const Rows::Column& column : contentColumns()) descriptions.push_back(column);
    }
    nameColumn_ = descriptions.size();
    columns_.emplace_back("dn", false);
    descriptions.push_back({"", "", Rows::Kind::Hidden});
    if (!request_.countBy.empty()) {
      columns_.push_back(columnOf("--count-by", request_.countBy));
    } else if (!request_.sort.empty()) {
      columns_.push_back(columnOf("--sort", sortKey_.name()));
    }
    while (descriptions.size() < columns_.size() + (request_.values ? 3 : 0)) {
      descriptions.push_back({"", "", Rows::Kind::Hidden});
    }
    return descriptions;
  }

  void addRow(const LibTarnManagedObject& object, const std::string& path) {
    const std::size_t shown = nameColumn_ - (request_.values ? 3 : 0);
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      if (i == shown && request_.values) addContentCells(object, rows_);
      columns_[i].addCell(object, path, rows_);
    }
  }

  void sortByName(std::vector<std::size_t>& numbers, std::size_t start, std::size_t end) const {
    const auto isBefore = [this](std::size_t a, std::size_t b) {
      return request_.byteOrder ? distName(a) < distName(b)
                                : isNaturallyBefore(distName(a), distName(b));
    };
    const auto first = numbers.begin() + static_cast<std::ptrdiff_t>(start);
    const auto last = numbers.begin() + static_cast<std::ptrdiff_t>(end);
    if (!std::is_sorted(first, last, isBefore)) std::sort(first, last, isBefore);
  }

  const ListRequest& request_;
  Selector selector_;
  SortKey sortKey_;
  std::vector<Column> columns_;  // with the hidden ones, without those of the content
  std::size_t nameColumn_ = 0;
  Rows rows_;
  std::list<VisitedFile> files_;
  std::vector<std::size_t> ends_;  // of each file's rows
};

bool listsNames(const ListRequest& request) {
  return request.format == ListFormat::Dn || request.format == ListFormat::Dn0;
}

bool isJson(const ListRequest& request) {
  return request.format == ListFormat::Json || request.format == ListFormat::JsonLines;
}

void refuseIgnored(const ListRequest& request) {
  if (listsNames(request) && !request.columns.empty()) {
    throwUsageError("--columns has no meaning for a list of names");
  }
  if (listsNames(request) && !request.countBy.empty()) {
    throwUsageError("--count-by has no meaning for a list of names");
  }
  if (request.values && !isJson(request)) {
    throwUsageError("--values needs --format json or --format jsonl");
  }
}

RowFormat rowFormatOf(const ListRequest& request) {
  switch (request.format) {
    case ListFormat::Tsv:
      return RowFormat::Tsv;
    case ListFormat::Csv:
      return RowFormat::Csv;
    case ListFormat::Json:
      return RowFormat::Json;
    case ListFormat::JsonLines:
      return RowFormat::JsonLines;
    default:
      return RowFormat::Table;
  }
}

void limit(const ListRequest& request, std::vector<std::size_t>& numbers) {
  if (request.limit > 0 && numbers.size() > request.limit) numbers.resize(request.limit);
}

void writeNames(const List& list, const ListRequest& request) {
  std::vector<std::size_t> numbers = list.order();
  limit(request, numbers);
  LineWriter writer;
  for (const std::size_t number : numbers) {
    if (request.format == ListFormat::Dn0) {
      writer.lines() += list.distName(number);
      writer.endLine('\0');
    } else {
      appendEscaped(writer.lines(), list.distName(number));
      writer.endLine();
    }
  }
  writer.flush();
}

void writeCounts(const List& list, const ListRequest& request) {
  const std::vector<std::size_t> counts = list.countOfFiles();
  std::string lines;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    if (counts.size() > 1) lines += printable(request.files[i]) + ": ";
    lines += std::to_string(counts[i]) + "\n";
  }
  writeOutput(lines);
}

// By the value, or by --sort: the name of the value, or "count".
void writeCountsByValue(const List& list, const ListRequest& request) {
  std::map<std::string_view, std::size_t> counts;
  std::size_t without = 0;
  for (std::size_t i = 0; i < list.rows().count(); ++i) {
    const std::string_view value = list.key(i);
    ++(value.data() ? counts[value] : without);
  }
  Rows rows({columnOf("--count-by", request.countBy).description(),
             {"count", "COUNT", Rows::Kind::Number}});
  for (const auto& [value, count] : counts) {
    rows.add(value);
    rows.addNumber(count);
  }
  if (without > 0) {
    rows.add(Rows::NOTHING);
    rows.addNumber(without);
  }
  const SortKey key(request.sort);
  if (!key.name().empty() && key.name() != "count" && key.name() != request.countBy) {
    throwUsageError("--sort takes " + request.countBy + " or count here");
  }
  std::vector<std::size_t> numbers(rows.count());
  std::iota(numbers.begin(), numbers.end(), std::size_t{0});
  sortByColumn(rows, 0, SortKey(""), numbers);
  sortByColumn(rows, key.name() == "count" ? 1 : 0, key, numbers);
  limit(request, numbers);
  writeRows(rows, numbers, rowFormatOf(request));
}

void write(const List& list, const ListRequest& request) {
  if (request.count) return writeCounts(list, request);
  if (!request.countBy.empty()) return writeCountsByValue(list, request);
  if (listsNames(request)) return writeNames(list, request);
  std::vector<std::size_t> numbers = list.order();
  limit(request, numbers);
  writeRows(list.rows(), numbers, rowFormatOf(request));
}

Status listObjects(const ListRequest& request) {
  refuseIgnored(request);
  List list(request);
  for (const std::string& path : request.files) list.addFile(path);
  list.requireFound();
  write(list, request);
  return Status::Done;
}

void addShape(Options& options, ListRequest& request) {
  options.addChoice<ListFormat>("--format", "FORM", request.format,
                                {{"table", ListFormat::Table},
                                 {"tsv", ListFormat::Tsv},
                                 {"csv", ListFormat::Csv},
                                 {"json", ListFormat::Json},
                                 {"jsonl", ListFormat::JsonLines},
                                 {"dn", ListFormat::Dn},
                                 {"dn0", ListFormat::Dn0}},
                                "Form of the list: table, tsv, csv, json, jsonl, dn, dn0");
  options.addText("--columns", "NAMES", request.columns,
                  "What to list, with commas between: dn, class, operation, version, parameters, "
                  "file, or names of values");
  options.addFlag("--values", request.values, "List all values, too, with json and jsonl");
  options.addText("--sort", "NAME", request.sort, "Order by this column; -NAME reverses");
  options.addNumber("--limit", request.limit, "List the first N only; 0 for all");
  options.addFlag("--count", request.count, "Write the number of objects only");
  options.addText("--count-by", "NAME", request.countBy, "Count the objects by this column");
  addNameOrder(options, request.byteOrder);
  for (const char* const other :
       {"--format", "--columns", "--values", "--sort", "--limit", "--count-by", "--byte-order"}) {
    options.exclude("--count", other);
  }
  for (const char* const other : {"--columns", "--values", "--byte-order"}) {
    options.exclude("--count-by", other);
  }
}

}  // namespace

void addList(CommandLine& line) {
  auto [options, request] = line.add<ListRequest>(
      "list", "List the objects that are selected, in the order of their names", listObjects);
  options.addArguments("FILE", request.files, "The documents; - is standard input");
  addSelection(options, request.selection);
  addShape(options, request);
}

}  // namespace tarn
