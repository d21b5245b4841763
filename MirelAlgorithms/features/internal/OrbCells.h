/// ORB in cells of an image.
#pragma once

#include <MirelAlgorithms/features/internal/CellDetector.h>
#include <MirelAlgorithms/features/internal/OrbPyramid.h>

namespace MirelAlgorithms {

/// Makes the pyramid and finds its FAST corners once; choosing among the corners is up to each cell. Key points are
/// completed with position, size and angle: up to then they are in pixels of their level.
class OrbCells : public CellDetector {
 public:
  /// Not covered: pyramids with enlarged levels or hardly any step, edge thresholds that let measures reach beyond a
  /// level, and parameters of extreme size.
  static bool covers(const cv::ORB& orb);

  OrbCells(const cv::ORB& orb, const cv::Mat& image);
  std::vector<cv::KeyPoint> detect(const cv::Rect& cell) override;
  void complete(std::vector<cv::KeyPoint>& keyPoints) const override;

 private:
  std::vector<cv::KeyPoint> strongestOf(const OrbLevel& level, const cv::Rect& cell) const;

  std::vector<OrbLevel> levels_;
  std::vector<int> disc_;
  int patchSize_;
  bool harris_;
};

}  // namespace MirelAlgorithms
