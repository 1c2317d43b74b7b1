#pragma once

#include <cstddef>
#include <string>

#include "libtarn/model/LibTarnDocument.hpp"

namespace tarn {

/// An HTML page with the tree, the objects, a search and the violations of a document.
struct ReportPage {
  std::string text;
  std::size_t violationsLeftOut;
};

/// The page for the document that was loaded from `path`.
ReportPage reportPage(const std::string& path, libtarn::model::LibTarnDocument& document);

}  // namespace tarn
