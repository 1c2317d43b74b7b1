#include "util/dumpTarnDocument.hpp"

#include "model/LibTarnDocument.hpp"
#include "model/TarnDomDocument.hpp"

namespace libtarn {
namespace util {

void dumpTarnDocument(model::LibTarnDocument& document, std::string& out) {
  out = document.getItsTarnDomDocument()->printDocument();
}

}  // namespace util
}  // namespace libtarn
