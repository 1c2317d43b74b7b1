#include <gtest/gtest.h>

#include <list>

#include "libtarn/libtarn.hpp"
#include "libtarn/util/ManagedObjectBuilder.hpp"
#include "support/CapturedLog.hpp"

namespace {

using namespace libtarn::model;
using libtarn::util::ManagedObjectBuilder;
using tarn_test::CapturedLog;
using Operation = LibTarnManagedObject::Operation;

class ManagedObjectBuilderTest : public ::testing::Test {
 protected:
  ManagedObjectBuilderTest() {
    EXPECT_EQ(document_.parse("<tarn><cmData type='plan'>"
                              "<managedObject class='C' distName='A-1' version='1'>"
                              "<p name='x'>1</p></managedObject>"
                              "<managedObject class='D' distName='A-1/B-1' operation='create'/>"
                              "</cmData></tarn>",
                              false),
              0);
  }

  std::string matching(const ManagedObjectBuilder& mask) {
    std::string names;
    for (const LibTarnManagedObject* object : document_.getMOsMatchingMask(mask.get())) {
      names += std::string(object->getDistName().getText()) + " ";
    }
    return names;
  }

  CapturedLog log_;
  LibTarnDocument document_;
};

TEST_F(ManagedObjectBuilderTest, MaskThatSaysNothingMatchesEveryObject) {
  EXPECT_EQ(matching(ManagedObjectBuilder(document_)), "A-1 A-1/B-1 ");
}

TEST_F(ManagedObjectBuilderTest, MaskSelectsByWhatIsSet) {
  EXPECT_EQ(matching(ManagedObjectBuilder(document_).setClass("D")), "A-1/B-1 ");
  EXPECT_EQ(matching(ManagedObjectBuilder(document_).setDistName("/")), "A-1/B-1 ");
  EXPECT_EQ(matching(ManagedObjectBuilder(document_).setVersion("1")), "A-1 ");
  EXPECT_EQ(matching(ManagedObjectBuilder(document_).setOperation(Operation::CREATE)), "A-1/B-1 ");
  ManagedObjectBuilder byName(document_);
  EXPECT_TRUE(byName.addParameter("x", "#"));
  EXPECT_EQ(matching(byName), "A-1 ");
  ManagedObjectBuilder byValue(document_);
  EXPECT_TRUE(byValue.addParameter("x", "2"));
  EXPECT_EQ(matching(byValue), "");
}

TEST_F(ManagedObjectBuilderTest, SecondParameterOfANameIsRefused) {
  ManagedObjectBuilder builder(document_);
  EXPECT_TRUE(builder.addParameter("x", "1"));
  EXPECT_FALSE(builder.addParameter("x", "2"));
  EXPECT_STREQ(builder.get().getScalarParameter("x")->getValue(), "1");
}

TEST_F(ManagedObjectBuilderTest, ValuesThatSayNothingChangeNothing) {
  const std::string before = document_.getItsTarnDomDocument()->printDocument();
  document_.setChangesToMOs(ManagedObjectBuilder(document_).get(),
                            ManagedObjectBuilder(document_).get());
  EXPECT_EQ(document_.getItsTarnDomDocument()->printDocument(), before);
}

TEST_F(ManagedObjectBuilderTest, ValuesChangeWhatIsSet) {
  ManagedObjectBuilder values(document_);
  values.setClass("E").setVersion("2").setOperation(Operation::UPDATE).addParameter("x", "9");
  document_.setChangesToMOs(ManagedObjectBuilder(document_).setClass("C").get(), values.get());
  const LibTarnManagedObject& changed =
      *document_.getLibTarnCmData()->getLibTarnManagedObject("A-1");
  EXPECT_STREQ(changed.getClass(), "E");
  EXPECT_STREQ(changed.getVersion(), "2");
  EXPECT_EQ(changed.getOperation(), Operation::UPDATE);
  EXPECT_STREQ(changed.getScalarParameter("x")->getValue(), "9");
}

TEST_F(ManagedObjectBuilderTest, ObjectStaysOutOfTheDocument) {
  ManagedObjectBuilder(document_).setDistName("A-7");
  EXPECT_EQ(document_.getLibTarnCmData()->getManagedObjectNumber(), 2U);
}

// The memory of a document: its text, and the blocks of its pool.
TEST_F(ManagedObjectBuilderTest, MemorySizeGrowsWithTheDocument) {
  LibTarnDocument document;
  const std::size_t empty = document.getMemorySize();
  std::string text = "<tarn><cmData type='plan'>";
  for (int i = 0; i < 20000; ++i) {
    text += "<managedObject distName='A-" + std::to_string(i) + "'/>";
  }
  text += "</cmData></tarn>";
  ASSERT_EQ(document.parse(text.c_str(), false), 0);
  const std::size_t loaded = document.getMemorySize();
  EXPECT_GT(loaded, empty + text.size() + 20000 * 100);
  ASSERT_EQ(document.parse("<tarn/>", false), 0);
  EXPECT_GE(document.getMemorySize(), loaded);  // the text of the first parse is kept
}

}  // namespace
