#include "../../text/patternText.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"
#include "libtarn/model/List.hpp"
#include "libtarn/model/Scalar.hpp"
#include "libtarn/model/indexation/ListNameExtractor.hpp"
#include "libtarn/model/indexation/ManagedObjectClassNameExtractor.hpp"
#include "libtarn/model/indexation/ManagedObjectDistNameExtractor.hpp"
#include "libtarn/model/indexation/ScalarNameExtractor.hpp"

namespace libtarn {
namespace model {
namespace indexation {

const char* ScalarNameExtractor::operator()(const Scalar* element) const {
  return textOrEmpty(element->getName());
}

const char* ListNameExtractor::operator()(const List* element) const {
  return textOrEmpty(element->getName());
}

const char* ManagedObjectDistNameExtractor::operator()(const LibTarnManagedObject* element) const {
  return textOrEmpty(element->getDistName().getText());
}

const char* ManagedObjectClassNameExtractor::operator()(const LibTarnManagedObject* element) const {
  return textOrEmpty(element->getClass());
}

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
