#pragma once

#include "TarnApi.hpp"
#include "model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// A distinguished name that the document's validator rejects.
class TARN_API InvalidDistinguishedNameException : public ModelException {
 public:
  /// `distName` may be null; the message then names none.
  explicit InvalidDistinguishedNameException(const char* distName);
};

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
