#include <MirelAlgorithms/matching/internal/SpatialOrder.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <opencv2/core.hpp>
#include <tuple>

namespace MirelAlgorithms {
namespace {

using Order = std::vector<std::int32_t>;

double pathLength(const std::vector<cv::KeyPoint>& points, const Order& order) {
  double length = 0;
  for (std::size_t i = 1; i < order.size(); ++i)
    length +=
        cv::norm(points[static_cast<std::size_t>(order[i])].pt - points[static_cast<std::size_t>(order[i - 1])].pt);
  return length;
}

TEST(SpatialOrder, NeighboursFollowEachOther) {
  for (const auto& [width, height, share] : {std::tuple{640.f, 480.f, 0.2}, {40.f, 3000.f, 0.1}, {900.f, 0.f, 0.02}}) {
    cv::RNG random(3);
    std::vector<cv::KeyPoint> points;
    for (int i = 0; i < 1000; ++i)
      points.emplace_back(random.uniform(0.f, width), height * random.uniform(0.f, 1.f), 7.f);
    Order listed(points.size());
    std::iota(listed.begin(), listed.end(), 0);
    const Order order = spatialOrder(points, 8);
    EXPECT_TRUE(std::is_permutation(order.begin(), order.end(), listed.begin(), listed.end()));
    EXPECT_LT(pathLength(points, order), share * pathLength(points, listed)) << width << " x " << height;
  }
}

TEST(SpatialOrder, WhatIsNowhereComesLast) {
  constexpr float infinity = std::numeric_limits<float>::infinity();
  std::vector<cv::KeyPoint> points;
  for (const cv::Point2f p : {cv::Point2f(NAN, 1), {5, 5}, {infinity, 2}, {1, 1}, {2, -infinity}, {3, 9}})
    points.emplace_back(p, 7.f);
  const Order order = spatialOrder(points, 2);
  EXPECT_EQ(Order(order.begin() + 3, order.end()), (Order{0, 2, 4}));
}

}  // namespace
}  // namespace MirelAlgorithms
