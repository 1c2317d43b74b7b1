// Every short text of the characters that have a meaning for the parser. Each is in a buffer of
// exactly its size, so that the sanitizers detect a read past its end.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "libtarn/rapidxml/rapidxml_print.hpp"
#include "support/treeDump.hpp"

namespace {

using rapidxml::node_element;
using rapidxml::xml_document;

constexpr char alphabet[] = {'<', '>', '/', '!', '?', '=', '"', '&', ';', '#', 'a', ' '};

bool isBlank(const char* text, std::size_t size) {
  return std::string(text, size).find_first_not_of(" \t\r\n") == std::string::npos;
}

// Printing loses the value of an element with children, a value of blanks only (which only
// references can make), and what follows a NUL in a value (which no digits here can make).
bool survivesPrinting(const rapidxml::xml_node<char>& top) {
  for (auto* node = top.first_node(); node; node = node->next_sibling()) {
    if (node->type() == node_element && node->value_size() > 0 &&
        (node->first_node() || isBlank(node->value(), node->value_size()))) {
      return false;
    }
    if (!survivesPrinting(*node)) return false;
  }
  return true;
}

// Returns true if `text` parses. It must then print, and parse again to the same tree.
bool check(const std::string& text, char* buffer) {
  std::copy(text.begin(), text.end(), buffer);
  buffer[text.size()] = '\0';
  xml_document<char> document;
  char* cursor = buffer;
  try {
    document.parse<33>(cursor);
  } catch (const rapidxml::parse_error& error) {
    EXPECT_TRUE(error.where<char>() >= buffer && error.where<char>() <= buffer + text.size())
        << text;
    return false;
  }
  if (!survivesPrinting(document)) return true;
  for (const int flags : {0, rapidxml::print_no_indenting}) {
    std::string printed;
    rapidxml::print_node(printed, &document, flags, 0);
    xml_document<char> again;
    cursor = printed.data();
    again.parse<33>(cursor);
    EXPECT_EQ(tarn_test::dump(again), tarn_test::dump(document)) << text;
  }
  return true;
}

// Runs check() over all texts of `length` characters between `before` and `after`, and returns how
// many parse.
std::size_t checkAll(std::size_t length, const std::string& before, const std::string& after) {
  std::string text = before + std::string(length, alphabet[0]) + after;
  const std::unique_ptr<char[]> buffer(new char[text.size() + 1]);
  std::string digits(length, '\0');
  std::size_t parsed = 0;
  for (;;) {
    if (check(text, buffer.get())) ++parsed;
    std::size_t i = 0;
    for (; i < length; ++i) {
      digits[i] = static_cast<char>((digits[i] + 1) % static_cast<int>(sizeof(alphabet)));
      text[before.size() + i] = alphabet[static_cast<std::size_t>(digits[i])];
      if (digits[i] != 0) break;
    }
    if (i == length) return parsed;
  }
}

TEST(ExhaustiveTextTest, EveryTextUpToSixCharactersParsesOrIsRefused) {
  std::size_t parsed = 0;
  for (std::size_t length = 0; length <= 6; ++length) parsed += checkAll(length, "", "");
  EXPECT_GT(parsed, 100U);
}

TEST(ExhaustiveTextTest, EveryContentUpToFiveCharactersParsesOrIsRefused) {
  std::size_t parsed = 0;
  for (std::size_t length = 0; length <= 5; ++length) parsed += checkAll(length, "<a>", "</a>");
  EXPECT_GT(parsed, 10000U);
}

TEST(ExhaustiveTextTest, EveryAttributeListUpToFiveCharactersParsesOrIsRefused) {
  std::size_t parsed = 0;
  for (std::size_t length = 0; length <= 5; ++length) parsed += checkAll(length, "<a a", "/>");
  EXPECT_GT(parsed, 10U);
}

}  // namespace
