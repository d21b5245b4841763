#include <MirelAlgorithms/matching/MotionEstimate.h>
#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cfloat>
#include <cmath>
#include <random>

using namespace MirelAlgorithms;

namespace {

using Points = std::vector<SVec2d>;

const Points fivePoints{{10, 20}, {300, 40}, {250, 260}, {30, 210}, {120, 90}};

template <class Motion>
Points moved(const Points& points, const Motion& motion) {
  Points result;
  for (const SVec2d& p : points) result.push_back(motion(p));
  return result;
}

SVec2d mapped(const Eigen::Matrix3d& h, const SVec2d& p) {
  const Eigen::Vector3d q = h * Eigen::Vector3d(p.x, p.y, 1.0);
  return {q.x() / q.z(), q.y() / q.z()};
}

Points randomPoints(std::mt19937& random, int count) {
  std::uniform_real_distribution<double> column(0.0, 640.0), row(0.0, 480.0);
  Points points;
  for (int i = 0; i < count; ++i) points.emplace_back(column(random), row(random));
  return points;
}

void expectNear(const SVec2d& point, const SVec2d& expected, double tolerance) {
  EXPECT_NEAR(point.x, expected.x, tolerance);
  EXPECT_NEAR(point.y, expected.y, tolerance);
}

TEST(MotionEstimate, HomographyIsRecoveredBesideOutliers) {
  std::mt19937 random(73);
  std::normal_distribution<double> noise(0.0, 0.2);
  Eigen::Matrix3d truth;
  truth << 1.02, -0.04, 12.0, 0.05, 0.97, -8.0, 3e-5, -2e-5, 1.0;
  const Points from = randomPoints(random, 200);
  Points to = moved(from, [&](const SVec2d& p) { return mapped(truth, p); });
  for (SVec2d& p : to) p = {p.x + noise(random), p.y + noise(random)};
  for (int i = 0; i < 200; i += 20) to[i] = {to[i].x + 60.0, to[i].y - 45.0};

  const MotionEstimate motion = MotionEstimate::estimate(from, to, {});
  ASSERT_TRUE(motion.isValid());
  EXPECT_EQ(motion.points, 200);
  EXPECT_EQ(motion.factor, 1.0);
  EXPECT_EQ(motion.matrix[8], 1.0);
  EXPECT_GE(motion.outlierRows, 20);
  EXPECT_GT(motion.meanResidual, 3.0);
  EXPECT_LT(motion.meanInlierResidual, 0.35);
  for (const SVec2d& p : {SVec2d(0, 0), SVec2d(320, 240), SVec2d(640, 480)})
    expectNear(motion.apply(p), mapped(truth, p), 0.3);

  // All figures are those of the inverse of the stored matrix, scaled to a last element of 1.
  using RowMajor = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
  Eigen::Matrix3d g = Eigen::Matrix3d(Eigen::Map<const RowMajor>(motion.matrix)).inverse();
  g /= g(2, 2);
  EXPECT_NEAR(motion.translation, std::hypot(g(0, 2), g(1, 2)), 1e-9);
  EXPECT_NEAR(motion.rotation, -std::atan2(g(0, 1), g(0, 0)), 1e-9);
  EXPECT_NEAR(motion.deviation, (g - Eigen::Matrix3d::Identity()).norm(), 1e-9);
  EXPECT_NEAR(motion.scale, Eigen::Matrix2d(g.topLeftCorner<2, 2>()).jacobiSvd().singularValues().mean(), 1e-9);
}

TEST(MotionEstimate, PairsWithoutWeightDoNotCount) {
  std::mt19937 random(74);
  const Points from = randomPoints(random, 40);
  Points to = moved(from, [](const SVec2d& p) { return SVec2d(p.x * 1.1 + 4.0, p.y * 1.1 - 1.0); });
  std::vector<double> weights(40, 2.0);
  for (int i = 0; i < 15; ++i) {
    to[i] = {500.0 - to[i].x, 3.0 * to[i].y};
    weights[i] = 0.0;
  }
  const MotionEstimate motion = MotionEstimate::estimate(from, to, weights);
  expectNear(motion.apply(SVec2d(100, 100)), {114.0, 109.0}, 1e-6);
  EXPECT_GT(motion.meanResidual, 10.0);
}

TEST(MotionEstimate, CentreIsComputedWhenItIsTooLargeToBeOne) {
  const Points to = moved(fivePoints, [](const SVec2d& p) { return SVec2d(p.x * 1.2, p.y + 0.1 * p.x); });
  const MotionEstimate expected = MotionEstimate::estimate(fivePoints, to, {});
  EXPECT_DOUBLE_EQ(expected.center[0], (142.0 + 142.0 * 1.2) / 2.0);
  EXPECT_DOUBLE_EQ(expected.center[1], (124.0 + 124.0 + 14.2) / 2.0);
  for (const SVec2d& center : {SVec2d(FLT_MAX, 0.0), SVec2d(0.0, FLT_MAX), SVec2d(DBL_MAX, DBL_MAX)}) {
    const MotionEstimate motion = MotionEstimate::estimate(fivePoints, to, {}, center);
    EXPECT_EQ(motion.center[0], expected.center[0]);
    EXPECT_EQ(motion.deviation, expected.deviation);
  }
  const double below = std::nextafter(static_cast<double>(FLT_MAX), 0.0);
  EXPECT_NE(MotionEstimate::estimate(fivePoints, to, {}, SVec2d(below, 0.0)).center[0], expected.center[0]);
  const MotionEstimate given = MotionEstimate::estimate(fivePoints, to, {}, SVec2d(30.0, -7.0));
  EXPECT_EQ(SVec2d(given.center[0], given.center[1]), SVec2d(30.0, -7.0));
  for (int i = 0; i < 5; ++i) expectNear(given.apply(fivePoints[i]), to[i], 1e-9);
}

TEST(MotionEstimate, FloatsGiveWhatTheSameDoublesGive) {
  std::mt19937 random(75);
  std::vector<cv::Vec2f> from, to;
  Points from64, to64;
  for (const SVec2d& p : randomPoints(random, 30)) {
    from.emplace_back(cv::Vec2d(p.x, p.y));
    to.emplace_back(cv::Vec2d(p.x * 0.9 + 7.0, p.y * 0.9));
    from64.emplace_back(from.back()[0], from.back()[1]);
    to64.emplace_back(to.back()[0], to.back()[1]);
  }
  const MotionEstimate motion = MotionEstimate::estimate(from, to, {});
  const MotionEstimate expected = MotionEstimate::estimate(from64, to64, {});
  EXPECT_TRUE(std::equal(motion.matrix, motion.matrix + 9, expected.matrix));
  EXPECT_EQ(motion.meanInlierResidual, expected.meanInlierResidual);
  const SVec2d there = motion.apply(SVec2d(77.0, 99.0));
  EXPECT_EQ(motion.apply(cv::Vec2f(77.0f, 99.0f)), cv::Vec2f(cv::Vec2d(there.x, there.y)));
}

TEST(MotionEstimate, ResetIsNoMotion) {
  MotionEstimate motion = MotionEstimate::estimate(fivePoints, fivePoints, {});
  ASSERT_TRUE(motion.isValid());
  motion.reset();
  EXPECT_FALSE(motion.isValid());
  EXPECT_EQ(motion.deviation, DBL_MAX);
}

TEST(MotionEstimate, AppliesElevenNumbers) {
  const double matrixAndCenter[] = {2, 0, 1, 0, 3, -1, 0.5, 0, 1, 10, 20};
  EXPECT_EQ(MotionEstimate::apply(matrixAndCenter, SVec2d(12.0, 21.0)), SVec2d(10.0 + 5.0 / 2.0, 20.0 + 2.0 / 2.0));
  EXPECT_EQ(MotionEstimate::motionQ(), 3.5);
}

}  // namespace
