#pragma once

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

/// Returns the content of a file and the terminating NUL that a parse needs. Returns nothing, and
/// writes a line to standard error, when the file cannot be read.
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

/// Returns false, and writes a line to standard error, when the file cannot be written.
inline bool writeText(const char* path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) std::cerr << path << ": cannot be written\n";
  return static_cast<bool>(file);
}
