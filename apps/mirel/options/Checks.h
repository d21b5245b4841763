/// Checks of option values whose messages say what was given and what would be right.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace mirel {

/// A whole number of at least `least`.
CLI::Validator atLeast(int least);

/// One of the names; a mistyped one is told the nearest.
CLI::Validator oneOf(const std::vector<std::string>& names);

}  // namespace mirel
