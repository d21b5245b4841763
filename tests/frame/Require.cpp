#include <MirelAlgorithms/frame/internal/Require.h>
#include <gtest/gtest.h>

#include <utility>

namespace {

TEST(Require, DescribesEveryDepth) {
  for (const auto& [type, name] : {std::pair(CV_8UC1, "CV_8UC1"),
                                   {CV_8SC2, "CV_8SC2"},
                                   {CV_16UC3, "CV_16UC3"},
                                   {CV_16SC4, "CV_16SC4"},
                                   {CV_32SC1, "CV_32SC1"},
                                   {CV_32FC(5), "CV_32FC5"},
                                   {CV_64FC1, "CV_64FC1"},
                                   {CV_16FC1, "CV_16FC1"}})
    EXPECT_EQ(MirelAlgorithms::describe(cv::Mat(1, 1, type)), name);
}

}  // namespace
