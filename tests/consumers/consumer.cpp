// The start of a host project.

#include <cstdio>
#include <iostream>
#include <libtarn/libtarn.hpp>
#include <libtarn/model/LibTarnHeaderImp.hpp>
#include <libtarn/model/LibTarnManagedObjectImp.hpp>
#include <libtarn/model/indexation/TarnMapIndex.hpp>
#include <libtarn/model/indexation/TarnUniqueAndNonUniqueMultiIndex.hpp>
#include <libtarn/model/validation/Validator.hpp>
#include <stdexcept>

void libtarn::util::Logger::print(Level level, const char* /*location*/, const char* /*function*/,
                                  const char* message) {
  std::printf("%s %s\n", level.toString().c_str(), message);
}

using libtarn::model::IElement;
using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::exceptions::ModelException;
using Operation = LibTarnManagedObject::Operation;

// A document for which the library throws; the host catches the exception.
bool throwsModelException(LibTarnDocument& document) {
  try {
    // An object that a host unlinks keeps two parameters of one name, which a copy cannot have.
    document.parse(
        "<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='plan'><header/><managedObject "
        "class='A' distName='A-1'><managedObject class='B' distName='B-1'><p name='x'/><p "
        "name='x'/></managedObject></managedObject></cmData></tarn>",
        false);
    document.getLibTarnCmData()->getLibTarnManagedObject("A-1")->clone(document.getFactory());
  } catch (const ModelException& error) {
    std::cout << error.what() << '\n';
    return true;
  }
  return false;
}

// Rules and indexes that hosts use on their own.
bool hasPartsOfItsOwn(LibTarnDocument& document) {
  using namespace libtarn::model;
  const validation::Validator validator;
  const IElement& cmData = *document.getLibTarnCmData();
  validator.validateChildCount<LibTarnHeaderImp>(cmData, 1, 1);
  validator.validateAtLeastOneChild<LibTarnManagedObjectImp>(cmData);
  indexation::TarnMapIndex<Scalar, indexation::ScalarNameExtractor> scalars(
      *document.getItsTarnDomDocument());
  indexation::TarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject,
                                               indexation::ManagedObjectDistNameExtractor,
                                               indexation::ManagedObjectClassNameExtractor>
      objects(*document.getItsTarnDomDocument());
  return scalars.add(document.getFactory().createScalar("x", "1")) && scalars.find("x") &&
         objects.add(document.getLibTarnCmData()->getLibTarnManagedObject("A-1")) &&
         objects.size() == 1;
}

int main() {
  LibTarnDocument document;
  const int code = document.parse(
      "<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='plan'><header/><managedObject "
      "class='A' "
      "distName='A-1' operation='update'/></cmData></tarn>",
      true);
  auto* const cmData = document.getLibTarnCmData();
  if (code != 0 || !cmData) return 1;
  // Tables and types are the same on both sides of the ABI boundary.
  LibTarnManagedObject* const object = cmData->getLibTarnManagedObject("A-1");
  if (object->getOperation() != Operation::UPDATE) return 2;
  std::cout << object->getDistName() << ": " << object->getOperation().toString() << '\n';
  IElement* const element = object;
  if (!dynamic_cast<LibTarnManagedObject*>(element)) return 3;
  if (!hasPartsOfItsOwn(document)) return 6;
  if (!throwsModelException(document)) return 4;
  return document.parse("<tarn", false) == 1 ? 0 : 5;
}
