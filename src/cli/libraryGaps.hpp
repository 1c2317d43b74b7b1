#pragma once

#include <cstddef>
#include <string>

#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"
#include "libtarn/model/validation/Validator.hpp"

namespace tarn {

// What the command needs of the library and the headers for hosts do not offer. Every function
// stands for an operation that is missing there; this is the only file of the command that uses the
// library's node classes and DOM layer.

/// The text of the attribute "operation", "" when there is none.
const char* operationText(const libtarn::model::LibTarnManagedObject& object);

/// The object as XML, as it is printed within its document.
std::string xmlOf(const libtarn::model::LibTarnManagedObject& object);

/// A detached copy of `object` in `document`. Throws ModelException.
libtarn::model::LibTarnManagedObject& copyInto(libtarn::model::LibTarnDocument& document,
                                               const libtarn::model::LibTarnManagedObject& object);

/// Lets `validator` walk the whole document.
void validateDocument(const libtarn::model::LibTarnDocument& document,
                      libtarn::model::validation::Validator& validator);

/// Lets `validator`, a new one, walk the object alone, on the path that objects have in a document.
void validateObject(const libtarn::model::LibTarnManagedObject& object,
                    libtarn::model::validation::Validator& validator);

/// How the path of a violation in a managed object begins.
std::string pathOfObjects();

struct ElementCounts {
  std::size_t elements = 0;
  std::size_t parameters = 0;  ///< Named single values, wherever they stand, and lists.
  std::size_t depth = 0;       ///< The root is at 1.
};
ElementCounts countElements(const libtarn::model::LibTarnDocument& document);

/// True if the document has elements whose tags are beginnings of those that the format has. A
/// merge gives their copies the whole tags, and so rules that the elements did not have to follow.
bool hasAbbreviatedTags(const libtarn::model::LibTarnDocument& document);

}  // namespace tarn
