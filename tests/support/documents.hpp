#pragma once

#include <memory>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"

namespace tarn_test {

// Texts of documents that are valid if their arguments are.

/// A root around `content`.
std::string rootText(const std::string& content);
/// A root with one cmData around `content`.
std::string cmDataText(const std::string& content, const std::string& type = "plan");
/// As cmDataText(), with a header in front of `objects`.
std::string documentText(const std::string& objects, const std::string& header = "<header/>");
/// As documentText(), with one log entry in the header.
std::string documentTextWithLog(const std::string& objects);
/// A managed object of class C and version 1, without operation when that is empty.
std::string objectText(const std::string& name, const std::string& operation = "",
                       const std::string& body = "");

/// The bytes of `text` and a terminating NUL, for a document to take over.
std::vector<char> vectorOf(const std::string& text);

/// A document loaded from `text` without validation; a text that is refused fails the test. Log
/// lines of the load are dropped.
std::unique_ptr<libtarn::model::LibTarnDocument> loaded(const std::string& text);

/// The printed form.
std::string printed(libtarn::model::LibTarnDocument& document);

/// The distinguished names of a collection in its order.
std::vector<std::string> namesOf(
    const libtarn::model::indexation::ManagedObjectCollection& collection);

/// The names of a collection of parameters or lists in its order.
template <class Collection>
std::vector<std::string> namesOf(const Collection& collection) {
  std::vector<std::string> names;
  for (const auto& entry : collection) names.emplace_back(entry.first);
  return names;
}

}  // namespace tarn_test
