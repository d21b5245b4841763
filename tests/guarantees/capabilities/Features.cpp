#include <support/SettingsOf.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "../Capabilities.h"

namespace MirelAlgorithms {
namespace {

/// What the call puts out, or what it says: builds without OpenCV's xfeatures2d refuse LATCH and FREAK.
template <class Call>
std::uint64_t digestOf(const Call& call) {
  Digest digest;
  try {
    call(digest);
  } catch (const std::runtime_error& refusal) {
    digest(std::string(refusal.what()));
  }
  return digest;
}

std::uint64_t corners(const Inputs& in, const Settings& settings) {
  cv::Mat features;
  const auto map = std::make_shared<cv::Mat>();
  retrieveFeaturesFPGA(in.grey, features, settings, map);
  return Digest()(features)(*map);
}

std::uint64_t floatingPointCorners(const Inputs& in) { return corners(in, {}); }

std::uint64_t fixedPointCorners(const Inputs& in) {
  const Settings settings = settingsOf({{L"FBMBlockSize", 7}});
  settings->set(L"FBMFpgaQuantized", true);
  settings->set(L"UseBilateralFilter", true);
  settings->set(L"FBMUseAutoThreshold", true);
  return corners(in, settings);
}

std::uint64_t dumpedCorners(const Inputs& in) {
  const ObjFile folder("");
  std::filesystem::remove(folder.name());
  std::filesystem::create_directory(folder.name());
  const Settings settings(new AttrContainer());
  const std::string prefix = folder.name() + std::string("/");
  settings->set(L"FBMFpgaQuantized", true);
  settings->set(L"FBMWorkDir", std::wstring(prefix.begin(), prefix.end()).c_str());
  settings->set(L"FBMWriteSobel", true);
  settings->set(L"FBMWriteEigenvals", true);
  cv::Mat features;
  retrieveFeaturesFPGA(in.grey(cv::Rect(0, 0, in.side / 4, in.side / 4)), features, settings, nullptr);
  Digest digest;
  for (const char* name : {"sobeldx_q.txt", "sobeldy_q.txt", "eigenVals_q.txt"}) {
    std::ostringstream text;
    text << std::ifstream(prefix + name).rdbuf();
    digest(text.str());
  }
  std::filesystem::remove_all(folder.name());
  return digest;
}

std::uint64_t features(const Inputs& in, const Settings& settings, bool descriptors) {
  return digestOf([&](Digest& digest) {
    cv::Mat features;
    digest(retrieveFeatures(in.grey, features, settings, descriptors))(features);
  });
}

template <int detector>
std::uint64_t detected(const Inputs& in) {
  return features(in, settingsOf({{L"FBMType", 2}, {L"FBMFeatureType", detector}}), false);
}

std::uint64_t detectedAndDescribed(const Inputs& in) {
  return features(in, settingsOf({{L"FBMType", 2}, {L"FBMDescriptorType", 4}}), true);
}

std::uint64_t refined(const Inputs& in) { return features(in, settingsOf({{L"FBMType", 1}}), false); }

std::uint64_t keyPointsWithLatch(const Inputs& in) {
  return digestOf([&](Digest& digest) {
    std::vector<cv::KeyPoint> keyPoints;
    cv::Mat descriptors;
    digest(retrieveFeatures(in.grey, keyPoints, descriptors, settingsOf({{L"FBMType", 1}})))(keyPoints)(descriptors);
  });
}

template <int type, int family>
std::uint64_t described(const Inputs& in) {
  return digestOf([&](Digest& digest) {
    cv::Mat features = in.features.clone(), descriptors;
    const Settings settings = settingsOf({{L"FBMType", type}, {L"FBMDescriptorType", family}});
    digest(retrieveDescriptors(in.grey, features, descriptors, settings))(features)(descriptors);
  });
}

std::uint64_t scalingOrb(const Inputs& in) {
  unsigned char patch[32];
  MirelScalingORB::getNormalizedPatchDescriptor(in.grey(cv::Rect(3, 5, 33, 41)), patch, 32);
  return Digest()(MirelScalingORB(in.grey).getDescriptors(in.keyPoints))(cv::Mat(1, 32, CV_8UC1, patch));
}

}  // namespace

std::vector<Capability> featuresCapabilities() {
  return {
      {"corners_floatingPoint", floatingPointCorners},
      {"corners_fixedPoint", fixedPointCorners},
      {"corners_dumped", dumpedCorners},
      {"features_gftt", detected<0>},
      {"features_akaze", detected<1>},
      {"features_mser", detected<2>},
      {"features_orb", detected<3>},
      {"features_brisk", detected<5>},
      {"features_described", detectedAndDescribed},
      {"features_refined", refined},
      {"features_latch", keyPointsWithLatch},
      {"descriptors_fixedPoint", described<0, 0>},
      {"descriptors_latch", described<1, 0>},
      {"descriptors_freak", described<2, 2>},
      {"descriptors_brisk", described<2, 3>},
      {"descriptors_orb", described<2, 4>},
      {"descriptors_scalingOrb", scalingOrb},
  };
}

}  // namespace MirelAlgorithms
