#include "libtarn/util/dumpTarnDocument.hpp"

#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/model/TarnDomDocument.hpp"

namespace libtarn {
namespace util {

void dumpTarnDocument(model::LibTarnDocument& document, std::string& out) {
  out = document.getItsTarnDomDocument()->printDocument();
}

}  // namespace util
}  // namespace libtarn
