#pragma once

#include <string>
#include <vector>

#include "documents/ValuePath.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"
#include "output/Rows.hpp"

namespace tarn {

/// What a column of a list of managed objects shows: "dn", "class", "operation", "version",
/// "parameters" (their number, lists included), "file", or the value at a ValuePath. A quoted text
/// is always a path, so that a parameter named "class" has a column, too.
class Column {
 public:
  /// Throws CommandError for an empty text. `isPath`: the text is a path whatever it is.
  Column(std::string text, bool isPath);

  const std::string& name() const { return path_.text(); }
  /// How Rows describes it.
  Rows::Column description() const;
  /// Adds the cell of `object`, an object of the file at `file`. Cells may be texts of the object.
  void addCell(const libtarn::model::LibTarnManagedObject& object, const std::string& file,
               Rows& rows);
  /// True if some object had a value for the column. One that the format has is always found.
  bool isFound() const { return isFound_; }

 private:
  enum class Kind { DistName, Class, Operation, Version, ParameterCount, File, Value };

  static Kind kindOf(const std::string& text);

  ValuePath path_;
  Kind kind_;
  bool isFound_;
};

/// Reads columns that have commas between them. A column with a comma in its name is quoted. Throws
/// CommandError for a text that cannot be read.
std::vector<Column> readColumns(const std::string& option, const std::string& text);

/// The columns, for the JSON formats, of what an object holds: its parameters, lists and
/// extensions.
std::vector<Rows::Column> contentColumns();
/// Adds the cells of these columns.
void addContentCells(const libtarn::model::LibTarnManagedObject& object, Rows& rows);

}  // namespace tarn
