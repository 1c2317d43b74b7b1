#pragma once

#include <optional>
#include <string>

#include "support/ReferenceTree.hpp"

namespace tarn_test {

// The tree of a document by three parsers, in the form that the XML core gives it: the value of an
// element is its first run of text that is not blank, up to the next markup. Nothing for a text
// that the parser refuses.

std::optional<ReferenceElement> parsedByCore(const std::string& text);
std::optional<ReferenceElement> parsedByLibxml2(const std::string& text);
std::optional<ReferenceElement> parsedByExpat(const std::string& text);

}  // namespace tarn_test
