// Changes a document (values, parameters, lists, objects and names) and writes it.
//
// Usage: edit_and_save DOCUMENT RESULT

#include <libtarn/libtarn.hpp>

#include "files.hpp"

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::List;
using libtarn::model::Scalar;
using libtarn::util::TarnFactory;

int main(int argc, char** argv) {
  if (argc != 3) return 64;
  LibTarnDocument document;
  if (document.parse(readText(argv[1]), true) != 0) return 1;
  LibTarnCmData& cmData = *document.getLibTarnCmData();
  // The document's factory makes new elements. They live in the document's memory, and nobody
  // deletes them. An element is in no tree until it is added.
  TarnFactory& factory = document.getFactory();

  // Changes a value.
  LibTarnManagedObject* const site = cmData.getLibTarnManagedObject("NET-1/SITE-7");
  if (!site) return 4;
  if (Scalar* const name = site->getScalarParameter("name")) name->setValue("Delphi <north>");

  // Adds a parameter. A second one of its name does not replace it.
  if (site->addParameter(*factory.createScalar("rent", "1200")) != 0) return 3;
  const bool refused = site->addParameter(*factory.createScalar("rent", "1300")) == 1;
  std::cout << "a second rent is " << (refused ? "refused" : "taken") << '\n';
  site->removeScalarParameter("altitude");

  // Adds a list of structured values.
  List* const keys = factory.createList("keys");
  for (const char* const holder : {"operator", "landlord"}) {
    auto* const item = factory.createStructure();
    item->addComponent(*factory.createScalar("holder", holder));
    item->addComponent(*factory.createScalar("count", "2"));
    keys->addValue(*item);
  }
  site->addParameter(*keys);

  // Adds an object. The factory returns null for an invalid name.
  const bool isName = factory.createLibTarnManagedObject("SITE", "NET-1/", "3.2") != nullptr;
  std::cout << "NET-1/ is " << (isName ? "a name" : "no name") << '\n';
  if (auto* const power =
          factory.createLibTarnManagedObject("POWER", "NET-1/SITE-7/POWER-2", "3.2")) {
    power->addParameter(*factory.createScalar("source", "solar"));
    cmData.addLibTarnManagedObject(*power);
  }

  // Renames an object through the object itself, which updates the index of names. setDistName()
  // returns 0 even for the name of another object, so the host asks first.
  if (cmData.hasLibTarnManagedObject("NET-1/SITE-70")) return 3;
  if (site->setDistName("NET-1/SITE-70") != 0) return 3;
  std::cout << (cmData.getLibTarnManagedObject("NET-1/SITE-70") == site ? "found" : "lost")
            << " by its new name\n";
  if (cmData.removeLibTarnManagedObject("NET-1/LINK-99") == 2) std::cout << "no NET-1/LINK-99\n";

  // Edits may have broken rules of the format.
  if (document.validate() != 0) {
    std::cout << document.getDiagnostic().message << '\n';
    return 2;
  }
  std::string text;
  libtarn::util::dumpTarnDocument(document, text);
  return writeText(argv[2], text) ? 0 : 5;
}
