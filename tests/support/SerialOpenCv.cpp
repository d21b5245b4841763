// For the thread sanitizer: OpenCV's own loops are not compiled for it, and would be taken for races.
#include <opencv2/core/utility.hpp>

namespace {

[[maybe_unused]] const bool serial = (cv::setNumThreads(1), true);

}  // namespace
