#include "../patternText.hpp"
#include "model/LibTarnManagedObject.hpp"
#include "model/List.hpp"
#include "model/Scalar.hpp"
#include "model/indexation/ListNameExtractor.hpp"
#include "model/indexation/ManagedObjectClassNameExtractor.hpp"
#include "model/indexation/ManagedObjectDistNameExtractor.hpp"
#include "model/indexation/ScalarNameExtractor.hpp"

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
