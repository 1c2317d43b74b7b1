#pragma once

#include <cstddef>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "documents/Condition.hpp"
#include "documents/Mask.hpp"
#include "documents/documentFile.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

/// The options that select managed objects of a document. Requests of commands hold it by value.
///
/// An object is selected if it meets every option that is given: one of the values of an option
/// that is given several times, and each of the conditions on values.
struct Selection {
  std::vector<std::string> classes;
  std::vector<std::string> distNames;  ///< Exact names.
  std::string distNamesFile;           ///< A file with an exact name a line; "" for none.
  std::vector<std::string> above;      ///< Names: the object itself and all below it.
  std::vector<std::string> nameParts;  ///< Texts that names contain.
  std::vector<std::string> globs;      ///< Patterns of names.
  std::vector<std::string> versions;
  std::vector<std::string> operations;  ///< "none" for objects without.
  std::vector<std::string> conditions;  ///< On values; see Condition.
  std::string maskFile;                 ///< A document whose first object is a mask; "" for none.
  bool invert = false;                  ///< Selects what does not meet the options.

  /// True if no option is given, which selects every object.
  bool isEmpty() const;
};

/// Selects objects of one or more documents.
class Selector {
 public:
  using Objects = std::vector<libtarn::model::LibTarnManagedObject*>;

  /// Reads the files of `selection`. Throws CommandError for those, and for an option that cannot
  /// be read.
  explicit Selector(const Selection& selection);

  /// The mask, or null without one.
  const libtarn::model::LibTarnManagedObject* mask() const {
    return mask_ ? &mask_->object() : nullptr;
  }
  /// The text that names must contain; "" unless it is exactly one.
  const std::string& namePart() const { return namePart_; }

  /// Returns true if `object` is selected.
  bool selects(const libtarn::model::LibTarnManagedObject& object);
  /// Returns the selected objects of `document`, in the order of the text.
  Objects select(const Document& document);

  /// Throws CommandError when `count`, the number of selected objects, is 0, and when some value of
  /// an option was met by no object that was asked about: what is not there was not meant.
  /// `subject` is the file, or the files.
  void requireFound(const std::string& subject, std::size_t count) const;

 private:
  using Test = bool (*)(const std::string& wanted,
                        const libtarn::model::LibTarnManagedObject& object);

  /// A value of an option.
  struct Wanted {
    std::string text;
    bool isMet = false;           // by some object
    std::size_t namesWithIt = 0;  // names that contain an exact name which no object has
  };
  /// The values of an option, of which an object has to meet one.
  struct Option {
    const char* name;
    Test isMet;
    std::vector<Wanted> wanted;
  };
  struct WantedValue {
    Condition condition;
    bool isThere;  // some object that meets the options has the value
  };

  void addOption(const char* name, const std::vector<std::string>& values, Test isMet);
  void addNames(const Selection& selection);
  bool meetsName(const libtarn::model::LibTarnManagedObject& object);
  static bool meetsOne(Option& option, const libtarn::model::LibTarnManagedObject& object);
  static bool hasUnmet(const Option& option);
  bool meetsOthers(const libtarn::model::LibTarnManagedObject& object);
  void requireMet(const std::string& subject) const;
  void requireNames(const std::string& subject) const;

  std::vector<Option> options_;
  std::vector<WantedValue> conditions_;
  bool meetsOptions_ = false;  // some object, apart from names and conditions
  bool meetsAll_ = false;      // some object
  bool hasNames_ = false;
  std::list<Wanted> names_;
  std::unordered_map<std::string_view, Wanted*> exactNames_;  // of names_
  std::optional<Mask> mask_;
  std::string namePart_;
  bool invert_;
};

/// Loads the file at `path` into `document` and returns the selected managed objects in the order
/// of the text. Throws CommandError, also when there are none.
Selector::Objects loadSelected(const std::string& path, const Selection& selection,
                               Document& document);

/// The order of a list of objects by their names.
enum class NameOrder { Natural, Bytes };

/// Sorts objects by their names.
void sortByName(Selector::Objects& objects, NameOrder order);

}  // namespace tarn
