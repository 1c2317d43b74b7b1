#include <gtest/gtest.h>

#include <random>
#include <string>

#include "libtarn/util/TextPosition.hpp"

namespace {

using libtarn::util::locate;
using libtarn::util::TextPosition;

void expectPlace(const std::string& text, std::size_t offset, std::size_t line,
                 std::size_t column) {
  const TextPosition place = locate(text.c_str(), offset);
  EXPECT_EQ(place.line, line) << text << " at " << offset;
  EXPECT_EQ(place.column, column) << text << " at " << offset;
}

TEST(TextPositionTest, LinesAndByteColumnsCountFromOne) {
  expectPlace("", 0, 1, 1);
  expectPlace("abc", 0, 1, 1);
  expectPlace("abc", 2, 1, 3);
  expectPlace("abc", 3, 1, 4);
  expectPlace("\xEF\xBB\xBF<", 3, 1, 4);  // byte order mark
  expectPlace("\xC3\xA9x", 2, 1, 3);      // a letter of two bytes
}

TEST(TextPositionTest, LineFeedEndsTheLineThatItIsOn) {
  expectPlace("a\nb", 1, 1, 2);
  expectPlace("a\nb", 2, 2, 1);
  expectPlace("\n\n", 0, 1, 1);
  expectPlace("\n\n", 1, 2, 1);
  expectPlace("\n\n", 2, 3, 1);
  expectPlace("a\r\nb", 2, 1, 3);
  expectPlace("a\r\nb", 3, 2, 1);
  expectPlace("a\rb", 2, 1, 3);
}

TEST(TextPositionTest, OffsetAfterTheEndIsTheEnd) {
  expectPlace("", 5, 1, 1);
  expectPlace("a\nbc", 4, 2, 3);
  expectPlace("a\nbc", 1000, 2, 3);
}

TEST(TextPositionTest, SameAsCountingByteByByte) {
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    std::string text;
    while (text.size() < 60) text += "ab\n\r"[random() % 4];
    std::size_t line = 1;
    std::size_t column = 1;
    for (std::size_t offset = 0; offset <= text.size(); ++offset) {
      expectPlace(text, offset, line, column);
      const bool endsLine = text.c_str()[offset] == '\n';
      line += endsLine ? 1 : 0;
      column = endsLine ? 1 : column + 1;
    }
  }
}

}  // namespace
