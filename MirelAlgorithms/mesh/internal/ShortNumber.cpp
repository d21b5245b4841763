#include <MirelAlgorithms/mesh/internal/ShortNumber.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace MirelAlgorithms {
namespace {

constexpr int digitCount = 6;

// Exponent of the first digit of a value in [1e-4, 1e6).
int decimalExponent(double value) {
  constexpr double powers[] = {1e-3, 1e-2, 1e-1, 1e0, 1e1, 1e2, 1e3, 1e4, 1e5};
  int exponent = -4;
  for (const double power : powers) exponent += value >= power;
  return exponent;
}

// Rounds a value in [1e-4, 1e6) to its six digits; false where the error of scaling it could turn the rounding.
bool roundToDigits(double value, int& digits, int& exponent) {
  constexpr double powers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
  constexpr double doubt = 1e-6;  // the error is below 1e-9
  exponent = decimalExponent(value);
  const double scaled = value * powers[digitCount - 1 - exponent];
  digits = static_cast<int>(scaled);
  const double rest = scaled - digits - 0.5;
  if (std::fabs(rest) < doubt) return false;
  digits += rest > 0;
  if (digits == 1000000) {
    digits = 100000;
    ++exponent;
  }
  return exponent < digitCount;
}

// Plain notation, without zeros at the end of the fraction.
char* writeDigits(char* out, int digits, int exponent) {
  char text[digitCount];
  int used = 0;  // digits up to the last that is not zero
  for (int i = digitCount - 1; i >= 0; --i, digits /= 10) {
    text[i] = static_cast<char>('0' + digits % 10);
    if (used == 0 && text[i] != '0') used = i + 1;
  }
  const int whole = exponent + 1;  // digits before the point
  if (whole <= 0) {
    std::copy_n("0.0000", 6, out);
    out += 2 - whole;
    std::memcpy(out, text, digitCount);
    return out + used;
  }
  std::memcpy(out, text, digitCount);
  if (used <= whole) return out + whole;
  out[whole] = '.';
  std::memcpy(out + whole + 1, text + whole, static_cast<std::size_t>(digitCount - whole));
  return out + used + 1;
}

}  // namespace

char* writeShortNumber(char* out, double value) {
  const double magnitude = std::fabs(value);
  int digits, exponent;
  if (magnitude >= 1e-4 && magnitude < 1e6 && roundToDigits(magnitude, digits, exponent)) {
    *out = '-';
    return writeDigits(out + (value < 0), digits, exponent);
  }
  return std::to_chars(out, out + longestShortNumber, value, std::chars_format::general, digitCount).ptr;
}

}  // namespace MirelAlgorithms
