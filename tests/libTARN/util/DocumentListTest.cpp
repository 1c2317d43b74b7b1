#include <gtest/gtest.h>

#include "libtarn/libtarn.hpp"
#include "libtarn/util/DocumentList.hpp"

namespace {

using libtarn::model::LibTarnDocument;
using libtarn::util::DocumentList;

class DocumentListTest : public ::testing::Test {
 protected:
  LibTarnDocument first_;
  LibTarnDocument second_;
  LibTarnDocument third_;
  LibTarnDocument fourth_;
};

TEST_F(DocumentListTest, KeepsTheLastThreeAndHandsThemBackNewestFirst) {
  DocumentList list;
  for (LibTarnDocument* document : {&first_, &second_, &third_, &fourth_}) {
    list.SaveDocument(document);
  }
  EXPECT_EQ(list.GetDocumentBack(), &fourth_);
  EXPECT_EQ(list.GetDocumentBack(), &third_);
  EXPECT_EQ(list.GetDocumentBack(), &second_);
  EXPECT_EQ(list.GetDocumentBack(), nullptr);
}

TEST_F(DocumentListTest, CapacityOfThreeIsTheDefault) {
  DocumentList list(3);
  for (LibTarnDocument* document : {&first_, &second_, &third_}) list.SaveDocument(document);
  EXPECT_EQ(list.GetDocumentBack(), &third_);
  EXPECT_EQ(list.GetDocumentBack(), &second_);
  EXPECT_EQ(list.GetDocumentBack(), &first_);
  EXPECT_EQ(list.GetDocumentBack(), nullptr);
}

TEST_F(DocumentListTest, CapacityOfOneKeepsTheNewest) {
  DocumentList list(1);
  list.SaveDocument(&first_);
  list.SaveDocument(&second_);
  EXPECT_EQ(list.GetDocumentBack(), &second_);
  EXPECT_EQ(list.GetDocumentBack(), nullptr);
}

TEST_F(DocumentListTest, CapacityOfZeroKeepsNothing) {
  DocumentList list(0);
  list.SaveDocument(&first_);
  EXPECT_EQ(list.GetDocumentBack(), nullptr);
}

TEST_F(DocumentListTest, EmptyListGivesNull) {
  DocumentList list;
  EXPECT_EQ(list.GetDocumentBack(), nullptr);
  list.SaveDocument(&first_);
  EXPECT_EQ(list.GetDocumentBack(), &first_);
  EXPECT_EQ(list.GetDocumentBack(), nullptr);
}

TEST_F(DocumentListTest, SameDocumentTwiceIsTwoEntries) {
  DocumentList list;
  list.SaveDocument(&first_);
  list.SaveDocument(&first_);
  EXPECT_EQ(list.GetDocumentBack(), &first_);
  EXPECT_EQ(list.GetDocumentBack(), &first_);
  EXPECT_EQ(list.GetDocumentBack(), nullptr);
}

TEST_F(DocumentListTest, ListDeletesNoDocument) {
  {
    DocumentList list(1);
    list.SaveDocument(&first_);
    list.SaveDocument(&second_);
  }
  EXPECT_STREQ(first_.getVersion(), "2.1");
  EXPECT_STREQ(second_.getVersion(), "2.1");
}

}  // namespace
