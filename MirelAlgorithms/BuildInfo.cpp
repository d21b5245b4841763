#include <MirelAlgorithms/BuildInfo.h>
#include <MirelAlgorithms/frame/internal/CpuVariant.h>

#include <opencv2/core/utility.hpp>

namespace MirelAlgorithms {

BuildInfo buildInfo() {
  static const std::string openCV = cv::getVersionString();
  return {MIREL_VERSION, openCV.c_str(), MIREL_HAS_XFEATURES2D != 0, name(cpuVariant())};
}

}  // namespace MirelAlgorithms
