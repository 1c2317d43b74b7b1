#include "libtarn/model/DistinguishedName.hpp"

#include <cstring>
#include <ostream>

#include "libtarn/Assertion.hpp"

namespace libtarn {
namespace model {

bool DistinguishedName::operator==(const DistinguishedName& other) const {
  TARN_ASSERT(0 != distNameString_ && 0 != other.distNameString_,
              "0 != distNameString && 0 != other.distNameString");
  return std::strcmp(distNameString_, other.distNameString_) == 0;
}

std::ostream& operator<<(std::ostream& out, const DistinguishedName& distName) {
  if (distName.getText()) out << distName.getText();
  return out;
}

}  // namespace model
}  // namespace libtarn
