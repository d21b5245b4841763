/// Long series drawn with few points.
#pragma once

#include <vector>

namespace mirel {

/// The smallest and the largest value of each of `parts` parts, in the order in which they come, so that no peak is
/// lost; the series itself when it has no more than twice as many values. Values that are no number are left out; a
/// part of nothing else gives two of them.
std::vector<double> envelope(const std::vector<double>& values, std::size_t parts);

/// Ascending times to go with the envelopes of series of the same length.
std::vector<double> envelopeTimes(const std::vector<double>& times, std::size_t parts);

}  // namespace mirel
