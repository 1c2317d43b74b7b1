#include "support/documents.hpp"

#include <gtest/gtest.h>

#include "support/CapturedLog.hpp"

namespace tarn_test {

using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;

std::string rootText(const std::string& content) {
  return "<tarn xmlns='tarn21.xsd' version='2.1'>" + content + "</tarn>";
}

std::string cmDataText(const std::string& content, const std::string& type) {
  return rootText("<cmData type='" + type + "'>" + content + "</cmData>");
}

std::string documentText(const std::string& objects, const std::string& header) {
  return cmDataText(header + objects);
}

std::string documentTextWithLog(const std::string& objects) {
  return documentText(objects, "<header><log dateTime='d' action='a'>x</log></header>");
}

std::string objectText(const std::string& name, const std::string& operation,
                       const std::string& body) {
  return "<managedObject class='C' distName='" + name + "' version='1'" +
         (operation.empty() ? "" : " operation='" + operation + "'") + ">" + body +
         "</managedObject>";
}

std::vector<char> vectorOf(const std::string& text) {
  return std::vector<char>(text.c_str(), text.c_str() + text.size() + 1);
}

std::unique_ptr<LibTarnDocument> loaded(const std::string& text) {
  const CapturedLog log;
  auto document = std::make_unique<LibTarnDocument>();
  EXPECT_EQ(document->parse(text.c_str(), false), 0) << text;
  return document;
}

std::string printed(LibTarnDocument& document) {
  std::string text = "is replaced";
  libtarn::util::dumpTarnDocument(document, text);
  return text;
}

std::vector<std::string> namesOf(
    const libtarn::model::indexation::ManagedObjectCollection& collection) {
  std::vector<std::string> names;
  for (const LibTarnManagedObject* object : collection) {
    names.emplace_back(object->getDistName().getText());
  }
  return names;
}

}  // namespace tarn_test
