#include <MirelAlgorithms/features/Descriptors.h>
#include <MirelAlgorithms/features/FeatureExtraction.h>
#include <MirelAlgorithms/features/FixedPointCorners.h>
#include <features/BadImages.h>
#include <features/CornerScenes.h>

#include <climits>
#include <cmath>

namespace MirelAlgorithms {
namespace {

std::string rowsOf(const cv::Mat& matrix) { return std::to_string(matrix.rows) + " rows"; }

cv::Mat flat(int rows, int cols) { return cv::Mat(rows, cols, CV_8UC1, cv::Scalar(7)); }

class FeatureMatrixForm : public testing::TestWithParam<int> {};

TEST_P(FeatureMatrixForm, retrieveFeatures) {
  const cv::Mat image = cornerScene(40, 50, 1);
  cv::Mat features(2, 1, CV_32FC(5));
  const auto settings = [](int cells) {
    return settingsOf({{L"FBMType", GetParam()}, {L"FBMFeatureType", 0}, {L"FBMnCells", cells}});
  };
  BadInput pairs(GetParam() == 1 ? "retrieveFeatures, FBMType 1" : "retrieveFeatures, FBMType 2");
  pairs.keep(features, image);
  const auto detect = [&](const cv::Mat& from, const Settings& chosen) {
    return retrieveFeatures(from, features, chosen, false);
  };
  const auto detected = [](const cv::Mat& from, const Settings& chosen) {
    cv::Mat found(7, 1, CV_32FC(5));
    retrieveFeatures(from, found, chosen, false);
    return found;
  };
  expectImagesRefused(pairs, "retrieveFeatures", [&](const cv::Mat& bad) { return detect(bad, settings(3)); });
  expectNumbersRefused(pairs, "retrieveFeatures", "FBMnCells", {0, 41, INT_MAX, INT_MIN}, "1 to 40",
                       [&](int cells) { return detect(image, settings(cells)); });
  for (const auto& [left, size] : {std::pair("columns", cv::Size(11, 30)), {"rows", cv::Size(30, 11)}})
    for (const int budget : {900, 0})
      pairs.expect(std::string(left) + " left over make a cell, budget " + std::to_string(budget), "OpenCV error -215",
                   [&, size = size] {
                     return detect(cornerScene(size.height, size.width, 2), with(L"FBMnFeatures", budget, settings(3)));
                   });
  for (const int budget : {8, 0, INT_MIN})
    pairs.expect("budget " + std::to_string(budget), "0 rows",
                 [&] { return rowsOf(detected(image, with(L"FBMnFeatures", budget, settings(3)))); });
  pairs.expect("one grey level", "0 rows", [&] { return rowsOf(detected(flat(40, 50), settings(3))); });
  pairs.expect("one pixel", GetParam() == 1 ? "OpenCV error -215" : "0 rows",
               [&] { return rowsOf(detected(flat(1, 1), settings(1))); });
  expectNoDifference(pairs, image, detected, settings(3), with(L"FBMnFeatures", 1e9, settings(3)));
}
INSTANTIATE_TEST_SUITE_P(BadInput, FeatureMatrixForm, testing::Values(1, 2), testing::PrintToStringParamName());

TEST(BadInput, retrieveFeatures) {
  const cv::Mat image = cornerScene(60, 70, 3);
  cv::Mat features(2, 1, CV_32FC(5));
  BadInput pairs("retrieveFeatures, other choices");
  pairs.keep(features, image);
  pairs.expect("fixed-point corners of no image",
               refused + "retrieveFeaturesFPGA: image: empty given, 8-bit grey image expected",
               [&] { return retrieveFeatures({}, features, {}, true); });
  const Settings akaze = settingsOf({{L"FBMType", 2}, {L"FBMFeatureType", 0}, {L"FBMDescriptorType", 1}});
  pairs.expect("AKAZE descriptors of foreign features", "OpenCV error -215",
               [&] { return retrieveFeatures(image, features, akaze, true); });
  expectNoDifference(pairs, image, [](const cv::Mat& from, const Settings& settings) {
    cv::Mat found;
    retrieveFeatures(from, found, settings, true);
    return found;
  });
}

TEST(BadInput, retrieveFeaturesAsKeyPoints) {
  const cv::Mat image = cornerScene(120, 130, 4);
  std::vector<cv::KeyPoint> keyPoints(2);
  cv::Mat descriptors(2, 8, CV_8UC1, cv::Scalar(5));
  BadInput pairs("retrieveFeatures as key points");
  pairs.keep(keyPoints, descriptors, image);
  const auto detect = [&](const cv::Mat& from, const Settings& settings) {
    return retrieveFeatures(from, keyPoints, descriptors, settings);
  };
  expectImagesRefused(pairs, "retrieveFeatures", [&](const cv::Mat& bad) { return detect(bad, {}); });
  expectNumbersRefused(pairs, "retrieveFeatures", "FBMnCells", {0, 121}, "1 to 120",
                       [&](int cells) { return detect(image, with(L"FBMnCells", cells)); });
  if (!WITH_XFEATURES2D) return;
  expectNumbersRefused(pairs, "retrieveFeatures", "PatchSize", {-1, 91, INT_MAX}, "0 to 90",
                       [&](int patch) { return detect(image, with(L"PatchSize", patch)); });
  for (const int bytes : {0, -1, 5, 128})
    pairs.expect("length " + std::to_string(bytes), "OpenCV error -5",
                 [&] { return detect(image, with(L"DescLengthBytes", bytes)); });
  const auto detected = [](const cv::Mat& from, const Settings& settings) {
    std::vector<cv::KeyPoint> found(3);
    cv::Mat rows(3, 8, CV_8UC1);
    retrieveFeatures(from, found, rows, settings);
    EXPECT_EQ(found.size(), std::size_t(rows.rows));
    return rows;
  };
  pairs.expect("one grey level", "0 rows", [&] { return rowsOf(detected(flat(40, 50), {})); });
  pairs.expect("no room for a patch", "0 rows",
               [&] { return rowsOf(detected(cornerScene(40, 40, 5), with(L"PatchSize", 90))); });
  expectNoDifference(pairs, image, detected);
}

TEST(BadInput, retrieveFeaturesFPGA) {
  const cv::Mat image = cornerScene(60, 70, 9);
  cv::Mat features(2, 1, CV_32FC(5));
  const auto eigenImage = std::make_shared<cv::Mat>(3, 3, CV_8UC1, cv::Scalar(4));
  BadInput pairs("retrieveFeaturesFPGA");
  pairs.keep(features, *eigenImage, image);
  const auto detect = [&](const cv::Mat& from, const Settings& settings) {
    return retrieveFeaturesFPGA(from, features, settings, eigenImage);
  };
  const auto onPath = [](bool fixedPoint) { return with(L"FBMFpgaQuantized", fixedPoint); };
  expectImagesRefused(pairs, "retrieveFeaturesFPGA", [&](const cv::Mat& bad) { return detect(bad, {}); });

  struct Limit {
    const wchar_t* key;
    std::vector<int> beyond;
    const char* range;
    bool fixedPoint = true;
  };
  for (const Limit& limit :
       {Limit{L"FBMnCells", {0, INT_MIN}, "1 to 2147483647"}, Limit{L"FBMBlockSize", {0, 256, 1 << 30}, "1 to 255"},
        Limit{L"FBMSobelSize", {4, 33}, "odd number up to 31", false},
        Limit{L"FBMLumaLeftShift", {-8, 505}, "-7 to 504"}, Limit{L"FBMSobelWidthOut", {0, 513}, "1 to 512"},
        Limit{L"FBMGradMultWidthOut", {0, INT_MAX}, "1 to 512"}, Limit{L"FBMCovarWidthOut", {-1, 600}, "1 to 512"}})
    expectNumbersRefused(pairs, "retrieveFeaturesFPGA", String(limit.key).stringAnsi(), limit.beyond, limit.range,
                         [&](int number) { return detect(image, with(limit.key, number, onPath(limit.fixedPoint))); });

  struct Row {
    const wchar_t* key;
    int value;
    std::string outcome;
    bool fixedPoint = true;
  };
  const auto named = [](const Row& row) { return String(row.key).stringAnsi() + " " + std::to_string(row.value); };
  for (const Row& row : {
           Row{L"FBMSobelSize", 7, "runtime_error: Unsupported Sobel size 7. Supported: 3, 5"},
           Row{L"FBMSobelSize", -1, "runtime_error: Unsupported Sobel size -1. Supported: 3, 5"},
           Row{L"FBMEigenValWidthIn", 1, refused + "syncRescaleFpga: numBits: 1 given, 2 to 31 expected"},
           Row{L"FBMEigenValWidthIn", 32, refused + "syncRescaleFpga: numBits must not exceed 31, found 32"},
           Row{L"FBMEigenValWidthOut", 0, refused + "calcMinEigenValue: outWidth: 0 given, 1 to 32 expected"},
           Row{L"FBMEigenValWidthOut", 33, refused + "In calcMinEigenValue(..): outWidth must not exceed 32, found 33"},
       })
    pairs.expect(named(row), row.outcome, [&] { return detect(image, with(row.key, row.value, onPath(true))); });

  const auto detected = [](const cv::Mat& from, const Settings& settings) {
    cv::Mat found(7, 1, CV_32FC(5));
    const auto map = std::make_shared<cv::Mat>();
    retrieveFeaturesFPGA(from, found, settings, map);
    EXPECT_TRUE(map->size() == from.size() && map->type() == CV_32FC1 && cv::checkRange(*map));
    return found;
  };
  const auto outcome = [&](const cv::Mat& from, const Settings& settings) {
    return detected(from, settings).empty() ? "nothing" : "corners";
  };
  for (const bool fixedPoint : {false, true}) {
    const std::string path = fixedPoint ? ", fixed point" : "";
    pairs.expect("no folder for the dump" + path,
                 std::string("runtime_error: cvMatToTxt: Couldn't open output file no such folder/eigenVals_") +
                     (fixedPoint ? "q.txt" : "f.txt"),
                 [&] {
                   return detect(image, with(L"FBMWorkDir", L"no such folder/",
                                             with(L"FBMWriteEigenvals", true, onPath(fixedPoint))));
                 });
    const Settings settings = onPath(fixedPoint);
    pairs.expect("one pixel" + path, "nothing", [&] { return outcome(flat(1, 1), settings); });
    pairs.expect("no pixel 8 from the edges" + path, "nothing",
                 [&] { return outcome(cornerScene(16, 300, 2), settings); });
    pairs.expect("one grey level" + path, "nothing", [&] { return outcome(flat(40, 50), settings); });
    expectNoDifference(pairs, image, detected, settings, with(L"FBMFpgaQuantized", fixedPoint, settingsOfOtherTypes()),
                       path);
  }
  // Large, but defined.
  for (const Row& row : {Row{L"FBMnCells", INT_MAX, "nothing"}, Row{L"FBMnFeatures", INT_MAX, "corners"},
                         Row{L"FBMnFeatures", INT_MIN, "nothing"}, Row{L"FBMLumaLeftShift", 504, "nothing"},
                         Row{L"FBMSobelWidthOut", 512, "nothing"}, Row{L"FBMEnhancement", -INT_MAX, "corners"},
                         Row{L"FBMSobelSize", -1, "corners", false}})
    for (const bool automatic : {false, true})
      pairs.expect(named(row) + (row.fixedPoint ? "" : ", float") + (automatic ? ", automatic" : ""), row.outcome, [&] {
        const Settings settings = settingsOf({{L"FBMEnhancement", 0}, {row.key, row.value}});
        settings->set(L"FBMFpgaQuantized", row.fixedPoint);
        return outcome(image, with(L"FBMUseAutoThreshold", automatic, settings));
      });
}

cv::Mat featureMatrix(const std::vector<cv::Vec<float, 5>>& features) { return cv::Mat(features, true); }

TEST(BadInput, retrieveDescriptors) {
  const cv::Mat image = noise(100, 120, 3);
  cv::Mat features = featureMatrix({{50, 50, 7, 0, 1}}), descriptors(2, 3, CV_8UC1, cv::Scalar(9));
  BadInput pairs("retrieveDescriptors");
  pairs.keep(image, features, descriptors);
  const auto describe = [&](const Settings& settings) {
    return retrieveDescriptors(image, features, descriptors, settings);
  };
  expectImagesRefused(pairs, "retrieveDescriptors",
                      [&](const cv::Mat& bad) { return retrieveDescriptors(bad, features, descriptors, {}); });
  const int cube[] = {2, 2, 2};
  for (const auto& [found, matrix] : {std::pair("3 x 5 CV_32FC1", cv::Mat(3, 5, CV_32FC1)),
                                      {"1 x 3 CV_32FC5", cv::Mat(1, 3, CV_32FC(5))},
                                      {"3 x 1 CV_64FC5", cv::Mat(3, 1, CV_64FC(5))},
                                      {"3-dimensional CV_32FC1", cv::Mat(3, cube, CV_32FC1)}}) {
    cv::Mat bad = matrix;
    pairs.expect(
        std::string("features of ") + found,
        refused + "retrieveDescriptors: features: " + found + " given, N x 1 CV_32FC5 expected",
        [&] { return retrieveDescriptors(image, bad, descriptors, {}); }, bad);
  }
  const auto family = [](int number) { return settingsOf({{L"FBMType", 2}, {L"FBMDescriptorType", number}}); };
  pairs.expect("AKAZE of foreign features", "OpenCV error -215", [&] { return describe(family(1)); });
  if (WITH_XFEATURES2D) {
    expectNumbersRefused(pairs, "retrieveDescriptors", "PatchSize", {-1, 91, INT_MAX}, "0 to 90", [&](int patch) {
      return describe(settingsOf({{L"FBMType", 1}, {L"PatchSize", patch}}));
    });
    for (const int bytes : {0, 5, -1, 65})
      pairs.expect("length " + std::to_string(bytes), "OpenCV error -5", [&] {
        return describe(settingsOf({{L"FBMType", 1}, {L"DescLengthBytes", bytes}}));
      });
  }

  const auto described = [](const cv::Mat& from, cv::Mat given, const Settings& settings) {
    cv::Mat rows(3, 16, CV_8UC1, cv::Scalar(1));
    retrieveDescriptors(from, given, rows, settings);
    return rowsOf(given) + ", " + rowsOf(rows);
  };
  for (const int type : {0, 2}) {
    const Settings settings = with(L"FBMType", type, family(4));
    const std::string kind = type == 0 ? ", fixed-point" : ", ORB";
    pairs.expect("no features" + kind, "0 rows, 0 rows", [&] { return described(image, {}, settings); });
    pairs.expect("matrix without columns" + kind, type == 0 ? "4 rows, 0 rows" : "0 rows, 0 rows",
                 [&] { return described(image, cv::Mat(4, 0, CV_32FC1), settings); });
    expectNoDifference(
        pairs, image,
        [&](const cv::Mat& from, const Settings& chosen) {
          cv::Mat given = features.clone(), found;
          retrieveDescriptors(from, given, found, chosen);
          return found;
        },
        settings, type == 0 ? settingsOfOtherTypes() : with(L"FBMEnhancement", 1e9, with(L"FBMType", type, family(4))),
        kind);
  }
  pairs.expect("image smaller than the patch", "2 rows, 2 rows", [&] {
    return described(noise(5, 6, 2), featureMatrix({{2, 2, 7, 0, 1}, {4, 4, 7, 0, 1}}), {});
  });
  // What other families cannot describe is dropped.
  struct Feature {
    const char* defect;
    float x, y, angle;
    bool keptUnlessBrisk;
  };
  for (const Feature& f :
       {Feature{"x not a number", NAN, 50, 0, false}, Feature{"y infinite", 60, INFINITY, 0, false},
        Feature{"y far away", 60, 1e30f, 0, false}, Feature{"angle not a number", 60, 50, NAN, false},
        Feature{"angle infinite", 60, 50, INFINITY, false}, Feature{"angle below a full turn", 60, 50, -800, true},
        Feature{"angle without end", 60, 50, 1e30f, true}})
    for (const auto& [name, number] : {std::pair("LATCH", 0), {"FREAK", 2}, {"BRISK", 3}, {"ORB", 4}}) {
      if (!WITH_XFEATURES2D && number != 3 && number != 4) continue;
      pairs.expect(std::string(name) + ", " + f.defect,
                   f.keptUnlessBrisk && number != 3 ? "1 rows, 1 rows" : "0 rows, 0 rows", [&, number = number] {
                     return described(image, featureMatrix({{f.x, f.y, 7, f.angle, 1}}), family(number));
                   });
    }
}

}  // namespace
}  // namespace MirelAlgorithms
