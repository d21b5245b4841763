#include <MirelAlgorithms/Host.h>
#include <MirelAlgorithms/features/internal/CellBalancedDetection.h>
#include <MirelAlgorithms/features/internal/CellDetector.h>
#include <MirelAlgorithms/features/internal/Detectors.h>
#include <MirelAlgorithms/frame/internal/Require.h>

#include <algorithm>
#include <cstdint>

namespace MirelAlgorithms {
namespace {

// Origins 0, step, 2 step ... below length - step / 2.
std::vector<int> cellOrigins(int length, int step) {
  std::vector<int> origins;
  for (int origin = 0; origin < length - step / 2; origin += step) origins.push_back(origin);
  return origins;
}

// A cell that leaves the image is OpenCV's region error.
std::vector<cv::Rect> cellsOf(const cv::Mat& image, int cellsPerSide) {
  const int width = image.cols / cellsPerSide;
  const int height = image.rows / cellsPerSide;
  std::vector<cv::Rect> cells;
  for (const int y : cellOrigins(image.rows, height))
    for (const int x : cellOrigins(image.cols, width)) cells.emplace_back(x, y, width, height);
  for (const cv::Rect& cell : cells) static_cast<void>(image(cell));
  return cells;
}

void keepStrongest(std::vector<cv::KeyPoint>& keyPoints, std::size_t quota) {
  if (keyPoints.size() <= quota) return;
  std::stable_sort(keyPoints.begin(), keyPoints.end(),
                   [](const cv::KeyPoint& a, const cv::KeyPoint& b) { return a.response > b.response; });
  keyPoints.resize(quota);
}

std::size_t quotaPerCell(const DetectionSettings& settings) {
  const std::int64_t cells = static_cast<std::int64_t>(settings.cells) * settings.cells;
  return static_cast<std::size_t>(std::max<std::int64_t>(settings.budget / cells, 0));
}

}  // namespace

std::vector<cv::KeyPoint> detectInCells(const cv::Mat& image, cv::Feature2D& detector, int cellsPerSide,
                                        const QuotaRule& keepQuota) {
  const std::vector<cv::Rect> cells = cellsOf(image, cellsPerSide);
  const auto detectorOfCells = createCellDetector(detector, image);
  std::vector<cv::KeyPoint> all;
  for (const cv::Rect& cell : cells) {
    std::vector<cv::KeyPoint> inCell = detectorOfCells->detect(cell);
    keepQuota(inCell);
    detectorOfCells->complete(inCell);
    all.insert(all.end(), inCell.begin(), inCell.end());
  }
  return all;
}

std::vector<cv::KeyPoint> detectInCells(const char* function, const cv::Mat& image, cv::Feature2D& detector,
                                        const DetectionSettings& settings) {
  requireRange(function, "FBMnCells", settings.cells, 1, std::min(image.rows, image.cols));
  const std::size_t quota = quotaPerCell(settings);
  if (quota == 0) {
    cellsOf(image, settings.cells);  // a cell that leaves the image is an error all the same
    return {};
  }
  return detectInCells(image, detector, settings.cells,
                       [quota](std::vector<cv::KeyPoint>& keyPoints) { keepStrongest(keyPoints, quota); });
}

std::vector<cv::KeyPoint> detectOrbSubPixel(const char* function, const cv::Mat& image,
                                            const DetectionSettings& settings) {
  std::vector<cv::KeyPoint> keyPoints = detectInCells(function, image, *createOrb(), settings);
  MirelCore::subPixel({image}, 0, keyPoints);
  return keyPoints;
}

}  // namespace MirelAlgorithms
