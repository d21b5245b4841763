#include <MirelAlgorithms/Host.h>
#include <MirelAlgorithms/SettingsCatalogue.h>
#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

using namespace MirelAlgorithms;

namespace {

// What users' containers rely on: other defaults give other results for the same input. Floating-point numbers have
// all their digits.
const char promised[] =
    "retrieveFeatures: FBMnCells 3, FBMnFeatures 900, FBMType 0, FBMFeatureType 3\n"
    "retrieveFeatures, detection in cells: FBMEnhancement 80000, FBMnCells 3, FBMnFeatures 2000\n"
    "retrieveFeatures, key points: DescLengthBytes 16, PatchSize 3\n"
    "retrieveFeaturesFPGA: FBMEnhancement 90000, UseBilateralFilter false, FBMBlockSize 5, FBMSobelSize 3, "
    "FBMFpgaQuantized false, FBMLumaLeftShift 4, FBMSobelWidthOut 15, FBMWriteSobel false, FBMWorkDir '.\\', "
    "FBMGradMultWidthOut 17, FBMWriteGradMult false, FBMCovarWidthOut 14, FBMWriteCovar false, FBMEigenValWidthIn 12, "
    "FBMEigenValWidthOut 12, FBMWriteEigenvals false, FBMExtractionModel 'SingleMaximum7x7Patch', FBMnCells 3, "
    "FBMnFeatures 900, FBMUseAutoThreshold false\n"
    "retrieveDescriptors: FBMType 0, FBMEnhancement 80000, FBMDescriptorType 0, DescLengthBytes 16, PatchSize 3\n"
    "smoothDenseZ16: smoothDenseMode 0, smoothDenseRadius 5\n"
    "smoothSparse3D: smoothSparseMode 16384, smoothSparseMaxPts 15000, smoothSparseMinPts 100\n"
    "textureExtract, textureMatch: txmORBmaxFeatures 500, txmORBscaleFactor 1.2000000476837158, txmORBnLevels 8, "
    "txmORBedgeThreshold 31, txmORBfirstLevel 0, txmORBWTA_K 2, txmORBscoreType 0, txmORBpatchSize 31, "
    "txmORBfastThreshold 20\n"
    "textureExtract: txmToGray 80000, txmCells 3, txmMaxKeys 400\n"
    "textureMatch: txmUniquenessRatio 0.80000000000000004, txmMaxKeyDist 500.00000000000000, "
    "txmReprojectionError 3.0000000000000000\n"
    "textureExtractAndMatch: txmDraw -1\n"
    "textureMultiMatch: txmMinMultipicity 2\n";

TEST(SettingsCatalogue, keysTypesAndDefaultsStay) {
  std::ostringstream found;
  found << std::boolalpha << std::showpoint << std::setprecision(17);
  std::string readBy;
  for (const SettingInfo& info : settingsCatalogue()) {
    found << (readBy == info.readBy ? ", " : (readBy.empty() ? "" : "\n") + info.readBy + ": ");
    found << String(info.key.c_str()).stringAnsi() << ' ';
    if (const auto* text = std::get_if<std::wstring>(&info.fallback))
      found << '\'' << String(text->c_str()).stringAnsi() << '\'';
    else
      std::visit(
          [&](const auto& value) {
            if constexpr (std::is_arithmetic_v<std::decay_t<decltype(value)>>) found << value;
          },
          info.fallback);
    readBy = info.readBy;
    EXPECT_FALSE(info.meaning.empty());
  }
  EXPECT_EQ(found.str() + "\n", promised);
}

}  // namespace
