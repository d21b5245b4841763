/// JSON as text.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace mirel {

/// Indented, with a line end; bytes that are no UTF-8 (in file names) become U+FFFD.
inline std::string jsonText(const nlohmann::json& value) {
  return value.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace mirel
