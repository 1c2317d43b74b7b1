#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/CsvFile.hpp"
#include "documents/Edit.hpp"
#include "documents/assignValue.hpp"
#include "documents/requireXmlText.hpp"
#include "files/InputFile.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "output/counted.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;

namespace {

struct ApplyRequest {
  std::string file;
  std::string changes;  ///< The CSV file.
  bool create = false;
  EditOptions edit;
};

constexpr std::size_t COLUMN_COUNT = 3;

/// Where a table of changes has its columns.
struct Columns {
  Columns(const std::string& file, const std::vector<std::string>& header)
      : distName(numberOf("dn", file, header)),
        path(numberOf("path", file, header)),
        value(numberOf("value", file, header)) {
    if (header.size() > COLUMN_COUNT) refuse(file);
  }

  std::size_t distName;
  std::size_t path;
  std::size_t value;

 private:
  static std::size_t numberOf(const std::string& name, const std::string& file,
                              const std::vector<std::string>& header) {
    const auto found = std::find(header.begin(), header.end(), name);
    if (found == header.end()) refuse(file);
    return static_cast<std::size_t>(found - header.begin());
  }

  [[noreturn]] static void refuse(const std::string& file) {
    throw CommandError(Status::UsageError, file,
                       "the columns must be dn, path and value, with commas between them");
  }
};

/// Applies the rows of a table to a document, and reports those that cannot be applied.
class Application {
 public:
  Application(const ApplyRequest& request, const Columns& columns, Document& document)
      : request_(request),
        columns_(columns),
        document_(document),
        cmData_(requireCmData(document, request.file)) {}

  void apply(const CsvFile::Row& row) {
    const std::string message = applyOrRefuse(row);
    if (message.empty()) return;
    ++refused_;
    const std::string place = subjectAt(request_.changes, row.place);
    const bool hasName = row.fields.size() > columns_.distName;
    reportError(
        errorLine(hasName ? subjectOf(place, row.fields[columns_.distName]) : place, message));
  }

  void requireAll() const {
    if (refused_ == 0) return;
    throw CommandError(
        Status::NothingMatched, request_.file,
        fmt::format("{} cannot be made; nothing is written", counted(refused_, "change")));
  }

  std::size_t objectCount() const { return objects_.size(); }
  std::string report() const {
    std::string text = fmt::format("{}: {} changed, {} set", printable(request_.file),
                                   counted(objects_.size(), "object"), counted(changed_, "value"));
    if (equal_ > 0) text += fmt::format(", {} had it already", counted(equal_, "object"));
    return text + "\n";
  }

 private:
  // Returns why the row cannot be applied, or "".
  std::string applyOrRefuse(const CsvFile::Row& row) {
    if (row.fields.size() != COLUMN_COUNT) {
      return fmt::format("{} instead of {}", counted(row.fields.size(), "field"), COLUMN_COUNT);
    }
    const std::string& value = row.fields[columns_.value];
    const ValuePath path(row.fields[columns_.path]);
    const std::string& distName = row.fields[columns_.distName];
    LibTarnManagedObject* const object = cmData_.getLibTarnManagedObject(distName.c_str());
    if (!object || distName.size() != std::string_view(distName.c_str()).size()) {
      return "no such object";
    }
    if (path.text().empty()) return "the path is empty";
    if (!isXmlText(path.text()) || !isXmlText(value)) {
      return "the path or the value holds what XML does not allow";
    }
    if (isBlank(value)) return "a value of blanks alone is read as an empty one";
    const auto [first, isNew] = lines_.try_emplace({object, path.text()}, row.place.line);
    if (!isNew) return fmt::format("line {} sets '{}', too", first->second, path.text());
    return assign(path, value, *object);
  }

  std::string assign(const ValuePath& path, const std::string& value,
                     LibTarnManagedObject& object) {
    Assigned assigned = assignValue(path, value, object);
    if (assigned == Assigned::IsList || assigned == Assigned::IsItem) {
      return severalValuesMessage(assigned, path.text());
    }
    const bool isCreated = assigned == Assigned::Lacking && request_.create &&
                           createValue(path, false, value, object, document_);
    if (isCreated) assigned = Assigned::Changed;
    if (assigned == Assigned::Lacking) return "nothing named '" + path.text() + "'";
    if (assigned == Assigned::Equal) {
      ++equal_;
    } else {
      ++changed_;
      objects_.insert(&object);
    }
    return "";
  }

  const ApplyRequest& request_;
  Columns columns_;
  Document& document_;
  libtarn::model::LibTarnCmData& cmData_;
  std::map<std::pair<const LibTarnManagedObject*, std::string>, std::size_t> lines_;
  std::unordered_set<const LibTarnManagedObject*> objects_;  // that changed
  std::size_t changed_ = 0;
  std::size_t equal_ = 0;
  std::size_t refused_ = 0;
};

Status applyChanges(const ApplyRequest& request) {
  requireOneStandardInput({request.file, request.changes});
  const CsvFile table(request.changes);
  const Columns columns(request.changes, table.header());
  if (table.rows().empty()) {
    throw CommandError(Status::UsageError, request.changes, "there is no row below the header");
  }
  Edit edit(request.file, request.edit);
  Application application(request, columns, edit.document());
  for (const CsvFile::Row& row : table.rows()) application.apply(row);
  application.requireAll();
  edit.confirm(application.objectCount());
  edit.finish(application.report());
  return Status::Done;
}

}  // namespace

void addApply(CommandLine& line) {
  auto [options, request] =
      line.add<ApplyRequest>("apply", "Set the values of a table, all or none", applyChanges);
  addFile(options, request.file);
  options.addArgument("CHANGES", request.changes,
                      "A CSV file with the columns dn, path and value; - is standard input");
  options.addFlag("--create", request.create, "Add parameters that an object does not have");
  addEdit(options, request.edit);
}

}  // namespace tarn
