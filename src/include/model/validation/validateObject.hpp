#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {

class LibTarnManagedObject;

namespace validation {

struct Violation;

/// Validates one managed object and what is below it, as LibTarnDocument::validate() validates a
/// document. Returns a ParseResult: Done, or BrokenRule. Replaces what `violations` holds by those
/// that are found, with the messages and paths that they have in a document, also for a detached
/// object: the first `limit`, and only while the texts of those before hold fewer than `byteLimit`
/// bytes. `count`, when given, gets the number of all of them. Names that two objects have are a
/// document's matter. Logs nothing. The object must be of this library (asserted).
TARN_API int validateObject(const LibTarnManagedObject& object, std::vector<Violation>* violations,
                            std::size_t limit = SIZE_MAX, std::size_t byteLimit = SIZE_MAX,
                            std::size_t* count = nullptr);

}  // namespace validation
}  // namespace model
}  // namespace libtarn
