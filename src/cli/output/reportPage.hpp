#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

/// An HTML page with the tree, the objects, a search and the violations of a document.
struct ReportPage {
  std::string text;
  std::size_t violationsLeftOut;
};

/// The page for `objects` of the document that was loaded from `path`. Siblings in its tree stand
/// in the order of `objects`.
ReportPage reportPage(const std::string& path, libtarn::model::LibTarnDocument& document,
                      const std::vector<const libtarn::model::LibTarnManagedObject*>& objects);

}  // namespace tarn
