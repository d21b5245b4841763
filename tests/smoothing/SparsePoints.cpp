#include <MirelAlgorithms/smoothing/SparsePoints.h>
#include <gtest/gtest.h>
#include <support/Matrices.h>
#include <support/SettingsOf.h>

#include <cmath>
#include <limits>
#include <opencv2/flann.hpp>
#include <set>
#include <tuple>
#include <vector>

using namespace MirelAlgorithms;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();

SmartPtr<AttrContainer> sparseSettings(int mode, int mostPoints, int leastPoints) {
  return settingsOf(
      {{L"smoothSparseMode", mode}, {L"smoothSparseMaxPts", mostPoints}, {L"smoothSparseMinPts", leastPoints}});
}

void keepNearMedian(const cv::Mat& in, cv::Mat& out) {
  const cv::RNG before = cv::theRNG();
  cv::theRNG() = cv::RNG(0x12345678);
  cv::Mat positions = in.colRange(2, 4).clone();
  cv::flann::Index index(positions, cv::flann::KDTreeIndexParams(4), cvflann::FLANN_DIST_L2);
  for (int i = 0; i < in.rows; ++i) {
    std::vector<int> found;
    std::vector<float> distances, values;
    int n = index.radiusSearch(positions.row(i), found, distances, 0.1, 10, cv::flann::SearchParams(32, 0, true));
    n = std::min(n, 10);
    if (n < 6) continue;
    for (int k = 0; k < n; ++k) values.push_back(in.at<float>(found[static_cast<std::size_t>(k)], 4));
    std::partial_sort(values.begin(), values.begin() + n / 2 + 1, values.end());
    if (std::abs(in.at<float>(i, 4) - values[static_cast<std::size_t>(n / 2)]) < 0.1) out.push_back(in.row(i));
  }
  cv::theRNG() = before;
}

void keepLowerOfCell(const cv::Mat& cell, int divisor, cv::Mat& out) {
  if (cell.rows < 6) return;
  cv::Mat least, most;
  cv::reduce(cell, least, 0, cv::REDUCE_MIN);
  cv::reduce(cell, most, 0, cv::REDUCE_MAX);
  const cv::Mat s = most - least;
  if (s.at<float>(4) > 0.2 || s.at<float>(2) > 0.2 || s.at<float>(3) > 0.2) return;
  if (std::abs(s.at<float>(2) - s.at<float>(3)) > 0.1) return;
  double mean = 0;
  for (int j = 0; j < cell.rows; ++j) mean += cell.at<float>(j, 4);
  mean /= cell.rows;
  int k = 0;
  for (int j = 0; j < cell.rows; ++j)
    if (mean >= cell.at<float>(j, 4) && ++k % divisor != 1) out.push_back(cell.row(j));
}

// Rows whose cell is not a number are left out: each is alone.
void keepLowerOfCells(const cv::Mat& in, int mostPoints, int divisor, cv::Mat& out) {
  cv::Vec2f least(infinity, infinity), most = -least;
  for (int i = 0; i < in.rows; ++i)
    for (int k = 0; k < 2; ++k) {
      const float at = in.at<float>(i, k);
      if (at < least[k]) least[k] = at;
      if (at > most[k]) most[k] = at;
    }
  const float x0 = least[0], y0 = least[1];
  const float ex = most[0] - x0, ey = most[1] - y0, c = std::sqrt(ex * ey / static_cast<float>(mostPoints));
  const float cw = ex * c / ey, ch = ey * c / ex;
  using Record = std::tuple<float, float, int>;
  std::multiset<Record> records;
  for (int i = 0; i < in.rows; ++i) {
    const float x = std::floor((in.at<float>(i, 0) - x0) / cw) * cw + x0;
    const float y = std::floor((in.at<float>(i, 1) - y0) / ch) * ch + y0;
    if (!std::isnan(x) && !std::isnan(y)) records.insert({x, y, i});
  }
  for (auto r = records.begin(); r != records.end();) {
    const auto [x, y, first] = *r;
    cv::Mat cell;
    for (; r != records.end() && std::get<0>(*r) == x && std::get<1>(*r) == y; ++r)
      cell.push_back(in.row(std::get<2>(*r)));
    keepLowerOfCell(cell, divisor, out);
  }
}

void keepEvery(const cv::Mat& in, int k, long long most, cv::Mat& out) {
  if (in.rows / k > most)
    while (k < 20)
      if (in.rows / ++k <= most) break;
  for (int i = 0; i < in.rows; i += k) out.push_back(in.row(i));
}

cv::Mat literal(const cv::Mat& in, int mode, int mostPoints) {
  cv::Mat out;
  if (mode == 0x2000) keepNearMedian(in, out);
  if (mode == 0x3000) keepLowerOfCells(in, mostPoints, 1, out);
  if (mode == 0x4000) keepLowerOfCells(in, mostPoints, 2, out);
  if (mode == 0x5000) keepEvery(in, 1, 2LL * mostPoints, out);
  if (mode == 0x6000) keepEvery(in, 4, mostPoints, out);
  if (mode == 0x1000) out = in.clone();
  return out;
}

// A view of six columns: places in the plane, at borders of cells or anywhere, positions within `side`, values on few
// steps so that many are equal.
cv::Mat randomPoints(int rows, float origin, float side, cv::RNG& random, bool atBorders = false) {
  cv::Mat points = cv::Mat(rows, 9, CV_32FC1, cv::Scalar(9)).colRange(2, 8);
  const float step = random.uniform(0.1f, 0.5f);
  const auto place = [&](float most) {
    return atBorders ? step * static_cast<float>(random.uniform(0, 11)) : random.uniform(0.0f, most);
  };
  for (int i = 0; i < rows; ++i) {
    float* row = points.ptr<float>(i);
    row[0] = origin + place(3);
    row[1] = -origin + place(2);
    row[2] = random.uniform(0.0f, side);
    row[3] = random.uniform(0.0f, side);
    row[4] = static_cast<float>(random.uniform(0, atBorders ? 8 : 12)) / 50;
    row[5] = static_cast<float>(i);
  }
  points.at<float>(0, 0) = origin - 0.02f;  // the first and the last row count for the ranges
  points.at<float>(rows - 1, 1) = 2.02f - origin;
  return points;
}

TEST(SparsePoints, EqualsTheLiteralSteps) {
  cv::RNG random(7);
  int kept[16] = {};
  for (const int rows : {1, 5, 40, 700, 3000})
    for (const float origin : {0.0f, 1e6f})  // far out, many corners of cells round to one
      for (const float side : {0.15f, 6.0f})
        for (const int mostPoints : {40, 300, 0, -5, std::numeric_limits<int>::max()}) {
          const cv::Mat points = randomPoints(rows, origin, side, random);
          for (const int mode : {0x2000, 0x3000, 0x4000, 0x5000, 0x6000, 0x1000}) {
            const cv::Mat wanted = literal(points, mode, mostPoints);
            const auto settings = sparseSettings(mode | 0x30123, mostPoints, rows / 5);
            const std::uint64_t generator = cv::theRNG().state;
            cv::Mat out = points, again = points.clone();
            EXPECT_EQ(smoothSparse3D(points, out, settings), wanted.rows >= rows / 5);
            EXPECT_TRUE(same(out, wanted)) << rows << " rows, mode " << mode << ", aim " << mostPoints;
            smoothSparse3D(again, again, settings);
            EXPECT_TRUE(same(again, wanted)) << "in place, mode " << mode;
            EXPECT_EQ(cv::theRNG().state, generator);
            EXPECT_NE(out.data, points.data);
            kept[mode >> 12] += out.rows;
          }
        }
  for (const int method : {2, 3, 4, 5, 6}) EXPECT_GT(kept[method], 400) << method;
}

// At borders of cells every rounding counts.
TEST(SparsePoints, HostilePointsAreTakenAsTheyAre) {
  cv::RNG random(8);
  const auto expectLiteral = [](const cv::Mat& points, int mode, int mostPoints) {
    cv::Mat out;
    smoothSparse3D(points, out, sparseSettings(mode, mostPoints, 0));
    EXPECT_TRUE(same(out, literal(points, mode, mostPoints))) << "mode " << mode;
  };
  for (int cloud = 0; cloud < 200; ++cloud) expectLiteral(randomPoints(1500, 0, 0.15f, random, true), 0x3000, 100);
  for (const float hostile : {notANumber, infinity, -infinity, 0.1f})
    for (const int column : {0, 1, 2, 3})
      for (const int share : {1, 9, 200}) {
        SCOPED_TRACE(testing::Message() << hostile << " in " << column << ", every " << share);
        cv::Mat points = randomPoints(500, 0, 0.15f, random);
        for (int i = share - 1; i < points.rows; i += share) points.at<float>(i, column) = hostile;
        for (const int mode : {0x2000, 0x3000, 0x4000}) expectLiteral(points, mode, 30);
      }
}

TEST(SparsePoints, NeighboursOnTheCircle) {
  cv::Mat points = cv::Mat::zeros(6, 5, CV_32FC1), out;
  points.col(2).rowRange(1, 6) = std::sqrt(0.1f);  // its square is 0.1f to the bit
  smoothSparse3D(points, out, sparseSettings(0x2000, 50, 0));
  EXPECT_TRUE(same(out, points));
}

// Bytes of another type are read as floats, from rows at any address.
TEST(SparsePoints, OtherTypesAreReadAsFloats) {
  cv::RNG random(10);
  const cv::Mat points = randomPoints(600, 0, 0.15f, random).colRange(0, 5).clone();
  cv::Mat bytes(points.rows, 21, CV_8UC1, cv::Scalar(1));
  for (int i = 0; i < points.rows; ++i) std::memcpy(bytes.ptr(i), points.ptr(i), 20);
  for (const int mode : {0x2000, 0x3000, 0x5000}) {
    cv::Mat out;
    smoothSparse3D(bytes, out, sparseSettings(mode, 50, 0));
    const cv::Mat wanted = literal(points, mode, 50);
    ASSERT_EQ(out.type(), CV_8UC1);
    ASSERT_EQ(out.rows, wanted.rows);
    for (int i = 0; i < out.rows; ++i) EXPECT_EQ(std::memcmp(out.ptr(i), wanted.ptr(i), 20), 0);
  }
}

}  // namespace
