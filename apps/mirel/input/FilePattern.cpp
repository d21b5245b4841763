#include "input/FilePattern.h"

#include "Errors.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <opencv2/core/utility.hpp>
#include <regex>

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

std::vector<std::string> numberedFiles(const std::string& before, int digits, const std::string& after) {
  const auto name = [&](int number) { return fmt::format("{}{:0{}}{}", before, number, digits, after); };
  int number = 0;
  while (number < 1000 && !fs::exists(name(number))) ++number;
  std::vector<std::string> files;
  for (; fs::exists(name(number)); ++number) files.push_back(name(number));
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
  static const std::regex counter("^(.*)%0?([0-9]?)d(.*)$");
  std::error_code error;
  if (fs::exists(argument, error)) return {argument};
  std::smatch parts;
  std::vector<std::string> files;
  if (std::regex_match(argument, parts, counter)) {
    const int digits = parts[2].length() == 0 ? 1 : std::stoi(parts[2]);
    files = numberedFiles(parts[1], digits, parts[3]);
  } else if (argument.find_first_of("*?") != std::string::npos) {
    files = wildcardFiles(argument);
  } else {
    return {argument};
  }
  if (files.empty()) throw UsageError(argument + ": no file has such a name");
  return files;
}

}  // namespace mirel
