#pragma once

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// Reports a distinguished name that the document's validator rejects.
class TARN_API InvalidDistinguishedNameException : public ModelException {
 public:
  /// `distName` may be null; the message then names none.
  explicit InvalidDistinguishedNameException(const char* distName);
  ~InvalidDistinguishedNameException() override;
};

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
