#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "support/CapturedLog.hpp"
#include "support/documents.hpp"

namespace {

using namespace libtarn::model;
using tarn_test::CapturedLog;
using tarn_test::documentText;
using tarn_test::rootText;

std::string violation(const std::string& text) {
  CapturedLog log;
  LibTarnDocument document;
  const int result = document.parse(text.c_str(), true);
  if (result == 0) return "";
  EXPECT_EQ(result, 2) << text;
  return log.messages("ERROR").at(0);
}

std::string inObject(const std::string& body) {
  return documentText("<managedObject class='B' distName='A-1'>" + body + "</managedObject>");
}

TEST(ValidatorTest, EveryRuleNamesThePathOfTheElement) {
  const struct {
    std::string text;
    const char* message;
  } cases[] = {
      {"<tarn xmlns='tarn21.xsd'/>", "The 'tarn > ' element has no attribute 'version'"},
      {"<tarn version='1'/>", "The 'tarn > ' element has no attribute 'xmlns'"},
      {"<tarn version='1' xmlns='tarn20.xsd'/>",
       "'tarn20.xsd' is not a valid value of 'tarn > ' attribute 'xmlns'"},
      {rootText(""), "The 'tarn > ' element has 0 child 'cmData' elements.  Expected: 1"},
      {rootText("<cmData type='plan'/><cmData type='plan'/><cmData type='plan'/>"),
       "The 'tarn > ' element has 2 child 'cmData' elements.  Expected: 1"},
      {rootText("<cmData type='plan'/>"),
       "The 'tarn > cmData > ' element has 0 child 'header' elements.  Expected: 1"},
      {documentText("<header/><header/><header/><header/>"),
       "The 'tarn > cmData > ' element has 2 child 'header' elements.  Expected: 1"},
      {documentText(""),
       "The 'tarn > cmData > ' element has 0 child 'managedObject' elements.  Expected: 1"},
      {rootText("<cmData type='actual'><header><log action='a'/></header></cmData>"),
       "The 'tarn > cmData > header > log > ' element has no attribute 'dateTime'"},
      {rootText("<cmData type='actual'><header><log dateTime=''/></header></cmData>"),
       "The 'tarn > cmData > header > log > ' element has no attribute 'action'"},
      {documentText("<managedObject distName='A-1'/>"),
       "The 'tarn > cmData > managedObject:A-1 > ' element has no attribute 'class'"},
      {documentText("<managedObject class='B'/>"),
       "The 'tarn > cmData > managedObject > ' element has no attribute 'distName'"},
      {documentText("<managedObject class='B' distName='A'/>"), "Invalid distinguished name: 'A'"},
      {inObject("<p>1</p>"),
       "The 'tarn > cmData > managedObject:A-1 > p > ' element has no attribute 'name'"},
      {inObject("<list/>"),
       "The 'tarn > cmData > managedObject:A-1 > list > ' element has no attribute 'name'"},
      {inObject("<list name='ports'><item/><p/></list>"),
       "The 'tarn > cmData > managedObject:A-1 > list:ports > ' has both 'p' and 'item' children"},
      {inObject("<list name='l'><item><p/></item></list>"),
       "The 'tarn > cmData > managedObject:A-1 > list:l > item > p > ' element has no attribute "
       "'name'"},
      {inObject("<extension name='e'><p/></extension>"),
       "The 'tarn > cmData > managedObject:A-1 > extension:e > p > ' element has no attribute "
       "'name'"},
      // The first of several violations in the order of the walk: parameters before lists.
      {inObject("<list/><p/>"),
       "The 'tarn > cmData > managedObject:A-1 > p > ' element has no attribute 'name'"},
      {documentText("<managedObject distName='B-1'/><managedObject distName='A-1'/>"),
       "The 'tarn > cmData > managedObject:A-1 > ' element has no attribute 'class'"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(violation(c.text), std::string("Validation failed: ") + c.message) << c.text;
  }
}

TEST(ValidatorTest, HeadersAreVisitedBeforeTheObjects) {
  EXPECT_EQ(
      violation(rootText("<cmData type='plan'><managedObject/><header><log/></header></cmData>")),
      "Validation failed: The 'tarn > cmData > header > log > ' element has no attribute "
      "'dateTime'");
}

TEST(ValidatorTest, WhatTheRulesAllowPasses) {
  const std::string texts[] = {
      inObject(""),
      inObject("<list name='l'/>"),
      inObject("<list name='l'><p/><p>1</p></list><p name=''/>"),
      inObject("<list name=''><item/></list><extension/>"),
      rootText("<cmData type='actual'><header/></cmData>"),
      rootText("<cmData type='defaults'><header><log action='' dateTime='x'/></header></cmData>"),
  };
  for (const std::string& text : texts) EXPECT_EQ(violation(text), "") << text;
}

TEST(ValidatorTest, PathGrowsAndShrinks) {
  validation::Validator validator;
  EXPECT_EQ(validator.getPath(), "");
  validator.appendToPath("tarn", nullptr);
  validator.appendToPath("p", "speed");
  EXPECT_EQ(validator.getPath(), "tarn > p:speed > ");
  validator.popPath();
  EXPECT_EQ(validator.getPath(), "tarn > ");
  validator.popPath();
  try {
    validator.popPath();
    ADD_FAILURE();
  } catch (const std::logic_error& error) {
    EXPECT_STREQ(error.what(), "Cannot pop path:  path stack is empty");
  }
  try {
    validator.appendToPath(nullptr, "x");
    ADD_FAILURE();
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "tagName must not be 0");
  }
}

}  // namespace
