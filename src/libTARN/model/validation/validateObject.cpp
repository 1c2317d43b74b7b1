#include "libtarn/model/validation/validateObject.hpp"

#include "../TypedChildren.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "libtarn/model/validation/Violation.hpp"

namespace libtarn {
namespace model {
namespace validation {

int validateObject(const LibTarnManagedObject& object, std::vector<Violation>* violations,
                   std::size_t limit, std::size_t byteLimit, std::size_t* count) {
  TARN_ASSERT(violations, "violations");
  violations->clear();
  Validator validator(violations, limit, byteLimit);
  validator.appendToPath(LibTarnDocument::TAG_NAME, nullptr);
  validator.appendToPath(LibTarnCmData::TAG_NAME, nullptr);
  implementation<LibTarnManagedObjectImp>(object).accept(validator);
  const std::size_t found = validator.getViolationCount();
  if (count) *count = found;
  return found == 0 ? ParseResult::Done : ParseResult::BrokenRule;
}

}  // namespace validation
}  // namespace model
}  // namespace libtarn
