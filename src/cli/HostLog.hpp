#pragma once

#include <string>

namespace tarn {

/// Where the library's log lines go in this command: ERROR lines are kept, so that the command can
/// tell the user in its own words; the others are dropped. One thread at a time.
class HostLog {
 public:
  /// The message of the last ERROR line, "" when there was none since the last call.
  static std::string takeError();
};

}  // namespace tarn
