#pragma once

#include <map>
#include <string>

#include "libtarn/Assertion.hpp"
#include "libtarn/util/detail/EnumClass.hpp"

namespace libtarn {
namespace util {

template <class T>
int Enum<T>::count = 0;

template <class T>
struct Enum<T>::Tables {
  std::map<std::string, const Enum*> stringToEnum;
  std::map<int, std::string> ordinalToString;
};

// Created by the first use, so before the first constant. Host and library share the tables.
// Compilers agree on the name of a static variable here only if the function's return type is not
// one of the standard library.
template <class T>
typename Enum<T>::Tables& Enum<T>::tables() {
  static Tables tables;
  return tables;
}

template <class T>
auto& Enum<T>::getStringToEnum() {
  return tables().stringToEnum;
}

template <class T>
auto& Enum<T>::getOrdinalToString() {
  return tables().ordinalToString;
}

template <class T>
Enum<T>::Enum(const char* text) : ordinal_(count++), valid_(text != nullptr) {
  if (!valid_) return;
  const auto stringInsertResult = getStringToEnum().emplace(text, this);
  TARN_ASSERT(stringInsertResult.second, "stringInsertResult.second");
  getOrdinalToString().emplace(ordinal_, text);
}

template <class T>
const std::string& Enum<T>::toString() const {
  const auto it = getOrdinalToString().find(ordinal_);
  TARN_ASSERT(it != getOrdinalToString().end(), "it != getOrdinalToString().end()");
  return it->second;
}

}  // namespace util
}  // namespace libtarn
