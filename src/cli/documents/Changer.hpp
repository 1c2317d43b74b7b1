#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "documents/ChangeCounts.hpp"
#include "documents/Changes.hpp"
#include "documents/Mask.hpp"
#include "documents/ValuePath.hpp"
#include "documents/documentFile.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

class Selector;

/// Makes changes in the managed objects of a document. An object that lacks a value stays without
/// it, unless the changes create values.
class Changer {
 public:
  /// Reads the changes. `path` is the file that is changed. A name in a document of new values
  /// replaces, in the names of the objects, the text that `selector` looks for, which must outlive
  /// the changer. Throws CommandError for what cannot be read, and for values that XML does not
  /// allow.
  Changer(const Changes& changes, const Selector& selector, const std::string& path);

  /// Changes one object of `document`. Throws CommandError for a change that breaks a rule of the
  /// model.
  void change(libtarn::model::LibTarnManagedObject& object, Document& document);

  /// Throws CommandError when no object has one of the values.
  void requireEachValue() const { counts_.requireEachValue(); }
  /// Returns the line that says what was done.
  std::string report() const { return counts_.report(); }

 private:
  struct Assignment {
    ValuePath path;
    bool isQuoted;
    std::string value;
    std::size_t number;  // in the counts
  };
  /// A parameter or list of the document of new values.
  struct NewValue {
    std::string name;
    std::string text;
    bool isList;
    std::size_t number;  // in the counts
  };

  void readAssignment(const std::string& text);
  void readValues(const Selector& selector);
  void makeAttributes(const Changes& changes);
  void assign(const Assignment& assignment, libtarn::model::LibTarnManagedObject& object,
              Document& document);
  void changeToValues(libtarn::model::LibTarnManagedObject& object);
  const libtarn::model::LibTarnManagedObject& valuesWithout(
      const std::vector<const NewValue*>& lacking);
  void setAttributes(libtarn::model::LibTarnManagedObject& object);
  std::size_t applyAndCount(const libtarn::model::LibTarnManagedObject& pattern,
                            const libtarn::model::LibTarnManagedObject& values,
                            libtarn::model::LibTarnManagedObject& object);
  void apply(const libtarn::model::LibTarnManagedObject& pattern,
             const libtarn::model::LibTarnManagedObject& values,
             libtarn::model::LibTarnManagedObject& object) const;

  std::string path_;
  bool creates_;
  ChangeCounts counts_;
  std::vector<Assignment> assignments_;
  Document own_;  // of the objects that are made here
  const libtarn::model::LibTarnManagedObject* attributes_ = nullptr;  // a class, a version
  const libtarn::model::LibTarnManagedObject* anything_ = nullptr;    // a mask
  std::optional<Mask> values_;
  std::vector<NewValue> newValues_;
  const libtarn::model::LibTarnManagedObject* pattern_ = nullptr;  // the name that is replaced
  // The values without those that some object lacks, by the numbers of what they are without.
  std::map<std::string, libtarn::model::LibTarnManagedObject*> valuesWithout_;
};

}  // namespace tarn
