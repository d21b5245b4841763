/// "Did you mean": the known name that a mistyped one is nearest to.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mirel {

/// Fewest insertions, deletions, replacements and swaps of neighbours that turn one text into the other, upper and
/// lower case being equal (optimal string alignment).
int editDistance(std::string_view a, std::string_view b);

/// The candidate of smallest edit distance, the earlier one of equals; empty when none is near enough to be meant.
std::string nearestName(std::string_view name, const std::vector<std::string>& candidates);

/// "; did you mean NAME?", or nothing when no candidate is near.
std::string didYouMean(std::string_view name, const std::vector<std::string>& candidates);

}  // namespace mirel
