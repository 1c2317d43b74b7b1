#include <gtest/gtest.h>

#include <string>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/EnumeratedAttribute.hpp"
#include "libtarn/model/TarnDomElement.hpp"

namespace {

using namespace libtarn::model;
using Type = LibTarnCmData::Type;

class EnumeratedAttributeTextTest : public ::testing::Test {
 protected:
  template <class Exception>
  std::string messageOfInitialize() {
    try {
      attribute_.initialize();
    } catch (const Exception& error) {
      return error.what();
    }
    return "initialized";
  }

  LibTarnDocument document_;
  TarnDomElement& element_ = *document_.getFactory().allocateTarnCmDataNode();
  EnumeratedAttribute<Type> attribute_{&element_, "type"};
};

TEST_F(EnumeratedAttributeTextTest, InitializeReadsEveryConstant) {
  const struct {
    const char* text;
    Type value;
  } cases[] = {{"actual", Type::ACTUAL}, {"plan", Type::PLAN}, {"defaults", Type::DEFAULTS}};
  for (const auto& c : cases) {
    element_.setAttribute("type", c.text);
    attribute_.initialize();
    ASSERT_TRUE(attribute_.hasValue());
    EXPECT_TRUE(attribute_.getValue() == c.value) << c.text;
    EXPECT_TRUE(attribute_.toEnum(c.text) == c.value) << c.text;
  }
}

TEST_F(EnumeratedAttributeTextTest, OtherTextsAreRefusedWithElementAndAttribute) {
  for (const std::string text : {"Actual", "PLAN", "", " plan", "plan ", "plans", "create"}) {
    element_.setAttribute("type", text.c_str());
    EXPECT_EQ(messageOfInitialize<exceptions::InvalidAttributeValueException>(),
              "'" + text + "' is not a valid value of 'cmData' attribute 'type'");
    EXPECT_FALSE(attribute_.hasValue());
  }
}

TEST_F(EnumeratedAttributeTextTest, AbsentAttributeIsReportedWithElementAndAttribute) {
  EXPECT_EQ(messageOfInitialize<exceptions::NoSuchAttributeException>(),
            "The 'cmData' element has no attribute 'type'");
}

TEST_F(EnumeratedAttributeTextTest, FailedInitializeKeepsTheValueReadBefore) {
  attribute_.set(Type::PLAN);
  element_.setAttribute("type", "bad");
  EXPECT_THROW(attribute_.initialize(), exceptions::InvalidAttributeValueException);
  EXPECT_TRUE(attribute_.getValue() == Type::PLAN);
}

TEST_F(EnumeratedAttributeTextTest, WritingReplacesTextAndValue) {
  for (const Type& value : {Type::ACTUAL, Type::PLAN, Type::DEFAULTS}) {
    attribute_.set(value);
    EXPECT_EQ(element_.getAttribute("type"), value.toString());
    EXPECT_TRUE(attribute_.getValue() == value);
  }
  attribute_.set(attribute_.getValue());
  EXPECT_STREQ(element_.getAttribute("type"), "defaults");
}

TEST_F(EnumeratedAttributeTextTest, ValueIsReadFromTheAttributeOnlyByInitialize) {
  attribute_.set(Type::PLAN);
  element_.setAttribute("type", "actual");
  EXPECT_TRUE(attribute_.getValue() == Type::PLAN);
  attribute_.initialize();
  EXPECT_TRUE(attribute_.getValue() == Type::ACTUAL);
}

}  // namespace
