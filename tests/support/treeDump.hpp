#pragma once

#include <string>

#include "libtarn/rapidxml/rapidxml.hpp"

namespace tarn_test {

/// The tree below `top` in one line: an element as name(attribute=value ...)"value"{children}, a
/// declaration as ?xml(...). Walks links both ways and marks a broken one with "!".
std::string dump(const rapidxml::xml_node<char>& top);

}  // namespace tarn_test
