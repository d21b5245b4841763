#include <MirelAlgorithms/features/internal/CellDetector.h>
#include <MirelAlgorithms/features/internal/Detectors.h>
#include <MirelAlgorithms/features/internal/OrbCells.h>
#include <features/DetectionTest.h>
#include <gtest/gtest.h>

#include <cstring>

namespace MirelAlgorithms {
namespace {

bool same(const std::vector<cv::KeyPoint>& a, const std::vector<cv::KeyPoint>& b) {
  return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(a[0])) == 0);
}

// Every whole cell against the masked detector; returns the number of key points.
std::size_t compareCells(const cv::Mat& image, cv::Feature2D& detector, int cells) {
  const int width = image.cols / cells, height = image.rows / cells;
  const auto inCells = createCellDetector(detector, image);
  std::size_t found = 0;
  for (int i = 0; i < cells * cells; ++i) {
    const cv::Rect cell(i % cells * width, i / cells * height, width, height);
    const auto expected = detectMasked(detector, image, cell);
    auto keyPoints = inCells->detect(cell);
    inCells->complete(keyPoints);
    EXPECT_TRUE(same(keyPoints, expected)) << image.size() << " " << cell << " " << expected.size();
    found += expected.size();
  }
  return found;
}

std::size_t compareDetectors(const cv::Mat& image, int cells) {
  std::size_t found = 0;
  for (const int featureType : {0, 1, 2, 3, 5}) {
    SCOPED_TRACE(testing::Message() << "FBMFeatureType " << featureType);
    found += compareCells(image, *createDetector(featureType), cells);
  }
  return found;
}

cv::Mat noise(int rows, int cols, int least, int end) {
  cv::Mat image(rows, cols, CV_8UC1);
  cv::RNG(9).fill(image, cv::RNG::UNIFORM, least, end);
  return image;
}

// A box whose centre, 40.5, lies on the border of two cells.
cv::Mat boxOnBorder() {
  cv::Mat image(82, 82, CV_8UC1, cv::Scalar(40));
  image(cv::Rect(37, 12, 8, 8)) = 200;
  return image;
}

// A grid of equal boxes: responses that tie.
cv::Mat boxes(int rows, int cols) {
  cv::Mat image(rows, cols, CV_8UC1, cv::Scalar(40));
  for (int y = 3; y < rows; y += 16)
    for (int x = 2; x < cols; x += 15) image(cv::Rect(x, y, 8, 9) & cv::Rect(0, 0, cols, rows)) = 200;
  return image;
}

TEST(CellDetector, equalsMaskedDetection) {
  struct Case {
    cv::Mat image;
    std::vector<int> cells;
    std::size_t least;
  };
  const cv::Mat larger = scene(190, 230, 11);
  const Case cases[] = {{scene(181, 243, 10), {1, 2, 3, 7}, 400},
                        {larger(cv::Rect(7, 9, 200, 161)), {3}, 300},  // neighbours outside the view
                        {boxes(170, 201), {2, 3, 5}, 400},
                        {boxOnBorder(), {2}, 5},
                        {noise(120, 140, 0, 256), {3}, 400},
                        {noise(70, 64, 100, 102), {4}, 50},
                        {cv::Mat(90, 90, CV_8UC1, cv::Scalar(77)), {3}, 0},
                        {noise(17, 9, 0, 256), {1, 3}, 5}};
  const int threads = cv::getNumThreads();
  int thisTime = 1;
  for (const Case& c : cases)
    for (const int cells : c.cells) {
      SCOPED_TRACE(testing::Message() << "cells " << cells << ", threads " << thisTime);
      cv::setNumThreads(thisTime);
      EXPECT_GE(compareDetectors(c.image, cells), c.least);
      if (threads > 1) thisTime = 3 - thisTime;
    }
  cv::setNumThreads(threads);
}

struct OrbCase {
  int features;
  float scaleFactor;
  int levels, edgeThreshold, firstLevel;
  cv::ORB::ScoreType score;
  int patchSize, fastThreshold;
  bool shared;
};

TEST(CellDetector, orbWithOtherParameters) {
  const auto harris = cv::ORB::HARRIS_SCORE, fast = cv::ORB::FAST_SCORE;
  const OrbCase cases[] = {{50, 1.2f, 8, 31, 0, fast, 31, 20, true},     {40, 1.2f, 3, 31, 0, harris, 31, 20, true},
                           {3, 1.5f, 4, 16, 0, harris, 24, 7, true},     {3000, 1.01f, 5, 20, 0, harris, 40, 0, true},
                           {300, 2.0f, 3, 4, 0, harris, 2, 20, true},    {300, 2.7f, 4, 9, 0, fast, 19, 40, true},
                           {200, 1.3f, 1, 12, 0, harris, 11, 20, true},  {0, 1.2f, 8, 31, 0, harris, 31, 20, true},
                           {500, 1.2f, 4, 31, 1, harris, 31, 20, false}, {500, 1.2f, 4, 6, 0, harris, 31, 20, false}};
  const cv::Mat image = scene(183, 222, 12);
  for (const OrbCase& c : cases) {
    SCOPED_TRACE(testing::Message() << "features " << c.features << ", scale factor " << c.scaleFactor);
    const auto orb = cv::ORB::create(c.features, c.scaleFactor, c.levels, c.edgeThreshold, c.firstLevel, 2, c.score,
                                     c.patchSize, c.fastThreshold);
    EXPECT_EQ(OrbCells::covers(*orb), c.shared);
    EXPECT_EQ(compareCells(image, *orb, 3) > 0, c.features > 0);
  }
}

TEST(CellDetector, otherDetectors) {
  const cv::Mat image = scene(120, 160, 13);
  const cv::Ptr<cv::Feature2D> detectors[] = {
      cv::GFTTDetector::create(0, 0.2, 0.5, 5), cv::GFTTDetector::create(7, 0.01, 1.0, 3),
      cv::GFTTDetector::create(1000, 0.01, 6.0, 3), cv::GFTTDetector::create(1000, 0.01, 1.0, 3, true, 0.04),
      cv::FastFeatureDetector::create()};
  for (const auto& detector : detectors) EXPECT_GT(compareCells(image, *detector, 3), 20u);
}

// The mask itself, scaled down as ORB does.
TEST(OrbPyramid, whitePartIsWhatStaysWhite) {
  cv::RNG random(14);
  for (const float scaleFactor : {1.2f, 1.03f, 1.5f, 2.0f, 2.6f, 3.0f})
    for (int trial = 0; trial < 300; ++trial) {
      const cv::Size size(random.uniform(110, 200), random.uniform(110, 200));
      const cv::Rect cell(random.uniform(0, 60), random.uniform(0, 60), random.uniform(1, 50), random.uniform(1, 50));
      SCOPED_TRACE(testing::Message() << size << ", scale factor " << scaleFactor << ", cell " << cell);
      cv::Mat mask(size, CV_8UC1, cv::Scalar(0));
      mask(cell) = 255;
      for (const OrbLevel& level :
           makeOrbPyramid(*cv::ORB::create(500, scaleFactor, 4), cv::Mat(size, CV_8UC1, cv::Scalar(0)))) {
        cv::resize(mask, mask, level.image.size(), 0, 0, cv::INTER_LINEAR_EXACT);
        cv::threshold(mask, mask, 254, 0, cv::THRESH_TOZERO);
        cv::Mat expected(mask.size(), CV_8UC1, cv::Scalar(0));
        expected(whitePart(level, cell)) = 255;
        ASSERT_EQ(cv::countNonZero(mask != expected), 0) << level.image.size();
      }
    }
}

}  // namespace
}  // namespace MirelAlgorithms
