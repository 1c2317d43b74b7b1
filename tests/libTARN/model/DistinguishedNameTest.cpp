#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "libtarn/model/DistinguishedName.hpp"
#include "libtarn/model/DistinguishedNameValidator.hpp"

namespace {

using libtarn::model::DistinguishedName;
using libtarn::model::DistinguishedNameValidator;

TEST(DistinguishedNameTest, EqualityIsByBytesWhereverTheTextsAre) {
  const std::string a = "A-1/B-2";
  const std::string b = a;
  EXPECT_TRUE(DistinguishedName(a.c_str()) == DistinguishedName(b.c_str()));
  EXPECT_TRUE(DistinguishedName("A-1") != DistinguishedName("a-1"));
  EXPECT_EQ(DistinguishedName(a.c_str()).getText(), a.c_str());
  EXPECT_STREQ(DistinguishedName::ATTR_NAME, "distName");
  EXPECT_DEATH(static_cast<void>(DistinguishedName(nullptr) == DistinguishedName("")),
               "0 != distNameString && 0 != other.distNameString");
}

TEST(DistinguishedNameTest, StreamHoldsTheTextUnchanged) {
  std::ostringstream out;
  out << DistinguishedName("A-1/ x") << DistinguishedName(nullptr) << "|";
  EXPECT_EQ(out.str(), "A-1/ x|");
}

TEST(DistinguishedNameValidatorTest, NamesAreJudgedByTheRule) {
  const struct {
    const char* name;
    bool valid;
  } cases[] = {
      {"ROOT-1/NODE-2/CELL-3", true},
      {"ROOT-1", true},
      {"CLASS-SUB-7", true},
      {"ROOT-", true},
      {"A-/B-", true},
      {"ROOT", false},
      {"-1", false},
      {"-", false},
      {"--", true},
      {"ROOT-1_2", false},
      {"ROOT-1/", false},
      {"/", false},
      {"ROOT-1//CELL-3", false},
      {"/ROOT-1", false},
      {"", false},
      {"X/ZNT-1/anything at all", true},
      {"ZNT-1/", true},
      {"ZNT-1", true},
      {"ZNT-1x/ y", false},
      {"A-1.2", false},
      {"A-1 2", false},
      {"A.x y-1", true},
      {"A-1/B", false},
      {"A/B-1", false},
      {"A-\xC3\xA9", false},
      {"\xC3\xA9-1", true},
      {"_-_", false},
  };
  const DistinguishedNameValidator validator;
  for (const auto& c : cases) EXPECT_EQ(validator.isValid(c.name), c.valid) << c.name;
  EXPECT_FALSE(validator.isValid(nullptr));
}

TEST(DistinguishedNameValidatorTest, SegmentRangesAreInclusive) {
  const DistinguishedNameValidator validator;
  const std::string name = "AB-1/C-2x";
  EXPECT_TRUE(validator.isSegmentValid(name, 0, 3));
  EXPECT_TRUE(validator.isSegmentValid(name, 5, 8));
  EXPECT_FALSE(validator.isSegmentValid(name, 2, 3));
  // The search for the last "-" starts one character after the range and goes back to the start of
  // the text.
  EXPECT_TRUE(validator.isSegmentValid(name, 0, 1));
  EXPECT_FALSE(validator.isSegmentValid(name, 0, 0));
  EXPECT_FALSE(validator.isSegmentValid("AB-1/CD", 5, 6));
  EXPECT_FALSE(validator.isSegmentValid("", 0, 0));
  // The last index of a segment of no characters is the one before the first.
  EXPECT_FALSE(validator.isSegmentValid("/ROOT-1", 0, 0U - 1));
}

TEST(DistinguishedNameValidatorTest, VeryLongNamesAreJudged) {
  std::string name = "A-1";
  for (int i = 0; i < 200000; ++i) name += "/B-2";
  const DistinguishedNameValidator validator;
  EXPECT_TRUE(validator.isValid(name.c_str()));
  EXPECT_FALSE(validator.isValid((name + "/").c_str()));
  EXPECT_FALSE(validator.isValid(std::string(1000000, '/').c_str()));
  EXPECT_FALSE(validator.isValid(std::string(1000000, 'a').c_str()));
}

// A second implementation of the rule: splits at "/", and each segment at its last "-".
bool model(const std::string& name) {
  if (name.find("ZNT-1/") != std::string::npos) return true;
  std::vector<std::string> segments(1);
  for (const char c : name) {
    if (c == '/') {
      segments.emplace_back();
    } else {
      segments.back() += c;
    }
  }
  for (const std::string& segment : segments) {
    const std::size_t dash = segment.rfind('-');
    if (dash == std::string::npos || dash == 0) return false;
    for (const char c : segment.substr(dash + 1)) {
      if (std::string("01aZ").find(c) == std::string::npos) return false;
    }
  }
  return true;
}

TEST(DistinguishedNameValidatorTest, RandomNamesAreJudgedAsByASecondImplementation) {
  const std::string alphabet = "01aZ--//_ ";
  const DistinguishedNameValidator validator;
  std::mt19937 random(1);
  std::size_t valid = 0;
  for (int i = 0; i < 200000; ++i) {
    std::string name;
    for (auto length = random() % 9; length > 0; --length)
      name += alphabet[random() % alphabet.size()];
    ASSERT_EQ(validator.isValid(name.c_str()), model(name)) << name;
    if (model(name)) ++valid;
  }
  EXPECT_GT(valid, 1000U);
}

}  // namespace
