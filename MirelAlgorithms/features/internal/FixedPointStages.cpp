#include <MirelAlgorithms/features/internal/EigenValue.h>
#include <MirelAlgorithms/features/internal/FixedPointStages.h>
#include <MirelAlgorithms/frame/internal/Log.h>
#include <MirelAlgorithms/frame/internal/Require.h>

#include <cmath>
#include <stdexcept>
#include <string>

namespace MirelAlgorithms {
namespace {

constexpr int grayBits = 8;
constexpr int mostBits = 512;  // worst cases, which are squares of these, stay finite

double powerOfTwo(int exponent) { return std::ldexp(1.0, exponent); }

void requireWidth(const char* key, int bits, int least = 1) {
  requireRange("retrieveFeaturesFPGA", key, bits, least, least + mostBits - 1);
}

void logStage(const wchar_t* format, int in, int shift, int out) {
  MIREL_LOG("FeatureExtraction.cpp", "cornerMinEigenValFpga", LogLevel::diagnostic, format, in, shift, out);
}

}  // namespace

double sobelGain(int aperture) {
  if (aperture == 3) return 4.0;
  if (aperture == 5) return 48.0;
  throw std::runtime_error("Unsupported Sobel size " + std::to_string(aperture) + ". Supported: 3, 5");
}

int rightShift(double largest, int width) {
  const double limit = powerOfTwo(width - 1);
  return largest > limit ? static_cast<int>(std::ceil(std::log2(largest / limit))) : 0;
}

FixedPointStages fixedPointStages(const ResponseSettings& response, const StageSettings& width) {
  const double gain = sobelGain(response.sobelSize);
  requireWidth("FBMLumaLeftShift", width.lumaShift, 1 - grayBits);
  requireWidth("FBMSobelWidthOut", width.sobelWidth);
  requireWidth("FBMGradMultWidthOut", width.productWidth);
  requireWidth("FBMCovarWidthOut", width.blockWidth);
  requireEigenWidths(width.eigenWidthIn, width.eigenWidthOut);

  FixedPointStages stages{response.sobelSize, response.blockSize, width, grayBits + width.lumaShift, 0, 0, 0};
  const double gradientLimit = powerOfTwo(width.sobelWidth - 1);
  const double productLimit = powerOfTwo(width.productWidth - 1);
  stages.sobelShift = rightShift((powerOfTwo(stages.lumaWidth) - 1.0) * gain, width.sobelWidth);
  stages.productShift = rightShift(gradientLimit * gradientLimit, width.productWidth);
  stages.blockShift = rightShift(response.blockSize * productLimit * response.blockSize, width.blockWidth);
  return stages;
}

void logStages(const FixedPointStages& stages) {
  const StageSettings& width = stages.width;
  logStage(L"LUMA  in/lshift/out (bit): %d/%d/%d", grayBits, width.lumaShift, stages.lumaWidth);
  logStage(L"SOBEL in/rshift/out (bit): %d/%d/%d", stages.lumaWidth, stages.sobelShift, width.sobelWidth);
  logStage(L"GRADM in/rshift/out (bit): %d/%d/%d", width.sobelWidth, stages.productShift, width.productWidth);
  logStage(L"COVAR in/rshift/out (bit): %d/%d/%d", width.productWidth, stages.blockShift, width.blockWidth);
  MIREL_LOG("FeatureExtraction.cpp", "cornerMinEigenValFpga", LogLevel::diagnostic, L"EIGEN in/out (bit): %d/%d",
            width.eigenWidthIn, width.eigenWidthOut);
}

}  // namespace MirelAlgorithms
