#include <gtest/gtest.h>

#include <map>
#include <string>
#include <type_traits>

#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"
#include "libtarn/util/Enum.hpp"
#include "libtarn/util/Logger.hpp"

namespace {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnManagedObject;
using libtarn::util::Enum;
using libtarn::util::Logger;

static_assert(std::is_same_v<decltype(Enum<LibTarnCmData::Type>::getStringToEnum()),
                             std::map<std::string, const Enum<LibTarnCmData::Type>*>&>,
              "hosts hold the table by this type");

template <class T>
void expectConstant(const Enum<T>& constant, int ordinal, const char* text) {
  EXPECT_EQ(constant.getOrdinal(), ordinal);
  EXPECT_TRUE(constant.isValid());
  EXPECT_EQ(constant.toString(), text);
  EXPECT_EQ(Enum<T>::getStringToEnum().at(text), &constant);
  EXPECT_EQ(Enum<T>::getOrdinalToString().at(ordinal), text);
}

TEST(EnumTest, ConstantsHaveTheirTextsAndOrdinals) {
  expectConstant(LibTarnCmData::Type::ACTUAL, 0, "actual");
  expectConstant(LibTarnCmData::Type::PLAN, 1, "plan");
  expectConstant(LibTarnCmData::Type::DEFAULTS, 2, "defaults");
  EXPECT_EQ(Enum<LibTarnCmData::Type>::count, 3);
  expectConstant(LibTarnManagedObject::Operation::CREATE, 0, "create");
  expectConstant(LibTarnManagedObject::Operation::DELETE, 1, "delete");
  expectConstant(LibTarnManagedObject::Operation::UPDATE, 2, "update");
  expectConstant(LibTarnManagedObject::Operation::AUTO, 3, "auto");
  EXPECT_EQ(Enum<LibTarnManagedObject::Operation>::count, 4);
  expectConstant(Logger::Level::DEBUG, 0, "DEBUG");
  expectConstant(Logger::Level::ERROR, 1, "ERROR");
  expectConstant(Logger::Level::INFO, 2, "INFO");
  EXPECT_EQ(Enum<Logger::Level>::count, 3);
}

TEST(EnumTest, CopiesCompareAsTheirConstants) {
  const LibTarnCmData::Type copy = LibTarnCmData::Type::PLAN;
  EXPECT_TRUE(copy == LibTarnCmData::Type::PLAN);
  EXPECT_TRUE(copy != LibTarnCmData::Type::ACTUAL);
  EXPECT_EQ(copy.toString(), "plan");
}

struct Colour {};

TEST(EnumTest, NullTextTakesAnOrdinalAndIsInNoTable) {
  const Enum<Colour> none(nullptr);
  const Enum<Colour> red("red");
  EXPECT_FALSE(none.isValid());
  EXPECT_EQ(red.getOrdinal(), none.getOrdinal() + 1);
  EXPECT_EQ(Enum<Colour>::getStringToEnum().size(), 1U);
  EXPECT_DEATH(static_cast<void>(none.toString()), "it != getOrdinalToString\\(\\).end\\(\\)");
  EXPECT_DEATH(Enum<Colour>("red"), "assertion failed: stringInsertResult.second");
}

}  // namespace
