#include <MirelAlgorithms/smoothing/DenseDepth.h>
#include <MirelAlgorithms/smoothing/SparsePoints.h>
#include <support/BadInput.h>
#include <support/Matrices.h>

#include <climits>
#include <cmath>
#include <limits>

namespace MirelAlgorithms {
namespace {

cv::Mat depthImage(int rows, int cols) {
  cv::Mat image(rows, cols, CV_16UC1);
  cv::RNG(5).fill(image, cv::RNG::UNIFORM, 500, 560);
  image.at<ushort>(rows / 2, cols / 2) = 0;
  return image;
}

TEST(BadInput, smoothDenseZ16) {
  const cv::Mat image = depthImage(20, 30), view = oddView(image), wide(1, 8000, CV_16UC1, cv::Scalar(1));
  cv::Mat out(2, 3, CV_8UC3, cv::Scalar(1, 2, 3));
  BadInput pairs("smoothDenseZ16");
  pairs.keep(out, image, view);
  const auto dense = [](int mode, int window) {
    return settingsOf({{L"smoothDenseMode", mode}, {L"smoothDenseRadius", window}});
  };
  const int cube[] = {4, 4, 4};
  const std::pair<const char*, cv::Mat> images[] = {{"no image", {}},
                                                    {"image without rows", cv::Mat(0, 9, CV_16UC1)},
                                                    {"image without columns", cv::Mat(9, 0, CV_16UC1)},
                                                    {"8 bits", cv::Mat::ones(9, 9, CV_8UC1)},
                                                    {"signed", cv::Mat::ones(9, 9, CV_16SC1)},
                                                    {"32 bits", cv::Mat::ones(9, 9, CV_32SC1)},
                                                    {"floats", cv::Mat::ones(9, 9, CV_32FC1)},
                                                    {"half floats", cv::Mat(9, 9, CV_16FC1, cv::Scalar(1))},
                                                    {"three channels", cv::Mat::ones(9, 9, CV_16UC3)},
                                                    {"volume", cv::Mat(3, cube, CV_16UC1, cv::Scalar(1))}};
  for (const int mode : {0, 1}) {
    const std::string kind = mode == 1 ? ", non-local means" : "";
    for (const auto& [name, bad] : images)
      pairs.expect(
          name + kind, "false", [&, bad = bad] { return smoothDenseZ16(bad, out, dense(mode, 5)); }, bad);
    for (const int window : {4, 2, 0, -1, -3, INT_MAX - 1, INT_MIN})
      pairs.expect("window " + std::to_string(window) + kind, "false",
                   [&] { return smoothDenseZ16(image, out, dense(mode, window)); });
    pairs.expect("window as large as int" + kind,
                 mode == 0 ? "OpenCV error -215"
                           : refused + "smoothDenseZ16: smoothDenseRadius: 2147483647 given, 1 to 181 expected",
                 [&] { return smoothDenseZ16(image, out, dense(mode, INT_MAX)); });
  }
  for (const int window : {7, 9, 99})
    pairs.expect("median of window " + std::to_string(window), "OpenCV error -215",
                 [&] { return smoothDenseZ16(image, out, dense(0, window)); });
  pairs.expect("sums of windows beyond int",
               refused + "smoothDenseZ16: smoothDenseRadius: 183 given, 1 to 181 expected",
               [&] { return smoothDenseZ16(image, out, dense(1, 183)); });
  pairs.expect("sums of rows beyond int", refused + "smoothDenseZ16: columns of in: 8000 given, 1 to 7283 expected",
               [&] { return smoothDenseZ16(wide, out, dense(1, 181)); });

  const auto smoothed = [](const cv::Mat& in, const Settings& settings) {
    cv::Mat result;
    smoothDenseZ16(in, result, settings);
    return result;
  };
  pairs.expect("window larger than the image", "true",
               [&] { return same(smoothed(depthImage(2, 2), dense(0, 5)), cv::Mat::zeros(2, 2, CV_16UC1)); });
  pairs.expect("view with odd row starts", "true", [&] { return same(smoothed(view, {}), smoothed(image, {})); });
  pairs.expect("settings of other types: the defaults", "true",
               [&] { return same(smoothed(image, settingsOfOtherTypes()), smoothed(image, dense(0, 5))); });
  pairs.expect("no settings: the defaults", "true",
               [&] { return same(smoothed(image, {}), smoothed(image, dense(0, 5))); });
  for (const int mode : {0, 1}) {
    pairs.expect("output is the input, mode " + std::to_string(mode), "true", [&] {
      cv::Mat both = image.clone();
      smoothDenseZ16(both, both, dense(mode, 3));
      return same(both, smoothed(image, dense(mode, 3)));
    });
    pairs.expect("output overlaps the input, mode " + std::to_string(mode), "true", [&] {
      cv::Mat all(21, 30, CV_16UC1), in = all.rowRange(0, 20), shifted = all.rowRange(1, 21);
      image.copyTo(in);
      const cv::Mat wanted = smoothed(in.clone(), dense(mode, 3));
      smoothDenseZ16(in.clone(), shifted, dense(mode, 3));
      if (!same(shifted, wanted)) return false;
      image.copyTo(in);
      smoothDenseZ16(in, shifted, dense(0, 3));
      return same(shifted, smoothed(image, dense(0, 3)));
    });
  }
}

cv::Mat pointList(int rows, int columns = 5) {
  cv::Mat points(rows, columns, CV_32FC1);
  cv::RNG(9).fill(points, cv::RNG::UNIFORM, 0.0, 0.15);
  return points;
}

TEST(BadInput, smoothSparse3D) {
  const cv::Mat points = pointList(1000);
  BadInput pairs("smoothSparse3D");
  pairs.keep(points);
  const auto sparse = [](int mode, int mostPoints, int leastPoints) {
    return settingsOf(
        {{L"smoothSparseMode", mode}, {L"smoothSparseMaxPts", mostPoints}, {L"smoothSparseMinPts", leastPoints}});
  };
  const auto reduced = [&](const cv::Mat& in, const Settings& settings) {
    cv::Mat out(4, 4, CV_8UC1);
    const bool enough = smoothSparse3D(in, out, settings);
    return std::string(enough ? "true, " : "false, ") + std::to_string(out.rows) + " rows";
  };
  const std::pair<const char*, cv::Mat> lists[] = {{"no list", {}},
                                                   {"no rows", cv::Mat(0, 5, CV_32FC1)},
                                                   {"no columns", cv::Mat(200, 0, CV_32FC1)},
                                                   {"four columns", pointList(200, 4)},
                                                   {"one column of five channels", cv::Mat(200, 1, CV_32FC(5))},
                                                   {"too few rows", pointList(99)}};
  for (const int mode : {0x2000, 0x3000, 0x4000, 0x5000, 0x6000, 0, -0x1000})
    for (const auto& [name, list] : lists)
      pairs.expect(
          std::string(name) + ", mode " + std::to_string(mode), "false, 0 rows",
          [&, bad = list] { return reduced(bad, sparse(mode, 15000, bad.empty() ? -1 : 100)); }, list);
  cv::Mat out(2, 3, CV_8UC3, cv::Scalar(1, 2, 3));
  for (const auto& [found, type] :
       {std::pair("CV_8UC1", CV_8UC1), {"CV_8SC1", CV_8SC1}, {"CV_16UC1", CV_16UC1}, {"CV_8UC3", CV_8UC3}})
    pairs.expect(
        std::string("rows of fewer than 20 bytes, ") + found,
        refused + "smoothSparse3D: in: " + found + " given, rows of at least five floats expected",
        [&, type = type] { return smoothSparse3D(cv::Mat::ones(200, 5, type), out, {}); }, out);

  constexpr float nan = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();
  for (const auto& [name, bad] : {std::pair("nan", nan), {"inf", infinity}, {"-inf", -infinity}}) {
    cv::Mat spoilt = points.clone();
    spoilt.col(4) = bad;
    // Infinite values have no spread that is a number, and none is above their mean.
    for (const auto& [mode, rows] :
         {std::pair(0x2000, "false, 0 rows"), {0x3000, "true, 995 rows"}, {0x4000, "true, 492 rows"}})
      pairs.expect(
          "values " + std::string(name) + ", mode " + std::to_string(mode), std::isnan(bad) ? "false, 0 rows" : rows,
          [&, mode = mode] { return reduced(spoilt, sparse(mode, 30, 1)); }, spoilt);
  }
  cv::Mat equal = points.clone();
  equal.col(0) = 1.0f;
  using Alone = std::tuple<const char*, cv::Mat, int>;
  for (const auto& [name, list, most] : {Alone("equal x", equal, 30), Alone("no cells", points, 0),
                                         Alone("cells below 0", points, -5), Alone("least cells", points, INT_MIN)})
    pairs.expect(std::string(name) + ": every row alone", "false, 0 rows",
                 [&, list = list, most = most] { return reduced(list, sparse(0x3000, most, 1)); });
  for (const auto& [most, rows] : {std::pair(0, 50), {-1, 50}, {INT_MIN, 50}, {INT_MAX, 1000}})
    pairs.expect("every k-th row, aim " + std::to_string(most), "true, " + std::to_string(rows) + " rows",
                 [&, most = most] { return reduced(points, sparse(0x5000, most, 1)); });
  pairs.expect("bits above the mode's", "true, 1000 rows",
               [&] { return reduced(points, sparse(INT_MIN | 0x5000, 15000, 1)); });
  pairs.expect("settings of other types: the defaults", reduced(points, sparse(0x4000, 15000, 100)),
               [&] { return reduced(points, settingsOfOtherTypes()); });
  pairs.expect("no settings: the defaults", reduced(points, sparse(0x4000, 15000, 100)),
               [&] { return reduced(points, {}); });
  for (const int mode : {0x2000, 0x3000, 0x4000, 0x5000, 0}) {
    const Settings settings = sparse(mode, 40, 1);
    pairs.expect("view with odd row starts, mode " + std::to_string(mode), "true", [&] {
      cv::Mat ofView, ofCopy;
      smoothSparse3D(oddView(points), ofView, settings);
      smoothSparse3D(points, ofCopy, settings);
      return !ofCopy.empty() && same(ofView, ofCopy);
    });
    pairs.expect("output is the input, mode " + std::to_string(mode), "true", [&] {
      cv::Mat both = points.clone(), shared = points, ofCopy;
      smoothSparse3D(points, ofCopy, settings);
      smoothSparse3D(both, both, settings);
      smoothSparse3D(points, shared, settings);
      return same(both, ofCopy) && same(shared, ofCopy) && shared.data != points.data;
    });
  }
}

}  // namespace
}  // namespace MirelAlgorithms
