#include "options/NearestName.h"

#include <algorithm>
#include <cctype>

namespace mirel {

namespace {

char lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

}  // namespace

int editDistance(std::string_view a, std::string_view b) {
  const std::size_t width = b.size() + 1;
  std::vector<int> beforeLast(width), last(width), row(width);
  for (std::size_t j = 0; j < width; ++j) last[j] = static_cast<int>(j);
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = static_cast<int>(i);
    for (std::size_t j = 1; j < width; ++j) {
      const bool same = lower(a[i - 1]) == lower(b[j - 1]);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
      const bool swapped = i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) && lower(a[i - 2]) == lower(b[j - 1]);
      if (swapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
    std::swap(beforeLast, last);
    std::swap(last, row);
  }
  return last.back();
}

std::string nearestName(std::string_view name, const std::vector<std::string>& candidates) {
  std::string nearest;
  int smallest = std::max(2, static_cast<int>(name.size()) / 2);
  for (const std::string& candidate : candidates) {
    const int distance = editDistance(name, candidate);
    if (distance < smallest || (distance == smallest && nearest.empty())) {
      smallest = distance;
      nearest = candidate;
    }
  }
  return nearest;
}

std::string didYouMean(std::string_view name, const std::vector<std::string>& candidates) {
  const std::string nearest = nearestName(name, candidates);
  return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

}  // namespace mirel
