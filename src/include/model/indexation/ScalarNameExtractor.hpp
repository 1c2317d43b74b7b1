// Included by other headers; not for hosts.
#pragma once

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {

class Scalar;

namespace indexation {

/// The key of an index: the name of a scalar, "" when it has none. The text is the element's own.
struct TARN_API ScalarNameExtractor {
  const char* operator()(const Scalar* element) const;
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
