#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tarn {

/// What a change did to the selected objects.
class ChangeCounts {
 public:
  /// `verb` is what is done to values, such as "set".
  ChangeCounts(std::string path, const char* verb);

  /// Adds a value that can be changed; returns its number.
  std::size_t addValue(const std::string& name);

  void beginObject() { wasChanged_ = false; }
  void endObject();
  void noteChanged();
  void noteEqual() { ++equal_; }
  /// Notes that the object lacks the value `number`.
  void noteLacking(std::size_t number) { ++values_[number].lacking; }

  /// Throws CommandError when no object has one of the values.
  void requireEachValue() const;
  /// Returns the line that says what was done.
  std::string report() const;

 private:
  struct Value {
    std::string name;
    std::size_t lacking;
  };

  std::string path_;
  std::string verb_;
  std::vector<Value> values_;
  std::size_t objects_ = 0;
  std::size_t changedObjects_ = 0;
  std::size_t changedValues_ = 0;
  std::size_t equal_ = 0;
  bool wasChanged_ = false;
};

}  // namespace tarn
