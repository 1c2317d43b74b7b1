#include "documents/nameList.hpp"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "CommandError.hpp"
#include "files/InputFile.hpp"

namespace tarn {

namespace {

std::string unescaped(std::string_view line, const std::string& path, std::size_t number) {
  std::string name;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] != '\\') {
      name += line[i];
      continue;
    }
    const char next = ++i < line.size() ? line[i] : '\0';
    const std::size_t which = std::string_view("tnr\\").find(next);
    if (which == std::string_view::npos) {
      throw CommandError(Status::UsageError, path, libtarn::util::TextPosition{number, i},
                         "after a backslash, a name has t, n, r or a backslash");
    }
    name += "\t\n\r\\"[which];
  }
  return name;
}

}  // namespace

std::vector<std::string> readNameList(const std::string& path) {
  const std::string content = readFile(path);
  const bool hasNuls = content.find('\0') != std::string::npos;
  const char separator = hasNuls ? '\0' : '\n';
  std::vector<std::string> names;
  std::size_t number = 0;
  for (std::size_t start = 0; start < content.size();) {
    const std::size_t end = std::min(content.find(separator, start), content.size());
    std::string_view line = std::string_view(content).substr(start, end - start);
    start = end + 1;
    ++number;
    if (!hasNuls && !line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.empty()) continue;
    names.push_back(hasNuls ? std::string(line) : unescaped(line, path, number));
  }
  return names;
}

}  // namespace tarn
