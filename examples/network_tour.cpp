// Loads a document, counts its objects, selects some by a mask, changes them, and writes the
// result.
//
// Usage: network_tour DOCUMENT RESULT

#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <libtarn/libtarn.hpp>
#include <list>
#include <map>
#include <string>
#include <vector>

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::Scalar;
using libtarn::util::TarnFactory;

// The log callback: this host prints the errors.
void libtarn::util::Logger::print(Level level, const char* location, const char* function,
                                  const char* message) {
  if (level != Level::ERROR) return;
  std::cerr << level.toString() << ' ' << location << ' ' << function << ": " << message << '\n';
}

namespace {

constexpr const char* SELECTED_CLASS = "CELL";
constexpr const char* SELECTED_SITE = "SITE-3";
constexpr const char* PARAMETER = "maxTxPower";
constexpr const char* NEW_VALUE = "400";

bool load(const char* path, LibTarnDocument& document) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    std::cerr << path << ": cannot be read\n";
    return false;
  }
  std::vector<char> text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  text.push_back('\0');
  return document.parse(std::move(text), false) == 0;
}

void printClasses(const LibTarnCmData& cmData) {
  std::map<std::string, unsigned> countOfClass;
  for (const LibTarnManagedObject* object : cmData.getLibTarnManagedObjects()) {
    ++countOfClass[object->getClass() ? object->getClass() : ""];
  }
  std::cout << cmData.getManagedObjectNumber() << " managed objects of " << countOfClass.size()
            << " classes:\n";
  for (const auto& [className, count] : countOfClass) {
    std::cout << "  " << className << ": " << count << '\n';
  }
}

void printValues(const std::list<LibTarnManagedObject*>& objects) {
  for (const LibTarnManagedObject* object : objects) {
    const Scalar* const parameter = object->getScalarParameter(PARAMETER);
    std::cout << "  " << object->getDistName() << ": " << PARAMETER << " = "
              << (parameter ? parameter->getValue() : "(none)") << '\n';
  }
}

bool save(LibTarnDocument& document, const char* path) {
  std::string text;
  libtarn::util::dumpTarnDocument(document, text);
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) std::cerr << path << ": cannot be written\n";
  return static_cast<bool>(file);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: network_tour DOCUMENT RESULT\n";
    return 64;
  }
  LibTarnDocument document;
  if (!load(argv[1], document)) return 1;
  const LibTarnCmData* const cmData = document.getLibTarnCmData();
  if (!cmData) {
    std::cerr << argv[1] << ": has no cmData\n";
    return 2;
  }
  std::cout << argv[1] << ": ";
  printClasses(*cmData);

  // "#" matches any version. The name matches every name that it is a part of.
  TarnFactory& factory = document.getFactory();
  const LibTarnManagedObject* const mask =
      factory.createLibTarnManagedObject(SELECTED_CLASS, SELECTED_SITE, "#");
  LibTarnManagedObject* const changes = factory.createLibTarnManagedObject("#", SELECTED_SITE, "#");
  changes->addParameter(*factory.createScalar(PARAMETER, NEW_VALUE));

  const std::list<LibTarnManagedObject*> selected = document.getMOsMatchingMask(*mask);
  std::cout << selected.size() << " objects of class " << SELECTED_CLASS << " under "
            << SELECTED_SITE << " before the change:\n";
  printValues(selected);
  document.setChangesToMOs(*mask, *changes);
  std::cout << "after it:\n";
  printValues(selected);

  if (!save(document, argv[2])) return 5;
  std::cout << "The changed document is in " << argv[2] << '\n';
  return 0;
}
