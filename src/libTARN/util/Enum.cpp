#include "libtarn/util/Enum.hpp"

#include "libtarn/util/Logger.hpp"

namespace libtarn {
namespace util {

template class Enum<Logger::Level>;

}  // namespace util
}  // namespace libtarn
