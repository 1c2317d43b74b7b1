#include "documents/Mask.hpp"

#include "CommandError.hpp"
#include "documents/walkObjects.hpp"

namespace tarn {

Mask::Mask(const std::string& path) : document_(path), object_(firstObject(document_)) {
  if (!object_) throw CommandError(Status::RuleBroken, path, "holds no managed object");
}

}  // namespace tarn
