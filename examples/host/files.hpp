#pragma once

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

/// The content of a file with the zero byte that a parse wants behind it; empty, with a line on
/// standard error, when it cannot be read.
inline std::vector<char> readText(const char* path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<char> text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file.is_open() || file.bad()) {
    std::cerr << path << ": cannot be read\n";
    return {};
  }
  text.push_back('\0');
  return text;
}

/// False, with a line on standard error, when the file cannot be written.
inline bool writeText(const char* path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) std::cerr << path << ": cannot be written\n";
  return static_cast<bool>(file);
}
