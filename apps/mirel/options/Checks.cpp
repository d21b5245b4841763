#include "options/Checks.h"

#include "options/NearestName.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>

namespace mirel {

CLI::Validator atLeast(int least) {
  return {[least](const std::string& text) -> std::string {
            int value = 0;
            const char* end = text.data() + text.size();
            const auto [stop, error] = std::from_chars(text.data(), end, value);
            if (error == std::errc() && stop == end && value >= least) return {};
            return fmt::format("'{}' given, a whole number from {} on expected", text, least);
          },
          ""};
}

CLI::Validator oneOf(const std::vector<std::string>& names) {
  return {[names](const std::string& text) -> std::string {
            if (std::find(names.begin(), names.end(), text) != names.end()) return {};
            return fmt::format("'{}' given, {} expected{}", text, fmt::join(names, ", "), didYouMean(text, names));
          },
          ""};
}

}  // namespace mirel
