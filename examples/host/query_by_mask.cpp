// Finds objects: one by its name, those of a class, and those that match a mask.
//
// Usage: query_by_mask DOCUMENT

#include <libtarn/libtarn.hpp>

#include "files.hpp"

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::List;
using libtarn::model::Scalar;
using libtarn::util::ManagedObjectBuilder;

namespace {

void printContacts(const LibTarnManagedObject& site) {
  const List* const contacts = site.getListParameter("contacts");
  if (!contacts) return;
  for (const Scalar* value = contacts->getScalarValues(); value;
       value = value->getNextSiblingElement()) {
    std::cout << "  contact " << value->getValue() << '\n';
  }
}

void printBreakers(const LibTarnManagedObject& power) {
  const List* const breakers = power.getListParameter("breakers");
  if (!breakers) return;
  for (const auto* item = breakers->getStructuredValues(); item;
       item = item->getNextSiblingElement()) {
    std::cout << "  breaker";
    for (const auto& [name, component] : item->getComponents()) {
      std::cout << ' ' << name << '=' << component->getValue();
    }
    std::cout << '\n';
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 64;
  LibTarnDocument document;
  if (document.parse(readText(argv[1]), false) != 0) return 1;
  const LibTarnCmData* const cmData = document.getLibTarnCmData();
  if (!cmData) return 2;

  // By name: a look-up in a hash table, null when there is no such object.
  if (const auto* const site = cmData->getLibTarnManagedObject("NET-1/SITE-7")) {
    std::cout << site->getDistName() << ", class " << site->getClass() << '\n';
    for (const auto& [name, parameter] : site->getScalarParameters()) {
      std::cout << "  " << name << " = " << parameter->getValue() << '\n';
    }
    printContacts(*site);
  }

  // By class, in document order.
  for (const LibTarnManagedObject* power : cmData->getLibTarnManagedObjectsByClass("POWER")) {
    if (power->getDistName() != "NET-1/SITE-7/POWER-1") continue;
    std::cout << power->getDistName() << '\n';
    printBreakers(*power);
  }

  // By mask: every condition that is set must hold. The mask is a detached object of the document.
  ManagedObjectBuilder mask(document);
  mask.setClass("CELL").setDistName("SITE-3/");
  mask.addParameter("maxTxPower", "430");
  for (const LibTarnManagedObject* cell : document.getMOsMatchingMask(mask.get())) {
    std::cout << cell->getDistName() << " transmits with 430\n";
  }
  return 0;
}
