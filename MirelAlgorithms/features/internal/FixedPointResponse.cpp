#include <MirelAlgorithms/features/internal/EigenValue.h>
#include <MirelAlgorithms/features/internal/FixedPointResponse.h>
#include <MirelAlgorithms/features/internal/MatrixDump.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace MirelAlgorithms {
namespace {

/// Three matrices of one stage, x, y and mixed.
struct Products {
  cv::Mat xx, yy, xy;
};

/// 8-bit grey times 2^shift, rounded, saturating at 16 bits.
cv::Mat widenLuma(const cv::Mat& image, int shift) {
  cv::Mat table(1, 256, CV_16UC1), luma;
  for (int grey = 0; grey < 256; ++grey)
    table.at<ushort>(grey) = static_cast<ushort>(std::nearbyint(std::min(std::ldexp(grey, shift), 65535.0)));
  cv::LUT(image, table, luma);
  return luma;
}

cv::Mat gradient(const cv::Mat& luma, int dx, int dy, const FixedPointStages& stages) {
  cv::Mat result;
  cv::Sobel(luma, result, CV_64F, dx, dy, stages.aperture, std::ldexp(1.0, -stages.sobelShift), 0.0,
            cv::BORDER_CONSTANT | cv::BORDER_ISOLATED);
  scaleAndFloor(result, 1.0);
  return result;
}

cv::Mat product(const cv::Mat& a, const cv::Mat& b, int shift) {
  cv::Mat result = a.mul(b);
  if (shift != 0) scaleAndFloor(result, std::ldexp(1.0, -shift));
  return result;
}

cv::Mat blockSum(const cv::Mat& products, int block, int shift) {
  cv::Mat result;
  cv::boxFilter(products, result, CV_64F, cv::Size(block, block), cv::Point(-1, -1), false, cv::BORDER_REFLECT_101);
  if (shift != 0) scaleAndFloor(result, std::ldexp(1.0, -shift));
  return result;
}

void dump(const Products& products, const std::string& prefix) {
  cvMatToTxt(products.xx, prefix + "xx_q.txt");
  cvMatToTxt(products.yy, prefix + "yy_q.txt");
  cvMatToTxt(products.xy, prefix + "xy_q.txt");
}

}  // namespace

void scaleAndFloor(cv::Mat& matrix, double factor) {
  matrix.forEach<double>([factor](double& value, const int*) { value = std::floor(factor * value); });
}

double wholeImageResponse(const cv::Mat& image, const FixedPointStages& stages, cv::Mat& response) {
  const StageSettings& width = stages.width;
  const std::string prefix = width.dump.prefix.stringAnsi();

  const cv::Mat luma = widenLuma(image, width.lumaShift);
  const cv::Mat dx = gradient(luma, 1, 0, stages), dy = gradient(luma, 0, 1, stages);
  if (width.dumpSobel) {
    cvMatToTxt(dx, prefix + "sobeldx_q.txt");
    cvMatToTxt(dy, prefix + "sobeldy_q.txt");
  }

  const int productShift = stages.productShift;
  const Products products{product(dx, dx, productShift), product(dy, dy, productShift), product(dx, dy, productShift)};
  if (width.dumpProducts) dump(products, prefix + "grad");

  const auto sum = [&](const cv::Mat& of) { return blockSum(of, stages.block, stages.blockShift); };
  Products sums{sum(products.xx), sum(products.yy), sum(products.xy)};
  if (width.dumpBlocks) dump(sums, prefix + "covar");

  for (cv::Mat* matrix : {&sums.xx, &sums.yy, &sums.xy}) matrix->convertTo(*matrix, CV_32S);
  return calcMinEigenValue(sums.xx, sums.yy, sums.xy, response, width.eigenWidthIn, width.eigenWidthOut);
}

double cornerMinEigenValFpga(const cv::Mat& image, const FixedPointStages& stages, cv::Mat& response) {
  logStages(stages);
  return canFuse(image, stages) ? fusedResponse(image, stages, response) : wholeImageResponse(image, stages, response);
}

}  // namespace MirelAlgorithms
