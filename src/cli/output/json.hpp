#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "output/printable.hpp"

namespace tarn {

/// Keeps its members in their order.
using Json = nlohmann::ordered_json;

/// `json` on one line, printable. Bytes that are no UTF-8 become the replacement character.
inline std::string jsonText(const Json& json) {
  return printableJson(json.dump(-1, ' ', false, Json::error_handler_t::replace));
}

}  // namespace tarn
