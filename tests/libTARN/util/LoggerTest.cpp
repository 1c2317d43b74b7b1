#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "libtarn/util/Enum.hpp"
#include "libtarn/util/Logger.hpp"
#include "support/CapturedLog.hpp"
#include "util/LogLocation.hpp"

namespace {

using libtarn::util::Enum;
using libtarn::util::Logger;
using tarn_test::CapturedLog;

static_assert(!std::is_copy_constructible_v<Logger> && !std::is_copy_assignable_v<Logger>,
              "one logger is one line");

TEST(LoggerLineTest, LineIsHandedOverWhenTheLoggerDiesAndNotBefore) {
  CapturedLog log;
  {
    Logger line(Logger::Level::ERROR, "File.cpp:7", "work");
    line << "a " << std::string("b") << ' ' << 3U;
    EXPECT_TRUE(log.lines().empty());
  }
  ASSERT_EQ(log.lines().size(), 1U);
  EXPECT_EQ(log.lines()[0].level, "ERROR");
  EXPECT_EQ(log.lines()[0].location, "File.cpp:7");
  EXPECT_EQ(log.lines()[0].function, "work");
  EXPECT_EQ(log.lines()[0].message, "a b 3");
}

TEST(LoggerLineTest, LinesComeInTheOrderOfTheStatements) {
  CapturedLog log;
  Logger(Logger::Level::INFO, "l", "f") << 1;
  Logger(Logger::Level::DEBUG, "l", "f") << 2;
  Logger(Logger::Level::INFO, "l", "f") << 3;
  ASSERT_EQ(log.lines().size(), 3U);
  EXPECT_EQ(log.lines()[1].level, "DEBUG");
  EXPECT_EQ(log.messages("INFO"), (std::vector<std::string>{"1", "3"}));
}

TEST(LoggerLineTest, ThrowingLogCallbackGetsTheLineAndChangesNothing) {
  CapturedLog log;
  log.throwFromPrint();
  EXPECT_NO_THROW(Logger(Logger::Level::INFO, "l", "f") << "text");
  EXPECT_EQ(log.messages("INFO"), std::vector<std::string>{"text"});
}

TEST(LoggerLineTest, LevelMayComeFromTheTable) {
  CapturedLog log;
  Logger(*Enum<Logger::Level>::getStringToEnum().at("DEBUG"), "l", "f") << "x";
  EXPECT_EQ(log.messages("DEBUG"), std::vector<std::string>{"x"});
}

TEST(LoggerLineTest, LocationIsTheFileInTheRepositoryAndTheLine) {
  const std::string location = TARN_LOG_LOCATION;
  EXPECT_EQ(location, "tests/libTARN/util/LoggerTest.cpp:" + std::to_string(__LINE__ - 1));
}

}  // namespace
