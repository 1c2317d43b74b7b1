#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarn {

/// The options that say what to change in the selected managed objects.
struct Changes {
  std::vector<std::string> values;       ///< "PATH=VALUE" each.
  std::optional<std::string> className;  ///< The new class.
  std::optional<std::string> version;    ///< The new version.
  std::string file;           ///< A document whose first object holds new values; "" for none.
  bool create = false;        ///< Objects that lack a value get it.
  bool onlyExisting = false;  ///< They do not, which is the default, too.

  bool isEmpty() const { return values.empty() && !className && !version && file.empty(); }
};

}  // namespace tarn
