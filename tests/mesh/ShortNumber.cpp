#include <MirelAlgorithms/mesh/internal/ShortNumber.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>

namespace MirelAlgorithms {
namespace {

void expectAsPrinted(double value) {
  char found[longestShortNumber], wanted[32];
  std::snprintf(wanted, sizeof wanted, "%g", value);
  ASSERT_EQ(std::string(found, writeShortNumber(found, value)), wanted) << std::hexfloat << value;
}

// Values of any exponent, some with few digits, and those beside and at the middle between two of six digits.
TEST(ShortNumber, asPrinted) {
  for (const double value : {0.0, 1e-4, 9.99999e-5, 9.999995e-5, 0.00999999999, 1.0, 99.99995, 999999.4, 999999.5, 1e6,
                             0.5, 123456.5, 123457.5, 1e100, 5e-324, HUGE_VAL, std::nan("")})
    for (const double sign : {1.0, -1.0}) expectAsPrinted(sign * value);
  std::mt19937_64 random(1);
  for (int i = 0; i < 100000; ++i) {
    expectAsPrinted(std::bit_cast<double>(random()));
    const auto number = static_cast<double>(random() % 1000000), power = std::pow(10, random() % 14) * 1e-9;
    for (const double value : {number * power, (number + 0.5) * power})
      for (const double to : {0.0, value, HUGE_VAL}) expectAsPrinted(std::nextafter(value, to));
  }
}

}  // namespace
}  // namespace MirelAlgorithms
