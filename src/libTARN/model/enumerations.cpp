#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"
#include "libtarn/util/Enum.hpp"

namespace libtarn {
namespace util {

template class Enum<model::LibTarnCmData::Type>;
template class Enum<model::LibTarnManagedObject::Operation>;

}  // namespace util
}  // namespace libtarn
