#pragma once

namespace libtarn {
namespace model {

/// Message of the rapidxml::parse_error for an element that the model does not know.
constexpr const char* UNKNOWN_OBJECT = "unknown TARN object";

}  // namespace model
}  // namespace libtarn
