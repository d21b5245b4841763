#include <support/SettingsOf.h>

#include "../Capabilities.h"

namespace MirelAlgorithms {
namespace {

template <int mode, int window>
std::uint64_t smoothDepth(const Inputs& in) {
  cv::Mat out;
  const Settings settings = settingsOf({{L"smoothDenseMode", mode}, {L"smoothDenseRadius", window}});
  return Digest()(smoothDenseZ16(in.depth, out, settings))(out);
}

template <int mode>
std::uint64_t smoothPoints(const Inputs& in) {
  cv::Mat out;
  const Settings settings = settingsOf({{L"smoothSparseMode", mode}, {L"smoothSparseMaxPts", 200}});
  return Digest()(smoothSparse3D(in.points, out, settings))(out);
}

}  // namespace

std::vector<Capability> smoothingCapabilities() {
  return {
      {"smoothing_median", smoothDepth<0, 5>},
      {"smoothing_nonLocalMeans", smoothDepth<1, 3>},
      {"smoothing_neighbours", smoothPoints<0x2000>},
      {"smoothing_grid", smoothPoints<0x3000>},
      {"smoothing_gridHalf", smoothPoints<0x4000>},
      {"smoothing_decimation", smoothPoints<0x5000>},
      {"smoothing_decimationFromFour", smoothPoints<0x6000>},
  };
}

}  // namespace MirelAlgorithms
