/// JSON from outside.
#pragma once

#include "Errors.h"

#include <nlohmann/json.hpp>
#include <string>

namespace mirel {

/// For the parser: stops with `refusal` where lists and objects are nested deeper than in any file that is read here;
/// each level takes many times the memory of its bracket.
inline nlohmann::json::parser_callback_t refuseDeepNesting(const std::string& refusal) {
  return [refusal](int depth, nlohmann::json::parse_event_t, nlohmann::json&) {
    constexpr int deepest = 50;
    if (depth > deepest) throw UsageError(refusal);
    return true;
  };
}

}  // namespace mirel
