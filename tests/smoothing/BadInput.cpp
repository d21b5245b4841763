#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/smoothing/DenseDepth.h>
#include <MirelAlgorithms/smoothing/SparsePoints.h>
#include <support/BadInput.h>
#include <support/Matrices.h>

#include <climits>
#include <limits>

namespace MirelAlgorithms {
namespace {

TEST(BadInput, smoothDenseZ16) {
  const cv::Mat wide(1, 8000, CV_16UC1, cv::Scalar(1));
  cv::Mat image, out(2, 3, CV_8UC3, cv::Scalar(1, 2, 3));
  noise(20, 30, 5).convertTo(image, CV_16U);
  BadInput pairs("smoothDenseZ16");
  pairs.keep(out, image);
  const auto dense = [](int mode, int window) {
    return settingsOf({{L"smoothDenseMode", mode}, {L"smoothDenseRadius", window}});
  };
  const int cube[] = {4, 4, 4};
  const std::pair<const char*, cv::Mat> images[] = {{"no image", {}},
                                                    {"image without columns", cv::Mat(9, 0, CV_16UC1)},
                                                    {"8 bits", cv::Mat::ones(9, 9, CV_8UC1)},
                                                    {"signed", cv::Mat::ones(9, 9, CV_16SC1)},
                                                    {"three channels", cv::Mat::ones(9, 9, CV_16UC3)},
                                                    {"volume", cv::Mat(3, cube, CV_16UC1, cv::Scalar(1))}};
  for (const auto& bad : images)
    pairs.expect(
        bad.first, "false", [&] { return smoothDenseZ16(bad.second, out, {}); }, bad.second);
  const std::string given = refused + "smoothDenseZ16: smoothDenseRadius: ", widest = " given, 1 to 181 expected";
  struct Row {
    int mode, window;
    std::string outcome;
  };
  for (const Row& row :
       {Row{0, 4, "false"}, Row{0, 0, "false"}, Row{0, -1, "false"}, Row{0, INT_MIN, "false"},
        Row{0, 7, "OpenCV error -215"}, Row{0, INT_MAX, "OpenCV error -215"}, Row{1, 4, "false"}, Row{1, -1, "false"},
        Row{1, 183, given + "183" + widest}, Row{1, INT_MAX, given + "2147483647" + widest}})
    pairs.expect("window " + std::to_string(row.window) + ", mode " + std::to_string(row.mode), row.outcome,
                 [&] { return smoothDenseZ16(image, out, dense(row.mode, row.window)); });
  pairs.expect("sums of rows beyond int", refused + "smoothDenseZ16: columns of in: 8000 given, 1 to 7283 expected",
               [&] { return smoothDenseZ16(wide, out, dense(1, 181)); });

  const auto smoothed = [](const cv::Mat& in, const Settings& settings) {
    cv::Mat result;
    smoothDenseZ16(in, result, settings);
    return result;
  };
  for (const Settings& settings : {Settings(), settingsOfOtherTypes()})
    pairs.expect(settings ? "settings of other types: the defaults" : "no settings: the defaults", "true",
                 [&] { return same(smoothed(image, settings), smoothed(image, dense(0, 5))); });
  pairs.expect("output overlaps the input", "true", [&] {
    cv::Mat all(21, 30, CV_16UC1), in = all.rowRange(0, 20), shifted = all.rowRange(1, 21);
    image.copyTo(in);
    smoothDenseZ16(in, shifted, dense(0, 3));
    return same(shifted, smoothed(image, dense(0, 3)));
  });
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
                                                   {"no columns", cv::Mat(200, 0, CV_32FC1)},
                                                   {"four columns", pointList(200, 4)},
                                                   {"one column of five channels", cv::Mat(200, 1, CV_32FC(5))},
                                                   {"too few rows", pointList(99)}};
  for (const auto& bad : lists)
    for (const int mode : {0x2000, 0x5000, 0})
      pairs.expect(
          std::string(bad.first) + ", mode " + std::to_string(mode), "false, 0 rows",
          [&] { return reduced(bad.second, sparse(mode, 15000, bad.second.empty() ? -1 : 100)); }, bad.second);
  cv::Mat out(2, 3, CV_8UC3, cv::Scalar(1, 2, 3));
  for (const int type : {CV_8SC1, CV_8UC3}) {
    const cv::Mat narrow = cv::Mat::ones(200, 5, type);
    pairs.expect(
        "rows of fewer than 20 bytes, " + describe(narrow),
        refused + "smoothSparse3D: in: " + describe(narrow) + " given, rows of at least five floats expected",
        [&] { return smoothSparse3D(narrow, out, {}); }, out);
  }

  constexpr float nan = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();
  struct Row {
    const char* defect;
    int column;
    float value;
    int mode, mostPoints;
    const char* outcome;
  };
  // Infinite values have no spread that is a number, and none is above their mean.
  for (const Row& row : {Row{"values not numbers, median", 4, nan, 0x2000, 30, "false, 0 rows"},
                         Row{"values not numbers, cells", 4, nan, 0x3000, 30, "false, 0 rows"},
                         Row{"infinite values, median", 4, infinity, 0x2000, 30, "false, 0 rows"},
                         Row{"infinite values, cells", 4, infinity, 0x3000, 30, "true, 995 rows"},
                         Row{"infinite values, half the cells", 4, -infinity, 0x4000, 30, "true, 492 rows"},
                         Row{"equal x: every row alone", 0, 1.0f, 0x3000, 30, "false, 0 rows"},
                         Row{"least cells: every row alone", 3, 0.1f, 0x3000, INT_MIN, "false, 0 rows"},
                         Row{"every k-th row, least aim", 0, 1.0f, 0x5000, INT_MIN, "true, 50 rows"},
                         Row{"every k-th row, largest aim", 0, 1.0f, 0x5000, INT_MAX, "true, 1000 rows"},
                         Row{"bits above the mode's", 0, 1.0f, INT_MIN | 0x5000, 15000, "true, 1000 rows"}}) {
    cv::Mat spoilt = points.clone();
    spoilt.col(row.column) = row.value;
    pairs.expect(
        row.defect, row.outcome, [&] { return reduced(spoilt, sparse(row.mode, row.mostPoints, 1)); }, spoilt);
  }
  for (const Settings& settings : {Settings(), settingsOfOtherTypes()})
    pairs.expect(settings ? "settings of other types: the defaults" : "no settings: the defaults",
                 reduced(points, sparse(0x4000, 15000, 100)), [&] { return reduced(points, settings); });
}

}  // namespace
}  // namespace MirelAlgorithms
