// What an object can do by the other operations of its interface, whatever its class.

#include "libtarn/model/LibTarnManagedObject.hpp"

#include <new>
#include <optional>
#include <string>

#include "../text/patternText.hpp"
#include "../util/joined.hpp"
#include "TypedChildren.hpp"
#include "changedDistName.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/model/exceptions/DuplicateElementException.hpp"
#include "libtarn/model/exceptions/InvalidDistinguishedNameException.hpp"

namespace libtarn {
namespace model {

namespace {

// For a change that was made in part and stays: without memory for the message there is none.
template <class MakeMessage>
Diagnostic partlyChanged(int code, MakeMessage makeMessage) {
  Diagnostic diagnostic;
  diagnostic.code = code;
  try {
    diagnostic.message = makeMessage();
  } catch (const std::bad_alloc&) {
    diagnostic.message.clear();
  }
  return diagnostic;
}

std::string noMatchMessage(const DistinguishedName& distName) {
  return util::joined("The '", LibTarnManagedObject::TAG_NAME, "' element with '",
                      DistinguishedName::ATTR_NAME, "=", distName.getText(),
                      "' doesn't match the mask");
}

// False for an object that is in no cmData.
bool isOutOfIndex(const LibTarnManagedObject& object) {
  const auto* const element = elementCast<LibTarnManagedObjectImp>(&object);
  const auto* const cmData =
      element ? dynamic_cast<const LibTarnCmDataImp*>(element->getParent()) : nullptr;
  return cmData && cmData->getLibTarnManagedObject(object.getDistName()) != &object;
}

}  // namespace

bool LibTarnManagedObject::hasOperation() const { return getOperation() != Operation::AUTO; }

// Compares the object before and after change(), so that a host class with a change() of its own is
// explained as well.
Diagnostic LibTarnManagedObject::tryChange(const LibTarnManagedObject& pattern,
                                           const LibTarnManagedObject& values) {
  std::optional<std::string> asked;
  if (&values != this) {
    asked = changedDistName(textOrEmpty(getDistName().getText()), pattern, values);
  }
  try {
    if (!change(pattern, values)) return {ChangeResult::NoMatch, noMatchMessage(getDistName()), 0};
  } catch (const exceptions::ModelException& error) {
    return {ChangeResult::BrokenRule, error.what(), 0};
  }
  if (!asked) return {};
  if (*asked != textOrEmpty(getDistName().getText())) {
    return partlyChanged(ChangeResult::InvalidName, [&asked]() -> std::string {
      return exceptions::InvalidDistinguishedNameException(asked->c_str()).what();
    });
  }
  if (!isOutOfIndex(*this)) return {};
  return partlyChanged(ChangeResult::NameTaken, [this]() -> std::string {
    return exceptions::DuplicateElementException::instance(
               TAG_NAME, LibTarnCmData::TAG_NAME, DistinguishedName::ATTR_NAME, getDistName())
        .what();
  });
}

}  // namespace model
}  // namespace libtarn
