#include <MirelAlgorithms/features/internal/CellDetector.h>
#include <MirelAlgorithms/features/internal/FilteredCells.h>
#include <MirelAlgorithms/features/internal/GfttCells.h>
#include <MirelAlgorithms/features/internal/OrbCells.h>

namespace MirelAlgorithms {
namespace {

class MaskedCells : public CellDetector {
 public:
  MaskedCells(cv::Feature2D& detector, const cv::Mat& image)
      : detector_(detector), image_(image), mask_(cv::Mat::zeros(image.size(), CV_8UC1)) {}

  std::vector<cv::KeyPoint> detect(const cv::Rect& cell) override {
    std::vector<cv::KeyPoint> keyPoints;
    mask_(cell).setTo(255);
    detector_.detect(image_, keyPoints, mask_);
    mask_(cell).setTo(0);
    return keyPoints;
  }
  void complete(std::vector<cv::KeyPoint>&) const override {}

 private:
  cv::Feature2D& detector_;
  cv::Mat image_;
  cv::Mat mask_;
};

template <class Detector>
bool is(const cv::Feature2D& detector) {
  return dynamic_cast<const Detector*>(&detector) != nullptr;
}

}  // namespace

std::unique_ptr<CellDetector> createCellDetector(cv::Feature2D& detector, const cv::Mat& image) {
  if (is<cv::AKAZE>(detector) || is<cv::BRISK>(detector))
    return std::make_unique<FilteredCells>(detector, image, MaskRounding::halfUp);
  if (is<cv::MSER>(detector)) return std::make_unique<FilteredCells>(detector, image, MaskRounding::halfToEven);
  if (const auto* gftt = dynamic_cast<const cv::GFTTDetector*>(&detector); gftt && GfttCells::covers(*gftt))
    return std::make_unique<GfttCells>(*gftt, image);
  if (const auto* orb = dynamic_cast<const cv::ORB*>(&detector); orb && OrbCells::covers(*orb))
    return std::make_unique<OrbCells>(*orb, image);
  return std::make_unique<MaskedCells>(detector, image);
}

}  // namespace MirelAlgorithms
