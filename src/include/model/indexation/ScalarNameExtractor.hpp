// Included by other headers; not for hosts.
#pragma once

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {

class Scalar;

namespace indexation {

/// Returns the key of a scalar: its name, "" when it has none. The text is the element's own.
struct TARN_API ScalarNameExtractor {
  const char* operator()(const Scalar* element) const;
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
