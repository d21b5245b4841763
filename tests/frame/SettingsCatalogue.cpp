#include <MirelAlgorithms/SettingsCatalogue.h>
#include <gtest/gtest.h>

#include <utility>

using namespace MirelAlgorithms;

namespace {

using Defaults = std::vector<std::pair<std::wstring, SettingValue>>;

std::wstring text(const wchar_t* characters) { return characters; }

// What users' containers rely on: other defaults give other results for the same input.
const std::vector<std::pair<std::string, Defaults>> promised = {
    {"retrieveFeatures", {{L"FBMnCells", 3}, {L"FBMnFeatures", 900}, {L"FBMType", 0}, {L"FBMFeatureType", 3}}},
    {"retrieveFeatures, detection in cells", {{L"FBMEnhancement", 80000}, {L"FBMnCells", 3}, {L"FBMnFeatures", 2000}}},
    {"retrieveFeatures, key points", {{L"DescLengthBytes", 16}, {L"PatchSize", 3}}},
    {"retrieveFeaturesFPGA",
     {{L"FBMEnhancement", 90000},
      {L"UseBilateralFilter", false},
      {L"FBMBlockSize", 5},
      {L"FBMSobelSize", 3},
      {L"FBMFpgaQuantized", false},
      {L"FBMLumaLeftShift", 4},
      {L"FBMSobelWidthOut", 15},
      {L"FBMWriteSobel", false},
      {L"FBMWorkDir", text(L".\\")},
      {L"FBMGradMultWidthOut", 17},
      {L"FBMWriteGradMult", false},
      {L"FBMCovarWidthOut", 14},
      {L"FBMWriteCovar", false},
      {L"FBMEigenValWidthIn", 12},
      {L"FBMEigenValWidthOut", 12},
      {L"FBMWriteEigenvals", false},
      {L"FBMExtractionModel", text(L"SingleMaximum7x7Patch")},
      {L"FBMnCells", 3},
      {L"FBMnFeatures", 900},
      {L"FBMUseAutoThreshold", false}}},
    {"retrieveDescriptors",
     {{L"FBMType", 0},
      {L"FBMEnhancement", 80000},
      {L"FBMDescriptorType", 0},
      {L"DescLengthBytes", 16},
      {L"PatchSize", 3}}},
    {"smoothDenseZ16", {{L"smoothDenseMode", 0}, {L"smoothDenseRadius", 5}}},
    {"smoothSparse3D", {{L"smoothSparseMode", 0x4000}, {L"smoothSparseMaxPts", 15000}, {L"smoothSparseMinPts", 100}}},
    {"textureExtract, textureMatch",
     {{L"txmORBmaxFeatures", 500},
      {L"txmORBscaleFactor", static_cast<double>(1.2f)},
      {L"txmORBnLevels", 8},
      {L"txmORBedgeThreshold", 31},
      {L"txmORBfirstLevel", 0},
      {L"txmORBWTA_K", 2},
      {L"txmORBscoreType", 0},
      {L"txmORBpatchSize", 31},
      {L"txmORBfastThreshold", 20}}},
    {"textureExtract", {{L"txmToGray", 80000}, {L"txmCells", 3}, {L"txmMaxKeys", 400}}},
    {"textureMatch", {{L"txmUniquenessRatio", 0.8}, {L"txmMaxKeyDist", 500.0}, {L"txmReprojectionError", 3.0}}},
    {"textureExtractAndMatch", {{L"txmDraw", -1}}},
    {"textureMultiMatch", {{L"txmMinMultipicity", 2}}},
};

TEST(SettingsCatalogue, keysTypesAndDefaultsStay) {
  std::vector<std::pair<std::string, Defaults>> found;
  for (const SettingInfo& info : settingsCatalogue()) {
    if (found.empty() || found.back().first != info.readBy) found.push_back({info.readBy, {}});
    found.back().second.push_back({info.key, info.fallback});
    EXPECT_FALSE(info.meaning.empty());
  }
  ASSERT_EQ(found.size(), promised.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    EXPECT_EQ(found[i].first, promised[i].first);
    EXPECT_EQ(found[i].second, promised[i].second) << found[i].first;
  }
}

}  // namespace
