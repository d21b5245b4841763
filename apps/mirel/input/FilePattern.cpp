#include "input/FilePattern.h"

#include "Errors.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <opencv2/core/utility.hpp>
#include <optional>

namespace mirel {

namespace fs = std::filesystem;

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// The run of digits at `at`, without leading zeros.
std::string_view digitsAt(const std::string& text, std::size_t& at) {
  while (at < text.size() && text[at] == '0') ++at;
  const std::size_t begin = at;
  while (at < text.size() && isDigit(text[at])) ++at;
  return std::string_view(text).substr(begin, at - begin);
}

std::vector<std::string> wildcardFiles(const std::string& pattern) {
  std::vector<cv::String> found;
  try {
    cv::glob(pattern, found);
  } catch (const cv::Exception&) {
    // the folder does not exist
  }
  std::sort(found.begin(), found.end(), naturalLess);
  return found;
}

/// A name with a place for a number.
struct NumberedName {
  std::string before, after;
  int digits;

  std::string of(int number) const { return fmt::format("{}{:0{}}{}", before, number, digits, after); }
};

/// The last %d, %4d or %04d in a text.
std::optional<NumberedName> findNumber(const std::string& text) {
  std::size_t percent = text.size();
  while (percent > 0 && (percent = text.rfind('%', percent - 1)) != std::string::npos) {
    std::size_t at = percent + 1;  // a text ends with a zero byte
    if (text[at] == '0') ++at;
    const int digits = isDigit(text[at]) ? text[at++] - '0' : 1;
    if (text[at] == 'd') return NumberedName{text.substr(0, percent), text.substr(at + 1), digits};
  }
  return std::nullopt;
}

std::vector<std::string> numberedFiles(const NumberedName& name) {
  std::error_code ignored;
  const auto isThere = [&](int number) { return fs::exists(name.of(number), ignored); };
  int number = 0;
  while (number < 1000 && !isThere(number)) ++number;
  std::vector<std::string> files;
  for (; isThere(number); ++number) files.push_back(name.of(number));
  return files;
}

}  // namespace

bool naturalLess(const std::string& a, const std::string& b) {
  std::size_t i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    if (isDigit(a[i]) && isDigit(b[j])) {
      const std::string_view x = digitsAt(a, i), y = digitsAt(b, j);
      if (x.size() != y.size()) return x.size() < y.size();
      if (x != y) return x < y;
    } else if (a[i] != b[j]) {
      return a[i] < b[j];
    } else {
      ++i, ++j;
    }
  }
  const std::size_t restA = a.size() - i, restB = b.size() - j;
  return restA != restB ? restA < restB : a < b;
}

std::vector<std::string> expandPattern(const std::string& argument) {
  std::error_code error;
  if (fs::exists(argument, error)) return {argument};
  std::vector<std::string> files;
  if (const auto numbered = findNumber(argument)) {
    files = numberedFiles(*numbered);
  } else if (argument.find_first_of("*?") != std::string::npos) {
    files = wildcardFiles(argument);
  } else {
    return {argument};
  }
  if (files.empty()) throw UsageError(argument + ": no file has such a name");
  return files;
}

}  // namespace mirel
