// LibTarnDocument::visitObjects: the same objects as a document has, without keeping them.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/util/dumpElement.hpp"

namespace {

using namespace libtarn::model;

std::vector<char> textOf(const std::string& text) {
  return {text.c_str(), text.c_str() + text.size() + 1};
}

std::string printed(const LibTarnManagedObject& object) {
  std::string text;
  libtarn::util::dumpElement(object, text, 0);
  return text;
}

// The objects of the first cmData in the order of the text.
std::vector<std::string> objectsOf(const std::string& text) {
  LibTarnDocument document;
  EXPECT_EQ(document.parse(text.c_str(), false), 0);
  std::vector<std::string> objects;
  const LibTarnCmData* const cmData = document.getLibTarnCmData();
  auto* object = cmData ? dynamic_cast<LibTarnManagedObject*>(
                              cmData->getFirstChildElement(LibTarnManagedObject::TAG_NAME))
                        : nullptr;
  for (; object; object = object->getNextSiblingElement()) objects.push_back(printed(*object));
  return objects;
}

bool visit(const std::string& text, std::vector<std::string>& objects) {
  std::vector<char> copy = textOf(text);
  return LibTarnDocument::visitObjects(
      copy, [&](LibTarnManagedObject& object) { objects.push_back(printed(object)); });
}

std::string objectNamed(const std::string& name, const std::string& body = "") {
  return "<managedObject class='C' distName='" + name + "'>" + body + "</managedObject>";
}

std::string documentWith(const std::string& body) {
  return "<tarn><cmData type='plan'>" + body + "</cmData></tarn>";
}

TEST(VisitObjectsTest, EachObjectIsVisitedAsADocumentHasIt) {
  std::ifstream file("examples/network.xml", std::ios::binary);
  const std::string network((std::istreambuf_iterator<char>(file)),
                            std::istreambuf_iterator<char>());
  for (const std::string& text :
       {network, documentWith(""), std::string("<tarn/>"), std::string(),
        documentWith("<header/>" + objectNamed("B-1", "<p name='x'>&lt;</p>") +
                     objectNamed("A-1", objectNamed("A-1")) + "<managedObject/>"),
        "<tarn><cmData type='plan'/><cmData type='plan'>" + objectNamed("A-1") + "</cmData></tarn>",
        "<tarn><cmData type='plan'>" + objectNamed("A-1") + "</cmData><cmData type='plan'>" +
            objectNamed("A-2") + "</cmData></tarn>"}) {
    std::vector<std::string> objects;
    EXPECT_TRUE(visit(text, objects)) << text;
    EXPECT_EQ(objects, objectsOf(text)) << text;
  }
}

TEST(VisitObjectsTest, ParametersAreFoundAndTextsOutliveTheVisit) {
  std::vector<char> text = textOf(documentWith(
      objectNamed("A-1", "<p name='x'>1</p><list name='l'><item><p name='k'>2</p></item></list>")));
  const char* name = nullptr;
  const char* value = nullptr;
  EXPECT_TRUE(LibTarnDocument::visitObjects(text, [&](LibTarnManagedObject& object) {
    name = object.getDistName().getText();
    value = object.getScalarParameter("x")->getValue();
    const Structure* const item = object.getListParameter("l")->getStructuredValues();
    EXPECT_STREQ(item->getComponent("k")->getValue(), "2");
    EXPECT_EQ(object.getScalarParameter("y"), nullptr);
  }));
  EXPECT_STREQ(name, "A-1");
  EXPECT_STREQ(value, "1");
}

TEST(VisitObjectsTest, AnythingElseThanAPlainDocumentIsLeftToAParse) {
  for (const std::string& text :
       {std::string("<tarn>"), documentWith(objectNamed("A-1") + objectNamed("A-1")),
        documentWith("<managedObject operation='wrong'/>"),
        documentWith(objectNamed("A-1", "<p name='x'/><p name='x'/>")),
        documentWith(objectNamed("A-1", "<p name='x&#0;'/>"))}) {
    std::vector<std::string> objects;
    EXPECT_FALSE(visit(text, objects)) << text;
  }
  std::vector<char> unterminated = {'<', 't', 'a', 'r', 'n', '/', '>'};
  EXPECT_FALSE(LibTarnDocument::visitObjects(unterminated, [](LibTarnManagedObject&) {}));
  std::vector<char> none;
  EXPECT_FALSE(LibTarnDocument::visitObjects(none, [](LibTarnManagedObject&) {}));
}

TEST(VisitObjectsTest, WhatTheHostThrowsEndsTheVisit) {
  std::vector<char> text = textOf(documentWith(objectNamed("A-1") + objectNamed("A-2")));
  int visits = 0;
  EXPECT_THROW(LibTarnDocument::visitObjects(text,
                                             [&](LibTarnManagedObject&) {
                                               ++visits;
                                               throw std::runtime_error("enough");
                                             }),
               std::runtime_error);
  EXPECT_EQ(visits, 1);
}

}  // namespace
