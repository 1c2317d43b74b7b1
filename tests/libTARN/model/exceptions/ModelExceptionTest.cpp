#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <new>
#include <string>
#include <type_traits>

#include "libtarn/model/DistinguishedName.hpp"
#include "libtarn/model/exceptions/DuplicateElementException.hpp"
#include "libtarn/model/exceptions/InvalidAttributeValueException.hpp"
#include "libtarn/model/exceptions/InvalidChildCountException.hpp"
#include "libtarn/model/exceptions/InvalidDistinguishedNameException.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"
#include "libtarn/model/exceptions/NoElementValueException.hpp"
#include "libtarn/model/exceptions/NoSuchAttributeException.hpp"
#include "libtarn/model/exceptions/NoSuchElementException.hpp"
#include "support/HeapCount.hpp"

namespace {

using namespace libtarn::model;
using namespace libtarn::model::exceptions;

template <class Exception>
void expectMessage(const Exception& exception, const char* message) {
  static_assert(std::is_base_of_v<ModelException, Exception>, "");
  static_assert(sizeof(Exception) == sizeof(std::runtime_error), "carries only its message");
  EXPECT_STREQ(exception.what(), message);
  try {
    throw exception;
  } catch (const std::runtime_error& caught) {
    EXPECT_STREQ(caught.what(), message);
  }
}

TEST(ModelExceptionTest, MessagesFollowTheirTemplates) {
  expectMessage(ModelException("text"), "text");
  expectMessage(NoSuchElementException::instance("p", "name", std::string("speed")),
                "Child 'p' element identified by 'name=speed' not found");
  expectMessage(NoElementValueException::instance("tarn > "), "The 'tarn > ' element has no value");
  expectMessage(NoSuchAttributeException::instance("cmData", "type"),
                "The 'cmData' element has no attribute 'type'");
  expectMessage(DuplicateElementException::instance("managedObject", "cmData", "distName",
                                                    DistinguishedName("A-1/B-2")),
                "The 'cmData' element already contains a 'managedObject' element with "
                "'distName=A-1/B-2'");
  expectMessage(DuplicateElementException::instance("p", "A-1", "name", std::string("x")),
                "The 'A-1' element already contains a 'p' element with 'name=x'");
  const char* const name = "y";
  expectMessage(DuplicateElementException::instance("p", "A-1", "name", name),
                "The 'A-1' element already contains a 'p' element with 'name=y'");
  expectMessage(
      InvalidChildCountException::instance("managedObject", "tarn > cmData > ", 1, 1, 0),
      "The 'tarn > cmData > ' element has 0 child 'managedObject' elements.  Expected: 1");
  expectMessage(InvalidChildCountException::instance("x", "y", 0, 2, 3),
                "The 'y' element has 3 child 'x' elements.  Expected: [0, 2]");
  const std::size_t most = std::numeric_limits<std::size_t>::max();
  const std::string mostText = std::to_string(most);
  expectMessage(InvalidChildCountException::instance("x", "y", most - 1, most, most),
                ("The 'y' element has " + mostText + " child 'x' elements.  Expected: [" +
                 std::to_string(most - 1) + ", " + mostText + "]")
                    .c_str());
  expectMessage(InvalidAttributeValueException::instance("cmData", "type", "plans"),
                "'plans' is not a valid value of 'cmData' attribute 'type'");
  expectMessage(InvalidDistinguishedNameException("A"), "Invalid distinguished name: 'A'");
  expectMessage(InvalidDistinguishedNameException(nullptr), "Invalid distinguished name");
}

// A stream would cut it.
TEST(ModelExceptionTest, MessageIsNotCutWhenMemoryEnds) {
  const std::string name(100, 'x');
  const auto make = [&name] {
    return DuplicateElementException::instance("p", name.c_str(), "name", name);
  };
  const std::string whole = make().what();
  std::string made;
  for (std::size_t number = 1; made.empty(); ++number) {
    ASSERT_LT(number, 100U);
    try {
      const tarn_test::HeapFault fault(number);
      made = make().what();
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(made.empty());
    }
  }
  EXPECT_EQ(made, whole);
}

TEST(ModelExceptionTest, ThrowExceptionThrowsWhatInstanceMakes) {
  try {
    NoSuchAttributeException::throwException("a", "b");
  } catch (const NoSuchAttributeException& error) {
    EXPECT_STREQ(error.what(), NoSuchAttributeException::instance("a", "b").what());
  }
  try {
    InvalidAttributeValueException::throwException("a", "b", "c");
  } catch (const InvalidAttributeValueException& error) {
    EXPECT_STREQ(error.what(), InvalidAttributeValueException::instance("a", "b", "c").what());
  }
}

}  // namespace
