#include "output/escaped.hpp"

namespace tarn {

void appendEscaped(std::string& line, std::string_view text) {
  for (const char c : text) {
    switch (c) {
      case '\\':
        line += "\\\\";
        break;
      case '\t':
        line += "\\t";
        break;
      case '\n':
        line += "\\n";
        break;
      case '\r':
        line += "\\r";
        break;
      default:
        line += c;
    }
  }
}

}  // namespace tarn
