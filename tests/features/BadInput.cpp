#include <MirelAlgorithms/features/Descriptors.h>
#include <MirelAlgorithms/features/FeatureExtraction.h>
#include <MirelAlgorithms/features/FixedPointCorners.h>
#include <features/BadImages.h>
#include <features/CornerScenes.h>
#include <features/FeatureTest.h>

#include <climits>
#include <limits>

namespace MirelAlgorithms {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

std::string rowsOf(const cv::Mat& matrix) { return std::to_string(matrix.rows) + " rows"; }

/// The first keys of a row, then those that all rows have.
Settings detection(int type, int cells = 3) {
  return settingsOf({{L"FBMType", type}, {L"FBMFeatureType", 0}, {L"FBMnCells", cells}});
}

class FeatureMatrixForm : public testing::TestWithParam<int> {};

TEST_P(FeatureMatrixForm, retrieveFeatures) {
  const int type = GetParam();
  const cv::Mat image = cornerScene(40, 50, 1), view = oddView(image);
  cv::Mat features(2, 1, CV_32FC(5));
  BadInput pairs(type == 1 ? "retrieveFeatures, FBMType 1" : "retrieveFeatures, FBMType 2");
  const auto detect = [&](const cv::Mat& from, const Settings& settings) {
    return retrieveFeatures(from, features, settings, false);
  };
  const auto detected = [&](const cv::Mat& from, const Settings& settings) {
    cv::Mat found(7, 1, CV_32FC(5));
    return retrieveFeatures(from, found, settings, false) ? rowsOf(found) : "false";
  };
  pairs.keep(features, image, view);
  expectImagesRefused(pairs, "retrieveFeatures", [&](const cv::Mat& bad) { return detect(bad, detection(type)); });
  for (const int cells : {0, -3, 41, INT_MAX, INT_MIN}) {
    const Settings settings = detection(type, cells);
    pairs.expect(
        "cells " + std::to_string(cells),
        refused + "retrieveFeatures: FBMnCells: " + std::to_string(cells) + " given, 1 to 40 expected",
        [&] { return detect(image, settings); }, settings);
  }
  pairs.expect("fewer pixels than cells", refused + "retrieveFeatures: FBMnCells: 3 given, 1 to 1 expected",
               [&] { return detect(cv::Mat(1, 1, CV_8UC1, cv::Scalar(9)), detection(type)); });
  pairs.expect("columns left over make a cell", "OpenCV error -215",
               [&] { return detect(cornerScene(30, 11, 2), detection(type)); });
  pairs.expect("rows left over make a cell", "OpenCV error -215",
               [&] { return detect(cornerScene(11, 30, 2), detection(type)); });
  pairs.expect("rows left over, and no budget", "OpenCV error -215",
               [&] { return detect(cornerScene(11, 30, 2), with(L"FBMnFeatures", 0, detection(type))); });
  for (const int budget : {8, 0, -2000, INT_MIN})
    pairs.expect("budget " + std::to_string(budget), "0 rows",
                 [&] { return detected(image, with(L"FBMnFeatures", budget, detection(type))); });
  pairs.expect("one grey level", "0 rows",
               [&] { return detected(cv::Mat(40, 50, CV_8UC1, cv::Scalar(7)), detection(type)); });
  pairs.expect("one pixel", type == 1 ? "OpenCV error -215" : "0 rows",
               [&] { return detected(cv::Mat(1, 1, CV_8UC1, cv::Scalar(7)), detection(type, 1)); });
  pairs.expect("view with odd row starts", "true", [&] {
    cv::Mat ofView, ofCopy;
    retrieveFeatures(view, ofView, detection(type), false);
    retrieveFeatures(image, ofCopy, detection(type), false);
    return same(ofView, ofCopy);
  });
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
  pairs.expect("fixed-point corners without cells",
               refused + "retrieveFeaturesFPGA: FBMnCells: 0 given, 1 to 2147483647 expected", [&] {
                 return retrieveFeatures(image, features, settingsOf({{L"FBMnCells", 0}}), true);
               });
  const auto described = [](int family) {
    return settingsOf({{L"FBMType", 2}, {L"FBMFeatureType", 0}, {L"FBMDescriptorType", family}});
  };
  pairs.expect("AKAZE descriptors of foreign features", "OpenCV error -215",
               [&] { return retrieveFeatures(image, features, described(1), true); });
  pairs.expect("half patch out of range, not read for LATCH of 32 bytes", "true", [&] {
    cv::Mat found;
    return !WITH_XFEATURES2D || retrieveFeatures(image, found, with(L"PatchSize", -1, described(0)), true);
  });
  pairs.expect("settings of other types: the defaults", "true", [&] {
    cv::Mat odd, usual;
    retrieveFeatures(image, odd, settingsOfOtherTypes(), true);
    retrieveFeatures(image, usual, {}, true);
    return !odd.empty() && same(odd, usual);
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
  for (const int cells : {0, -3, 121})
    pairs.expect("cells " + std::to_string(cells),
                 refused + "retrieveFeatures: FBMnCells: " + std::to_string(cells) + " given, 1 to 120 expected", [&] {
                   return detect(image, settingsOf({{L"FBMnCells", cells}}));
                 });
  if (!WITH_XFEATURES2D) return;
  for (const int patch : {-1, 91, INT_MAX})
    pairs.expect("half patch " + std::to_string(patch),
                 refused + "retrieveFeatures: PatchSize: " + std::to_string(patch) + " given, 0 to 90 expected", [&] {
                   return detect(image, settingsOf({{L"PatchSize", patch}}));
                 });
  for (const int bytes : {0, -1, 5, 128})
    pairs.expect("length " + std::to_string(bytes), "OpenCV error -5", [&] {
      return detect(image, settingsOf({{L"DescLengthBytes", bytes}}));
    });
  const auto detected = [](const cv::Mat& from, const Settings& settings) {
    std::vector<cv::KeyPoint> found(3);
    cv::Mat rows(3, 8, CV_8UC1);
    retrieveFeatures(from, found, rows, settings);
    return std::to_string(found.size()) + " key points, " + rowsOf(rows);
  };
  pairs.expect("one grey level", "0 key points, 0 rows",
               [&] { return detected(cv::Mat(90, 90, CV_8UC1, cv::Scalar(7)), {}); });
  pairs.expect("no room for a patch", "0 key points, 0 rows", [&] {
    return detected(cornerScene(40, 40, 5), settingsOf({{L"PatchSize", 90}}));
  });
  pairs.expect("settings of other types: the defaults", detected(image, {}),
               [&] { return detected(image, settingsOfOtherTypes()); });
}

TEST(BadInput, retrieveFeaturesFPGA) {
  const cv::Mat image = cornerScene(60, 70, 9), view = oddView(image);
  cv::Mat features(2, 1, CV_32FC(5));
  const auto eigenImage = std::make_shared<cv::Mat>(3, 3, CV_8UC1, cv::Scalar(4));
  BadInput pairs("retrieveFeaturesFPGA");
  pairs.keep(features, *eigenImage, image, view);
  const auto detect = [&](const cv::Mat& from, const Settings& settings) {
    return retrieveFeaturesFPGA(from, features, settings, eigenImage);
  };
  expectImagesRefused(pairs, "retrieveFeaturesFPGA", [&](const cv::Mat& bad) { return detect(bad, {}); });

  struct Row {
    const wchar_t* key;
    int value;
    bool fixedPoint;
    std::string outcome;
  };
  const std::string cannot = refused + "retrieveFeaturesFPGA: ", sync = refused + "syncRescaleFpga: numBits";
  const Row rows[] = {
      {L"FBMnCells", 0, false, cannot + "FBMnCells: 0 given, 1 to 2147483647 expected"},
      {L"FBMnCells", -3, true, cannot + "FBMnCells: -3 given, 1 to 2147483647 expected"},
      {L"FBMBlockSize", 0, false, cannot + "FBMBlockSize: 0 given, 1 to 255 expected"},
      {L"FBMBlockSize", -5, true, cannot + "FBMBlockSize: -5 given, 1 to 255 expected"},
      {L"FBMBlockSize", 256, true, cannot + "FBMBlockSize: 256 given, 1 to 255 expected"},
      {L"FBMBlockSize", 1 << 30, true, cannot + "FBMBlockSize: 1073741824 given, 1 to 255 expected"},
      {L"FBMSobelSize", 4, false, cannot + "FBMSobelSize: 4 given, odd number up to 31 expected"},
      {L"FBMSobelSize", 33, false, cannot + "FBMSobelSize: 33 given, odd number up to 31 expected"},
      {L"FBMSobelSize", 7, true, "runtime_error: Unsupported Sobel size 7. Supported: 3, 5"},
      {L"FBMSobelSize", -1, true, "runtime_error: Unsupported Sobel size -1. Supported: 3, 5"},
      {L"FBMLumaLeftShift", -8, true, cannot + "FBMLumaLeftShift: -8 given, -7 to 504 expected"},
      {L"FBMLumaLeftShift", 505, true, cannot + "FBMLumaLeftShift: 505 given, -7 to 504 expected"},
      {L"FBMSobelWidthOut", 0, true, cannot + "FBMSobelWidthOut: 0 given, 1 to 512 expected"},
      {L"FBMSobelWidthOut", 513, true, cannot + "FBMSobelWidthOut: 513 given, 1 to 512 expected"},
      {L"FBMGradMultWidthOut", 0, true, cannot + "FBMGradMultWidthOut: 0 given, 1 to 512 expected"},
      {L"FBMGradMultWidthOut", INT_MAX, true, cannot + "FBMGradMultWidthOut: 2147483647 given, 1 to 512 expected"},
      {L"FBMCovarWidthOut", -1, true, cannot + "FBMCovarWidthOut: -1 given, 1 to 512 expected"},
      {L"FBMCovarWidthOut", 600, true, cannot + "FBMCovarWidthOut: 600 given, 1 to 512 expected"},
      {L"FBMEigenValWidthIn", 0, true, sync + ": 0 given, 2 to 31 expected"},
      {L"FBMEigenValWidthIn", 1, true, sync + ": 1 given, 2 to 31 expected"},
      {L"FBMEigenValWidthIn", 32, true, sync + " must not exceed 31, found 32"},
      {L"FBMEigenValWidthOut", 0, true, refused + "calcMinEigenValue: outWidth: 0 given, 1 to 32 expected"},
      {L"FBMEigenValWidthOut", -1, true, refused + "calcMinEigenValue: outWidth: -1 given, 1 to 32 expected"},
      {L"FBMEigenValWidthOut", 33, true, refused + "In calcMinEigenValue(..): outWidth must not exceed 32, found 33"},
  };
  const auto named = [](const Row& row) { return String(row.key).stringAnsi() + " " + std::to_string(row.value); };
  for (const Row& row : rows) {
    const Settings settings = with(L"FBMFpgaQuantized", row.fixedPoint, settingsOf({{row.key, row.value}}));
    pairs.expect(
        named(row), row.outcome, [&] { return detect(image, settings); }, settings);
  }
  for (const bool fixedPoint : {false, true})
    pairs.expect(fixedPoint ? "no folder for the fixed-point dump" : "no folder for the floating-point dump",
                 std::string("runtime_error: cvMatToTxt: Couldn't open output file no such folder/eigenVals_") +
                     (fixedPoint ? "q.txt" : "f.txt"),
                 [&] {
                   return detect(image, with(L"FBMWorkDir", L"no such folder/",
                                             with(L"FBMWriteEigenvals", true, with(L"FBMFpgaQuantized", fixedPoint))));
                 });

  const auto detected = [](const cv::Mat& from, const Settings& settings) {
    cv::Mat found(7, 1, CV_32FC(5));
    const auto map = std::make_shared<cv::Mat>();
    retrieveFeaturesFPGA(from, found, settings, map);
    const bool whole = map->size() == from.size() && map->type() == CV_32FC1 && cv::checkRange(*map);
    return !whole ? "no map" : found.empty() ? "nothing" : "corners";
  };
  for (const bool fixedPoint : {false, true}) {
    const Settings settings = with(L"FBMFpgaQuantized", fixedPoint);
    const std::string path = fixedPoint ? ", fixed point" : "";
    pairs.expect("one pixel" + path, "nothing",
                 [&] { return detected(cv::Mat(1, 1, CV_8UC1, cv::Scalar(9)), settings); });
    pairs.expect("no pixel 8 from the edges" + path, "nothing",
                 [&] { return detected(cornerScene(16, 300, 2), settings); });
    pairs.expect("one grey level" + path, "nothing",
                 [&] { return detected(cv::Mat(40, 50, CV_8UC1, cv::Scalar(7)), settings); });
    pairs.expect("settings of other types" + path, "corners",
                 [&] { return detected(image, with(L"FBMFpgaQuantized", fixedPoint, settingsOfOtherTypes())); });
    pairs.expect("view with odd row starts" + path, "true", [&] {
      cv::Mat ofView, ofCopy;
      retrieveFeaturesFPGA(view, ofView, settings, nullptr);
      retrieveFeaturesFPGA(image, ofCopy, settings, nullptr);
      return same(ofView, ofCopy);
    });
  }
  // Large, but defined.
  const Row extremes[] = {{L"FBMnCells", INT_MAX, true, "nothing"},       {L"FBMnFeatures", INT_MAX, true, "corners"},
                          {L"FBMnFeatures", INT_MIN, true, "nothing"},    {L"FBMLumaLeftShift", 504, true, "nothing"},
                          {L"FBMSobelWidthOut", 512, true, "nothing"},    {L"FBMGradMultWidthOut", 1, true, "nothing"},
                          {L"FBMEnhancement", -INT_MAX, true, "corners"}, {L"FBMSobelSize", -1, false, "corners"}};
  for (const Row& row : extremes)
    for (const bool automatic : {false, true}) {
      const Settings settings = settingsOf({{L"FBMEnhancement", 0}, {row.key, row.value}});
      settings->set(L"FBMFpgaQuantized", row.fixedPoint);
      pairs.expect(named(row) + (row.fixedPoint ? "" : ", floating point") + (automatic ? ", automatic threshold" : ""),
                   row.outcome, [&] { return detected(image, with(L"FBMUseAutoThreshold", automatic, settings)); });
    }
}

cv::Mat featureMatrix(const std::vector<cv::Vec<float, 5>>& features) { return cv::Mat(features, true); }

TEST(BadInput, retrieveDescriptors) {
  const cv::Mat image = noise(100, 120, 3), view = oddView(image);
  cv::Mat features = featureMatrix({{50, 50, 7, 0, 1}}), descriptors(2, 3, CV_8UC1, cv::Scalar(9));
  BadInput pairs("retrieveDescriptors");
  pairs.keep(image, view, features, descriptors);
  expectImagesRefused(pairs, "retrieveDescriptors",
                      [&](const cv::Mat& bad) { return retrieveDescriptors(bad, features, descriptors, {}); });

  const int cube[] = {2, 2, 2};
  const std::pair<const char*, cv::Mat> badFeatures[] = {{"3 x 1 CV_32FC2", cv::Mat::zeros(3, 1, CV_32FC2)},
                                                         {"3 x 5 CV_32FC1", cv::Mat::zeros(3, 5, CV_32FC1)},
                                                         {"1 x 3 CV_32FC5", cv::Mat(1, 3, CV_32FC(5))},
                                                         {"3 x 1 CV_64FC5", cv::Mat(3, 1, CV_64FC(5))},
                                                         {"3 x 1 CV_32FC6", cv::Mat(3, 1, CV_32FC(6))},
                                                         {"3 x 1 CV_32SC5", cv::Mat(3, 1, CV_32SC(5))},
                                                         {"3-dimensional CV_32FC1", cv::Mat::zeros(3, cube, CV_32FC1)}};
  for (const auto& [found, matrix] : badFeatures) {
    cv::Mat bad = matrix;
    pairs.expect(
        std::string("features of ") + found,
        refused + "retrieveDescriptors: features: " + found + " given, N x 1 CV_32FC5 expected",
        [&] { return retrieveDescriptors(image, bad, descriptors, {}); }, bad);
  }
  const auto family = [](int number) { return settingsOf({{L"FBMType", 2}, {L"FBMDescriptorType", number}}); };
  pairs.expect("AKAZE of foreign features", "OpenCV error -215",
               [&] { return retrieveDescriptors(image, features, descriptors, family(1)); });
  if (WITH_XFEATURES2D) {
    for (const int patch : {-1, 91, INT_MAX})
      pairs.expect("half patch " + std::to_string(patch),
                   refused + "retrieveDescriptors: PatchSize: " + std::to_string(patch) + " given, 0 to 90 expected",
                   [&] {
                     return retrieveDescriptors(image, features, descriptors,
                                                settingsOf({{L"FBMType", 1}, {L"PatchSize", patch}}));
                   });
    for (const int bytes : {0, 5, -1, 65})
      pairs.expect("length " + std::to_string(bytes), "OpenCV error -5", [&] {
        return retrieveDescriptors(image, features, descriptors,
                                   settingsOf({{L"FBMType", 1}, {L"DescLengthBytes", bytes}}));
      });
  } else {
    for (const int number : {0, 2})
      pairs.expect("no module for family " + std::to_string(number),
                   std::string("runtime_error: retrieveDescriptors: ") + (number ? "FREAK" : "LATCH") +
                       " needs OpenCV's xfeatures2d module, and this library was built without it; run `./dev setup` "
                       "and build again, or build with an OpenCV that has the module",
                   [&] { return retrieveDescriptors(image, features, descriptors, family(number)); });
  }

  const auto described = [](const cv::Mat& from, cv::Mat given, const Settings& settings) {
    cv::Mat rows(3, 16, CV_8UC1, cv::Scalar(1));
    retrieveDescriptors(from, given, rows, settings);
    return rowsOf(given) + ", " + rowsOf(rows) + (rows.empty() || cv::countNonZero(rows) ? "" : " of zeros");
  };
  for (const int type : {0, 2}) {
    const Settings settings = with(L"FBMType", type, family(4));
    const std::string kind = type == 0 ? ", fixed-point" : ", ORB";
    pairs.expect("no features" + kind, "0 rows, 0 rows", [&] { return described(image, {}, settings); });
    pairs.expect("matrix without rows" + kind, "0 rows, 0 rows",
                 [&] { return described(image, cv::Mat(0, 1, CV_32FC(5)), settings); });
    pairs.expect("matrix without columns" + kind, type == 0 ? "4 rows, 0 rows" : "0 rows, 0 rows",
                 [&] { return described(image, cv::Mat(4, 0, CV_32FC1), settings); });
    pairs.expect("view with odd row starts" + kind, "true", [&] {
      cv::Mat f = features.clone(), g = features.clone(), ofView, ofCopy;
      retrieveDescriptors(view, f, ofView, settings);
      retrieveDescriptors(image, g, ofCopy, settings);
      return same(ofView, ofCopy) && same(f, g);
    });
  }
  pairs.expect("settings of other types: the defaults", "true", [&] {
    cv::Mat f = features.clone(), odd, usual;
    retrieveDescriptors(image, f, odd, settingsOfOtherTypes());
    retrieveDescriptors(image, f, usual, {});
    return same(odd, usual);
  });
  pairs.expect("image smaller than the patch", "2 rows, 2 rows", [&] {
    return described(noise(5, 6, 2), featureMatrix({{2, 2, 7, 0, 1}, {4, 4, 7, 0, 1}}), {});
  });
  const float places[] = {nan, infinity, -infinity, 1e30f, -3e9f, 2147483648.0f};
  for (const float place : places) {
    pairs.expect("x = " + std::to_string(place), "1 rows, 1 rows of zeros", [&] {
      return described(image, featureMatrix({{place, 50, 7, 0, 1}}), {});
    });
    pairs.expect("y = " + std::to_string(place), "1 rows, 1 rows of zeros", [&] {
      return described(image, featureMatrix({{50, place, 7, 0, 1}}), {});
    });
  }
  // What other families cannot describe is dropped.
  struct Feature {
    const char* defect;
    cv::Vec<float, 5> values;
    bool keptUnlessBrisk;
  };
  for (const Feature& f :
       {Feature{"x not a number", {nan, 50, 7, 0, 1}, false}, Feature{"y not a number", {60, nan, 7, 0, 1}, false},
        Feature{"x infinite", {infinity, 50, 7, 0, 1}, false}, Feature{"y far away", {60, 1e30f, 7, 0, 1}, false},
        Feature{"angle not a number", {60, 50, 7, nan, 1}, false},
        Feature{"angle infinite", {60, 50, 7, infinity, 1}, false},
        Feature{"angle below a full turn", {60, 50, 7, -800, 1}, true},
        Feature{"angle of many turns", {60, 50, 7, 1e6f, 1}, true},
        Feature{"angle without end", {60, 50, 7, -1e30f, 1}, true}})
    for (const auto& [name, number] : {std::pair("LATCH", 0), {"FREAK", 2}, {"BRISK", 3}, {"ORB", 4}}) {
      if (!WITH_XFEATURES2D && number != 3 && number != 4) continue;
      pairs.expect(std::string(name) + ", " + f.defect,
                   f.keptUnlessBrisk && number != 3 ? "1 rows, 1 rows" : "0 rows, 0 rows",
                   [&, number = number] { return described(image, featureMatrix({f.values}), family(number)); });
    }
}

}  // namespace
}  // namespace MirelAlgorithms
