// Compiled in the place of the module's latch.cpp, which it contains.
#include "latch.cpp"  // NOLINT(bugprone-suspicious-include)

#include <MirelAlgorithms/features/internal/LatchModule.h>

namespace {

using Latch = cv::xfeatures2d::LATCHDescriptorExtractorImpl;

const std::vector<int>& samplingPointsOf(const Latch& latch);

// The table is a protected member of a final class. Access is not checked in the arguments of an explicit
// instantiation ([temp.spec.general]), and the friend passes on what these arguments name.
template <std::vector<int> Latch::*member>
struct Opened {
  friend const std::vector<int>& samplingPointsOf(const Latch& latch) { return latch.*member; }
};
template struct Opened<&Latch::sampling_points_>;

}  // namespace

namespace cv::xfeatures2d {

// In the module's namespace and after its includes, so that `cos` and `sin` name the functions that it calls.
static MirelAlgorithms::LatchModule::Rotation rotationOf(float angle) {
  angle *= (float)(CV_PI / 180.f);
  float cosine = cos(angle);  // NOLINT(performance-type-promotion-in-math-fn)
  float sine = sin(angle);    // NOLINT(performance-type-promotion-in-math-fn)
  return {cosine, sine};
}

}  // namespace cv::xfeatures2d

namespace MirelAlgorithms::LatchModule {

const std::vector<int>& samplingPoints(const cv::xfeatures2d::LATCH& latch) {
  return samplingPointsOf(static_cast<const Latch&>(latch));
}

Rotation rotation(float angle) { return cv::xfeatures2d::rotationOf(angle); }

}  // namespace MirelAlgorithms::LatchModule
