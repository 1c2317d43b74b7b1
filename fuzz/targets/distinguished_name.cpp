// The rule for distinguished names: the validator, objects and documents agree with a second
// implementation of the rule.

#include <vector>

#include "../support/Text.hpp"
#include "../support/check.hpp"
#include "libtarn/libtarn.hpp"

namespace {

using namespace libtarn::model;

// After the last "-" only letters and digits, before it at least one character.
bool isSegment(const std::string& segment) {
  const std::size_t dash = segment.rfind('-');
  if (dash == std::string::npos || dash == 0) return false;
  return segment.find_first_not_of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz",
                                   dash + 1) == std::string::npos;
}

bool isName(const std::string& name) {
  if (name.find("ZNT-1/") != std::string::npos) return true;
  std::size_t start = 0;
  for (;;) {
    const std::size_t slash = name.find('/', start);
    if (!isSegment(name.substr(start, slash - start))) return false;
    if (slash == std::string::npos) return true;
    start = slash + 1;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Text text(data, size);
  const std::string name = text.get();  // up to a NUL
  const bool expected = isName(name);
  fuzz::check(DistinguishedNameValidator().isValid(text.get()) == expected, "validator");

  LibTarnDocument document;
  auto& factory = document.getFactory();
  LibTarnManagedObject* const made = factory.createLibTarnManagedObject("C", text.get(), nullptr);
  fuzz::check((made != nullptr) == expected, "made by the factory");
  LibTarnCmData* const cmData = factory.createLibTarnCmData(LibTarnCmData::Type::PLAN);
  document.addLibTarnCmData(*cmData);
  LibTarnManagedObject* const object = factory.createLibTarnManagedObject("C", "A-1", nullptr);
  cmData->addLibTarnManagedObject(*object);
  fuzz::check(object->setDistName(text.get()) == (expected ? 0 : 1), "renamed");
  fuzz::check(object->getDistName() == (expected ? text.get() : "A-1"), "its name");
  fuzz::check(cmData->getLibTarnManagedObject(expected ? text.get() : "A-1") == object, "found");
  fuzz::check((document.validate() == 0) == false, "a document without a header breaks a rule");
  cmData->setLibTarnHeader(*factory.createLibTarnHeader());
  fuzz::check(document.validate() == 0, "a document of valid names is valid");

  std::string printed;
  libtarn::util::dumpTarnDocument(document, printed);
  LibTarnDocument again;
  fuzz::check(again.parse(printed.c_str(), true) == 0, "its printed form is valid");
  fuzz::check(again.getLibTarnCmData()->hasLibTarnManagedObject(object->getDistName()),
              "its printed form has it");
  return 0;
}
