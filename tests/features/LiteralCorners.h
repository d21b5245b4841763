/// Corner detection in plain loops: every value computed on its own, from the definition, in the simplest way.
/// What the library's forms are compared with, bit for bit.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <ostream>
#include <string>
#include <vector>

namespace literal {

struct Settings {
  int block = 5, aperture = 3;
  int lumaShift = 4, sobelWidth = 15, productWidth = 17, blockWidth = 14, eigenIn = 12, eigenOut = 12;
  std::string test = "SingleMaximum7x7Patch";
  int cells = 3, budget = 900;
  bool autoThreshold = false;
};

inline std::ostream& operator<<(std::ostream& out, const Settings& s) {
  return out << "block " << s.block << " aperture " << s.aperture << " luma << " << s.lumaShift << " widths "
             << s.sobelWidth << ' ' << s.productWidth << ' ' << s.blockWidth << ' ' << s.eigenIn << ' ' << s.eigenOut;
}

struct Response {
  cv::Mat_<double> map;
  double largest = 0.0;
};

// Response map -------------------------------------------------------------------------------------------------------

inline double power(double exponent) { return std::pow(2.0, exponent); }

inline double floorShift(double value, int shift) { return std::floor(value * power(-shift)); }

inline int rightShift(double largest, int width) {
  const double limit = power(width - 1);
  return largest > limit ? static_cast<int>(std::ceil(std::log2(largest / limit))) : 0;
}

/// Reflected without repeating the edge, as often as it takes.
inline int reflect(int i, int n) {
  while (n > 1 && (i < 0 || i >= n)) i = i < 0 ? -i : 2 * n - 2 - i;
  return n > 1 ? i : 0;
}

inline int needOf(double value, int bits) {
  const double most = power(bits - 1) - 1.0, least = -power(bits - 1);
  if (value > most) return static_cast<int>(std::ceil(std::log2(value / most)));
  if (value < least) return static_cast<int>(std::ceil(std::log2(value / least)));
  return 0;
}

/// Unsaturated response of one pixel.
inline double eigenValue(double xx, double yy, double xy, int bits) {
  const int shift = std::max({needOf(xx, bits), needOf(yy, bits), needOf(xy, bits)});
  const double a = floorShift(xx, shift), b = floorShift(yy, shift), c = floorShift(xy, shift), d = a - b;
  const double e = std::round(a + b - std::sqrt(4.0 * c * c + d * d));
  return e > 0.0 ? e * power(shift) : 0.0;
}

/// A response as the 32-bit integer that holds its unsigned bits.
inline double stored(double value, int width) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(std::min(value, power(width) - 1.0)));
}

inline Response fixedPointResponse(const cv::Mat& image, const Settings& s) {
  const int rows = image.rows, cols = image.cols, h = s.aperture / 2;
  const std::vector<double> smooth =
      s.aperture == 3 ? std::vector<double>{1, 2, 1} : std::vector<double>{1, 4, 6, 4, 1};
  const std::vector<double> slope =
      s.aperture == 3 ? std::vector<double>{-1, 0, 1} : std::vector<double>{-1, -2, 0, 2, 1};
  const auto luma = [&](int y, int x) {
    if (y < 0 || x < 0 || y >= rows || x >= cols) return 0.0;
    return std::min(std::nearbyint(image.at<uchar>(y, x) * power(s.lumaShift)), 65535.0);
  };

  const int lumaWidth = 8 + s.lumaShift;
  const double gain = s.aperture == 3 ? 4.0 : 48.0, gradientLimit = power(s.sobelWidth - 1);
  const int sobelShift = rightShift((power(lumaWidth) - 1.0) * gain, s.sobelWidth);
  const int productShift = rightShift(gradientLimit * gradientLimit, s.productWidth);
  const int blockShift = rightShift(s.block * power(s.productWidth - 1) * s.block, s.blockWidth);

  cv::Mat_<cv::Vec3d> products(rows, cols);
  for (int y = 0; y < rows; ++y)
    for (int x = 0; x < cols; ++x) {
      double dx = 0.0, dy = 0.0;
      for (int i = -h; i <= h; ++i)
        for (int j = -h; j <= h; ++j) {
          dx += smooth[i + h] * slope[j + h] * luma(y + i, x + j);
          dy += slope[i + h] * smooth[j + h] * luma(y + i, x + j);
        }
      dx = floorShift(dx, sobelShift);
      dy = floorShift(dy, sobelShift);
      products(y, x) = {floorShift(dx * dx, productShift), floorShift(dy * dy, productShift),
                        floorShift(dx * dy, productShift)};
    }

  Response response{cv::Mat_<double>(rows, cols), 0.0};
  for (int y = 0; y < rows; ++y)
    for (int x = 0; x < cols; ++x) {
      cv::Vec3d sum;
      for (int i = 0; i < s.block; ++i)
        for (int j = 0; j < s.block; ++j)
          sum += products(reflect(y + i - s.block / 2, rows), reflect(x + j - s.block / 2, cols));
      for (double& value : sum.val) value = floorShift(value, blockShift);
      const double value = eigenValue(sum[0], sum[1], sum[2], s.eigenIn);
      response.map(y, x) = stored(value, s.eigenOut);
      response.largest = std::max(response.largest, value);
    }
  return response;
}

inline Response floatResponse(const cv::Mat& image, const Settings& s) {
  cv::Mat map;
  Response response;
  cv::cornerMinEigenVal(image, map, s.block, s.aperture, cv::BORDER_REFLECT_101);
  cv::minMaxLoc(map, nullptr, &response.largest);
  map.convertTo(response.map, CV_64F);
  return response;
}

/// Divided by the maximum; all zeros when that is 0.
inline cv::Mat_<float> normalised(const Response& response) {
  const double factor = response.largest != 0.0 ? 1.0 / response.largest : 0.0;
  cv::Mat_<float> map(response.map.size());
  for (int y = 0; y < map.rows; ++y)
    for (int x = 0; x < map.cols; ++x) map(y, x) = static_cast<float>(response.map(y, x) * factor);
  return map;
}

// Candidates ---------------------------------------------------------------------------------------------------------

inline constexpr int weights[7][7] = {{3, 3, 3, 3, 3, 3, 3}, {3, 2, 2, 2, 2, 2, 2}, {3, 2, 1, 1, 0, 1, 2},
                                      {3, 2, 1, 0, 0, 1, 2}, {3, 2, 1, 0, 0, 1, 2}, {3, 2, 1, 1, 1, 1, 2},
                                      {3, 2, 2, 2, 2, 2, 2}};
inline constexpr double c0[5][5] = {
    {-52, 8, 28, 8, -52}, {8, 68, 88, 68, 8}, {28, 88, 108, 88, 28}, {8, 68, 88, 68, 8}, {-52, 8, 28, 8, -52}};
inline constexpr double c3[5] = {20, -10, -20, -10, 20};

inline bool isMaximum(const cv::Mat_<float>& map, int x, int y, const std::string& test) {
  const float centre = map(y, x);
  const bool single = test == "SingleMaximum7x7Patch", ring = test == "AverageRingMask";
  for (int i = -3; i <= 3; ++i)
    for (int j = -3; j <= 3; ++j) {
      const float neighbour = map(y + i, x + j);
      if ((single || ring) && (i != 0 || j != 0) && neighbour >= centre) return false;
      if (!single && !ring && weights[i + 3][j + 3] * 0.000244140625 + neighbour > centre) return false;
    }
  if (!ring) return true;
  cv::Mat mask(7, 7, CV_8UC1, cv::Scalar(255));
  mask(cv::Rect(1, 1, 5, 5)) = 0;
  cv::Scalar mean, deviation;
  cv::meanStdDev(map(cv::Rect(x - 3, y - 3, 7, 7)), mean, deviation, mask);
  return centre >= 0.0 && centre > mean[0] + 3.0 * deviation[0];
}

inline std::vector<cv::KeyPoint> candidates(const cv::Mat_<float>& map, const std::string& test) {
  std::vector<cv::KeyPoint> found;
  double largestPeak = -HUGE_VAL, largestCurvature = 0.0;
  for (int y = 8; y < map.rows - 8; ++y)
    for (int x = 8; x < map.cols - 8; ++x) {
      if (!isMaximum(map, x, y, test)) continue;
      double c[6] = {};
      for (int i = -2; i <= 2; ++i)
        for (int j = -2; j <= 2; ++j) {
          const double e = map(y + i, x + j);
          const double kernel[6] = {c0[i + 2][j + 2], 14.0 * j, 14.0 * i, c3[j + 2], c3[i + 2], 7.0 * j * i};
          for (int k = 0; k < 6; ++k) c[k] += kernel[k] * e;
        }
      const double den = 4.0 * c[3] * c[4] - c[5] * c[5];
      const double dx = (c[2] * c[5] - 2.0 * c[1] * c[4]) / den, dy = (c[1] * c[5] - 2.0 * c[2] * c[3]) / den;
      if (!(-1.5 < dx && dx < 1.5 && -1.5 < dy && dy < 1.5)) continue;
      const double p = c[0] + c[1] * dx + c[2] * dy + c[5] * dx * dy + c[3] * (dx * dx) + c[4] * (dy * dy);
      largestPeak = std::max(largestPeak, p);
      largestCurvature = std::max(largestCurvature, std::abs(c[3]));
      found.emplace_back(static_cast<float>(x + dx), static_cast<float>(y + dy), 15.0f, static_cast<float>(c[3]),
                         static_cast<float>(p));
    }
  for (cv::KeyPoint& k : found) {
    k.angle = static_cast<float>(180.0 / largestCurvature * k.angle);
    k.response = static_cast<float>(k.response / largestPeak);
  }
  std::sort(found.begin(), found.end(), [](const cv::KeyPoint& a, const cv::KeyPoint& b) {
    if (a.response != b.response) return a.response > b.response;
    return a.pt.y != b.pt.y ? a.pt.y < b.pt.y : a.pt.x < b.pt.x;
  });
  return found;
}

// Selection ----------------------------------------------------------------------------------------------------------

/// The first of a list, up to the budget and to its share for each cell.
template <class Eligible>
std::vector<cv::KeyPoint> take(const std::vector<cv::KeyPoint>& sorted, const cv::Size& image, int side, int budget,
                               const Eligible& eligible) {
  const int quota = budget / side / side;
  std::vector<int> counts(side * side);
  std::vector<cv::KeyPoint> taken;
  for (const cv::KeyPoint& k : sorted) {
    const int row = static_cast<int>(static_cast<float>(side) * k.pt.y / static_cast<float>(image.height));
    const int column = static_cast<int>(static_cast<float>(side) * k.pt.x / static_cast<float>(image.width));
    const int cell = row * side + column;
    if (cell < 0 || cell >= side * side || counts[cell] >= quota || !eligible(k, counts[cell], quota)) continue;
    ++counts[cell];
    taken.push_back(k);
    if (static_cast<int>(taken.size()) >= budget) break;
  }
  return taken;
}

inline double meanOfPass(const std::vector<cv::KeyPoint>& sorted, const cv::Size& image, int side, int budget,
                         double least) {
  double sum = 0.0;
  const auto taken =
      take(sorted, image, side, budget, [&](const cv::KeyPoint& k, int, int) { return k.response >= least; });
  for (const cv::KeyPoint& k : taken) sum += k.response;
  return taken.empty() ? 0.0 : sum / static_cast<double>(taken.size());
}

inline std::vector<cv::KeyPoint> select(const std::vector<cv::KeyPoint>& sorted, const cv::Size& image,
                                        const Settings& s) {
  double threshold = 0.0;
  if (s.autoThreshold) {
    const double mean = meanOfPass(sorted, image, s.cells, 8 * s.budget, -HUGE_VAL);
    threshold = meanOfPass(sorted, image, s.cells, 8 * s.budget / 2, mean);
  }
  return take(sorted, image, s.cells, s.budget, [&](const cv::KeyPoint& k, int count, int quota) {
    return k.response >= threshold || count <= quota / 3;
  });
}

}  // namespace literal
