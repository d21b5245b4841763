/// File names that stand for several files.
#pragma once

#include <string>
#include <vector>

namespace mirel {

/// Order of names in which numbers count as numbers: "frame9" comes before "frame10".
bool naturalLess(const std::string& a, const std::string& b);

/// The files that an argument stands for. A path that exists, and one without `*`, `?` or `%d`, stands for itself;
/// wildcards give the files of the folder in natural order; `%d` or `%04d` counts up from the first number below 1000
/// that has a file to the last one without a gap. Throws `UsageError` when a pattern has no file.
std::vector<std::string> expandPattern(const std::string& argument);

}  // namespace mirel
