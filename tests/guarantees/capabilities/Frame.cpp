#include "../Capabilities.h"

namespace MirelAlgorithms {
namespace {

std::uint64_t clock(const Inputs&) {
  const double first = timestamp0(), now = timestamp(), later = timestamp();
  const std::uint64_t milliseconds = timestampMS();
  return Digest()(first ==
                  timestamp0())(first <= now)(now <= later)(static_cast<double>(milliseconds) / 1000 > now - 2);
}

std::uint64_t facts(const Inputs&) {
  Digest digest;
  digest(std::string(buildInfo().version))(std::string(buildInfo().openCV))(buildInfo().xfeatures2d);
  for (const SettingInfo& info : settingsCatalogue()) digest(info.key)(info.meaning)(info.readBy);
  return digest;
}

}  // namespace

std::vector<Capability> frameCapabilities() {
  return {
      {"frame_clock", clock},
      {"frame_facts", facts},
  };
}

}  // namespace MirelAlgorithms
