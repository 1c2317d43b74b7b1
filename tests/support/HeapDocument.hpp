#pragma once

#include <gtest/gtest.h>

#include <string>

#include "libtarn/libtarn.hpp"

namespace tarn_test {

/// A parsed document with its pool on the heap: the address sanitizer detects uses after its
/// destruction, and heapAllocations() counts its blocks.
class HeapDocument {
 public:
  explicit HeapDocument(const std::string& text)
      : document_(new libtarn::model::TarnDomDocument(nullptr, nullptr)) {
    EXPECT_EQ(document_.parse(text.c_str(), false), 0) << text;
  }

  libtarn::model::LibTarnDocument& get() { return document_; }

 private:
  libtarn::model::LibTarnDocument document_;
};

}  // namespace tarn_test
