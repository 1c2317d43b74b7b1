#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "libtarn/model/LibTarnManagedObject.hpp"
#include "libtarn/model/List.hpp"
#include "libtarn/model/Scalar.hpp"
#include "output/report/PageText.hpp"

namespace tarn {

/// Writes the lines of objects, which data.js describes. They have no names of values: objects of
/// a class have the same ones, which stand on the page once.
class ObjectLines {
 public:
  explicit ObjectLines(std::string& page) : page_(page), lines_(page, "objects") {}

  void append(const libtarn::model::LibTarnManagedObject& object);
  /// Appends the lines of the names. The last call.
  void end();

 private:
  template <class Scalars>
  void appendPairs(const Scalars& scalars);
  void appendList(const libtarn::model::List& list);
  std::size_t numberOf(const std::string& names);

  std::string& page_;
  PageLines lines_;
  std::vector<const libtarn::model::Scalar*> pairs_;  // of the collection that is appended
  std::string names_;                                 // of these, each with a NUL behind it
  std::map<std::string, std::size_t> numbers_;        // of names
  std::vector<const std::string*> inOrder_;           // the keys of numbers_
};

}  // namespace tarn
