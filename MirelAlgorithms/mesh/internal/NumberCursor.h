/// Numbers in a line of text, as programs usually write them.
#pragma once

#include <charconv>
#include <cstdint>
#include <system_error>

namespace MirelAlgorithms {

/// Walks along a line that ends with a line feed. Takes only what every reader understands in the same way; after false
/// the line has to be read otherwise.
class NumberCursor {
 public:
  explicit NumberCursor(const char* at) : at_(at) {}

  void skipBlanks() {
    while (*at_ == ' ') ++at_;
  }

  /// Steps over a character if it is the next.
  bool skip(char character) {
    if (*at_ != character) return false;
    ++at_;
    return true;
  }

  /// Whether a number can end here.
  bool atEndOfWord() const { return *at_ == ' ' || *at_ == '\n' || *at_ == '\r'; }

  /// Decimal digits with or without sign, point and exponent, up to the end of a word: the nearest double.
  bool real(double& value);

  /// At most nine decimal digits, with or without a minus sign.
  bool integer(int& value) {
    const bool negative = skip('-');
    const char* const first = at_;
    const std::uint64_t magnitude = digits(0);
    if (at_ == first || at_ - first > 9) return false;
    value = negative ? -static_cast<int>(magnitude) : static_cast<int>(magnitude);
    return true;
  }

 private:
  std::uint64_t digits(std::uint64_t value) {
    for (; static_cast<unsigned char>(*at_ - '0') < 10; ++at_)
      value = value * 10 + static_cast<unsigned char>(*at_ - '0');
    return value;
  }
  bool exponent(int& value);

  const char* at_;
};

inline bool NumberCursor::exponent(int& value) {
  if (!skip('e') && !skip('E')) return true;
  const bool negative = skip('-');
  if (!negative) skip('+');
  const char* const first = at_;
  const std::uint64_t magnitude = digits(0);
  if (at_ == first || at_ - first > 4) return false;
  value += negative ? -static_cast<int>(magnitude) : static_cast<int>(magnitude);
  return true;
}

inline bool NumberCursor::real(double& value) {
  // Integers up to 2^53 and these powers are exact, so one division or product of them is rounded once (Clinger,
  // "How to read floating point numbers accurately", PLDI 1990).
  static constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                      1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  constexpr int mostPower = 22, safeDigits = 19;
  constexpr std::uint64_t mostExact = std::uint64_t{1} << 53;

  const char* const start = at_;
  const bool negative = skip('-');
  const char* const whole = at_;
  std::uint64_t mantissa = digits(0);
  auto count = at_ - whole;
  int power = 0;
  if (skip('.')) {
    const char* const fraction = at_;
    mantissa = digits(mantissa);
    count += at_ - fraction;
    power = -static_cast<int>(at_ - fraction);
  }
  if (count == 0 || !exponent(power) || !atEndOfWord()) return false;

  if (count <= safeDigits && mantissa <= mostExact && power >= -mostPower && power <= mostPower) {
    const auto exact = static_cast<double>(mantissa);
    const double magnitude = power < 0 ? exact / powers[-power] : exact * powers[power];
    value = negative ? -magnitude : magnitude;
    return true;
  }
  const auto [end, error] = std::from_chars(start, at_, value);
  return error == std::errc{} && end == at_;
}

}  // namespace MirelAlgorithms
