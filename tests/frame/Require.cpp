#include <MirelAlgorithms/frame/internal/Require.h>
#include <gtest/gtest.h>
#include <support/ThrownText.h>

#include <climits>
#include <stdexcept>

using namespace MirelAlgorithms;

namespace {

using Refusal = std::invalid_argument;

TEST(Require, Grey8) {
  const int sizes[] = {2, 2, 2};
  const auto text = [](const cv::Mat& image) {
    return thrownText<Refusal>([&] { requireGrey8("f", "image", image); });
  };
  EXPECT_EQ(text(cv::Mat(1, 1, CV_8UC1)), "nothing");
  EXPECT_EQ(text(cv::Mat()), "f: image: empty given, 8-bit grey image expected");
  EXPECT_EQ(text(cv::Mat(0, 5, CV_8UC1)), "f: image: empty given, 8-bit grey image expected");
  EXPECT_EQ(text(cv::Mat(1, 1, CV_16FC4)), "f: image: CV_16FC4 given, 8-bit grey image expected");
  EXPECT_NE(text(cv::Mat(3, sizes, CV_8UC1)), "nothing");
}

TEST(Require, Range) {
  const auto text = [](long long value, long long least, long long most) {
    return thrownText<Refusal>([&] { requireRange("f", "bits", value, least, most); });
  };
  for (const long long value : {2, 5, 31}) EXPECT_EQ(text(value, 2, 31), "nothing");
  EXPECT_EQ(text(1, 2, 31), "f: bits: 1 given, 2 to 31 expected");
  EXPECT_EQ(text(32, 2, 31), "f: bits: 32 given, 2 to 31 expected");
  EXPECT_EQ(text(LLONG_MIN, 0, 1), "f: bits: -9223372036854775808 given, 0 to 1 expected");
}

TEST(Require, DescribesEveryDepth) {
  const char* const names[] = {"CV_8UC1",  "CV_8SC2",  "CV_16UC3", "CV_16SC4",
                               "CV_32SC1", "CV_32FC5", "CV_64FC1", "CV_16FC1"};
  const int types[] = {CV_8UC1, CV_8SC2, CV_16UC3, CV_16SC4, CV_32SC1, CV_32FC(5), CV_64FC1, CV_16FC1};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(describe(cv::Mat(1, 1, types[i])), names[i]);
}

}  // namespace
