#include <MirelAlgorithms/features/internal/MatrixDump.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>

#include "support/ThrownText.h"

namespace MirelAlgorithms {
namespace {

std::string contents(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

/// Decimal commas and grouped digits.
struct OtherNumbers : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(MatrixDump, oneValueALineInTheClassicLocale) {
  const std::string path = testing::TempDir() + "matrix_dump.txt";
  std::ofstream(path) << "what was there before, which is longer than what comes";
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new OtherNumbers));
  const double values[] = {0.0, -1.0, 268435456.0, 0.1, 1234.5678, 123456.0};
  cvMatToTxt(cv::Mat(2, 4, CV_64FC1, cv::Scalar(7.0)).colRange(0, 1), path);  // a view
  const std::string view = contents(path);
  cvMatToTxt(cv::Mat(2, 3, CV_64FC1, const_cast<double*>(values)), path);
  const std::string doubles = contents(path);
  cvMatToTxt(cv::Mat(1, 2, CV_32FC1, cv::Scalar(0.1f)), path);
  const std::string floats = contents(path);
  std::locale::global(before);
  std::remove(path.c_str());
  EXPECT_EQ(view, "7\n7\n");
  EXPECT_EQ(doubles, "0\n-1\n2.68435e+08\n0.1\n1234.57\n123456\n");
  EXPECT_EQ(floats, "0.1\n0.1\n");
}

TEST(MatrixDump, refusesOtherTypes) {
  EXPECT_EQ(thrownText<std::invalid_argument>([] { cvMatToTxt(cv::Mat(2, 2, CV_32SC1), "not written"); }),
            "cvMatToTxt: matrix: CV_32SC1 given, CV_64FC1 or CV_32FC1 expected");
}

}  // namespace
}  // namespace MirelAlgorithms
