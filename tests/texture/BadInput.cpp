#include <MirelAlgorithms/texture/MultiMatch.h>
#include <MirelAlgorithms/texture/TextureFeatures.h>
#include <MirelAlgorithms/texture/TextureMatching.h>
#include <support/BadInput.h>
#include <texture/TextureTest.h>

#include <climits>
#include <cmath>
#include <cstdlib>

namespace MirelAlgorithms {
namespace {

using Extract = std::function<int(const cv::Mat&, const Settings&)>;

/// What all functions refuse that extract features: images, and settings for an image of 131 x 120 pixels.
void expectRefusals(BadInput& pairs, const std::string& which, const std::string& function, const Extract& extract) {
  static const int cube[] = {60, 60, 60};
  const std::pair<const char*, cv::Mat> images[] = {{"floats", cv::Mat::ones(60, 60, CV_32FC1)},
                                                    {"two channels", cv::Mat::zeros(60, 60, CV_8UC2)},
                                                    {"volume", cv::Mat(3, cube, CV_8UC1, cv::Scalar(1))}};
  for (const auto& image : images)
    pairs.expect(which + image.first, refused + "enhance: source: 8- or 16-bit image of 1, 3 or 4 channels expected",
                 [&] { return extract(image.second, {}); });

  const std::string openCv = "OpenCV error -215";
  const std::tuple<const wchar_t*, int, std::string> settings[] = {
      {L"txmCells", INT_MIN, "1 to 120"},
      {L"txmCells", 0, "1 to 120"},
      {L"txmCells", 121, "1 to 120"},
      {L"txmCells", 17, openCv},  // what is left over makes a cell
      {L"txmORBnLevels", 0, "1 to 1000"},
      {L"txmORBnLevels", 1001, "1 to 1000"},
      {L"txmORBmaxFeatures", (1 << 24) + 1, "0 to 2^24"},
      {L"txmORBfirstLevel", -1, openCv},
      {L"txmORBpatchSize", 1, openCv},
      {L"txmORBWTA_K", 5, openCv}};
  const cv::Mat image = scene(120, 131, 2);
  for (const auto& [key, value, wanted] : settings) {
    const std::string name = String(key).stringAnsi(), number = std::to_string(value);
    const Settings bad = settingsOf({{key, value}});
    pairs.expect(which + name + " " + number,
                 wanted == openCv
                     ? openCv
                     : refused + function + ": " + name + ": " + number + " given, " + wanted + " expected",
                 [&] { return extract(image, bad); });
  }
}

TEST(BadInput, textureExtract) {
  const cv::Mat image = scene(120, 131, 3);
  Points points{{1, 2}};
  cv::Mat descriptors(3, 32, CV_8UC1, cv::Scalar(7));
  BadInput pairs("textureExtract");
  pairs.keep(points, descriptors, image);
  const auto extract = [&](const cv::Mat& from, const Settings& settings) {
    return textureExtract(from, points, descriptors, settings);
  };
  expectRefusals(pairs, "", "textureExtract", extract);
  pairs.expect("no image, no cells", "1", [&] { return extract({}, settingsOf({{L"txmCells", 0}})); });
  const std::pair<const char*, Settings> pyramids[] = {
      {"first level 200", settingsOf({{L"txmORBfirstLevel", 200}})},
      {"widest border", settingsOf({{L"txmORBedgeThreshold", INT_MAX}})},
      {"largest patch", settingsOf({{L"txmORBpatchSize", INT_MAX}})},
      {"scale factor 0", with(L"txmORBscaleFactor", 0.0)}};
  for (const auto& pyramid : pyramids)
    pairs.expect(pyramid.first, "too large", [&] {
      const std::string found = outcomeOf([&] { return extract(image, pyramid.second); });
      const bool told = found.starts_with(refused + "textureExtract: pyramid of the txmORB keys: ") &&
                        found.ends_with(" pixels given, at most 2^31 expected");
      return told ? "too large" : found;
    });
  for (const double factor : {std::nan(""), -1.2, HUGE_VAL})
    pairs.expect("scale factor " + std::to_string(factor), "refused", [&] {
      const std::string found = outcomeOf([&] { return extract(image, with(L"txmORBscaleFactor", factor)); });
      return found.starts_with("OpenCV error") || found.starts_with(refused) ? "refused" : found;
    });

  const auto extracted = [](const cv::Mat& from, const Settings& settings) {
    Points found{{1, 2}};
    cv::Mat rows(3, 32, CV_8UC1);
    textureExtract(from, found, rows, settings);
    return std::to_string(found.size() - 1) + " points, " + std::to_string(rows.rows) + " rows";
  };
  const cv::Mat flat(100, 120, CV_8UC1, cv::Scalar(90));
  pairs.expect("one grey level", "0 points, 0 rows", [&] { return extracted(flat, {}); });
  pairs.expect("no budget", "0 points, 0 rows", [&] { return extracted(image, settingsOf({{L"txmMaxKeys", 0}})); });
  pairs.expect("settings of other types: the defaults", extracted(image, {}),
               [&] { return extracted(image, settingsOfOtherTypes()); });
}

TEST(BadInput, textureMatch) {
  std::vector<cv::Vec3i> matches{{7, 8, 9}};
  BadInput pairs("textureMatch");
  pairs.keep(matches);
  struct Counts {
    int points1, rows1, points2, rows2;
    const char* code;
  };
  for (const Counts& c :
       {Counts{0, 3, 3, 3, "1"}, Counts{2, 0, 0, 0, "2"}, Counts{2, 3, 0, 0, "3"}, Counts{4, 3, 3, 3, "3"},
        Counts{3, 3, 0, 3, "4"}, Counts{3, 3, 2, 0, "5"}, Counts{3, 3, 2, 3, "6"}, Counts{3, 3, 4, 3, "6"}}) {
    const cv::Mat descriptors1 = noise(4, 32, 1).rowRange(0, c.rows1),
                  descriptors2 = noise(4, 32, 1).rowRange(0, c.rows2);
    const Points points1(static_cast<std::size_t>(c.points1));
    Points points2(static_cast<std::size_t>(c.points2));
    std::ostringstream defect;
    defect << c.points1 << " points of " << c.rows1 << " rows, " << c.points2 << " points of " << c.rows2 << " rows";
    pairs.expect(
        defect.str(), c.code, [&] { return textureMatch(points1, descriptors1, points2, descriptors2, matches, {}); },
        points1, points2, descriptors1, descriptors2);
  }
  const cv::Mat none, three = noise(3, 32, 1), tooMany = cv::Mat::zeros(1 << 18, 32, CV_8UC1);
  const std::string descriptors = refused + "textureMatch: descriptors";
  const std::string size = " rows given, CV_8UC1, at most 262143 rows and 2047 columns expected";
  struct Sets {
    const char* defect;
    cv::Mat descriptors1, descriptors2;
    std::string outcome;
  };
  for (const Sets& sets : {
           Sets{"no first set", none, three, "2"},
           Sets{"no second set", three, none, "5"},
           Sets{"floats", cv::Mat::zeros(3, 32, CV_32FC1), three, descriptors + "1: CV_32FC1, 3" + size},
           Sets{"three channels", three, cv::Mat::zeros(3, 32, CV_8UC3), descriptors + "2: CV_8UC3, 3" + size},
           Sets{"too many columns", cv::Mat::zeros(3, 2048, CV_8UC1), three, descriptors + "1: CV_8UC1, 3" + size},
           Sets{"too many rows", tooMany, three, descriptors + "1: CV_8UC1, 262144" + size},
           Sets{"too many rows in the second set", three, tooMany, descriptors + "2: CV_8UC1, 262144" + size},
           Sets{"widths that differ", three, noise(3, 31, 1),
                refused + "textureMatch: columns of descriptors2: 31 given, 32 to 32 expected"},
       })
    pairs.expect(
        sets.defect, sets.outcome, [&] { return textureMatch(sets.descriptors1, sets.descriptors2, matches, {}); },
        sets.descriptors1, sets.descriptors2);
  for (const int points : {1, 5})
    pairs.expect("comparisons of " + std::to_string(points) + " points",
                 refused + "textureMatch: txmORBWTA_K: a value without a norm given, 2 to 4 expected", [&] {
                   return textureMatch(three, three, matches, settingsOf({{L"txmORBWTA_K", points}}));
                 });
}

TEST(BadInput, textureExtractAndMatch) {
  const cv::Mat image = scene(120, 131, 2), flat(120, 131, CV_8UC1, cv::Scalar(7));
  Points points1{{1, 2}}, points2;
  BadInput pairs("textureExtractAndMatch");
  pairs.keep(points1, points2, image, flat);
  const auto match = [&](const cv::Mat& a, const cv::Mat& b, const Settings& settings) {
    return textureExtractAndMatch(a, b, points1, points2, settings);
  };
  pairs.expect("no first image", "1", [&] { return match({}, image, {}); });
  pairs.expect("no second image, no cells", "2", [&] { return match(image, {}, settingsOf({{L"txmCells", 0}})); });
  pairs.expect("second image of one grey level", "0", [&] { return match(image, flat, {}); });
  pairs.expect("first image of one grey level", "0", [&] { return match(flat, image, {}); });
  expectRefusals(pairs, "first image, ", "textureExtractAndMatch",
                 [&](const cv::Mat& bad, const Settings& settings) { return match(bad, image, settings); });
  expectRefusals(pairs, "second image, ", "textureExtractAndMatch",
                 [&](const cv::Mat& bad, const Settings& settings) { return match(image, bad, settings); });
#ifdef __linux__
  const char* platform = std::getenv("QT_QPA_PLATFORM");
  const std::string before = platform ? platform : "";
  unsetenv("QT_QPA_PLATFORM");
  setenv("DISPLAY", "", 1);
  pairs.expect("no display to draw on",
               "runtime_error: textureExtractAndMatch: txmDraw asks for a window, and there is no display to open it "
               "on; set DISPLAY, or txmDraw to -1",
               [&] {
                 return match(image, image, settingsOf({{L"txmDraw", 1}}));
               });
  if (platform) setenv("QT_QPA_PLATFORM", before.c_str(), 1);
#endif
}

TEST(BadInput, textureMultiMatch) {
  const cv::Mat image = scene(120, 131, 2), flat(120, 131, CV_8UC1, cv::Scalar(7));
  std::vector<MultiMatch> result(2), foreign(3, {{5, 6}, cv::Mat(1, 7, CV_8UC1, cv::Scalar(1)), 1, 0.0});
  const auto results = [&] {
    Bytes bytes;
    for (const auto* matches : {&result, &foreign})
      for (const MultiMatch& match : *matches) {
        bytes.add(match.point);
        bytes.add(match.descriptor);
        bytes.add(match.multiplicity);
        bytes.add(match.maxDistance);
      }
    return bytes.text();
  };
  BadInput pairs("textureMultiMatch");
  pairs.keep(results, image, flat);
  const auto match = [&](const std::vector<cv::Mat>& images, const Settings& settings) {
    return textureMultiMatch(images, result, settings);
  };
  pairs.expect("no images, no cells", "7", [&] { return match({}, settingsOf({{L"txmCells", 0}})); });
  pairs.expect("empty first image", "1", [&] { return match({cv::Mat(), image}, {}); });
  expectRefusals(pairs, "first image, ", "textureExtract", [&](const cv::Mat& bad, const Settings& settings) {
    return match({bad, image}, settings);
  });
  expectRefusals(pairs, "later image, ", "textureExtract", [&](const cv::Mat& bad, const Settings& settings) {
    return match({image, cv::Mat(), bad}, settings);
  });
  pairs.expect("entries with foreign descriptors", "OpenCV error -215 or -209", [&] {
    const std::string found = outcomeOf([&] { return textureMultiMatch({image, image}, foreign, {}); });
    return found == "OpenCV error -215" || found == "OpenCV error -209" ? "OpenCV error -215 or -209" : found;
  });
  pairs.expect("first image of one grey level", "0, nothing", [&] {
    std::vector<MultiMatch> found;
    const int code = textureMultiMatch({flat, image}, found, {});
    return std::to_string(code) + (found.empty() ? ", nothing" : ", matches");
  });
}

}  // namespace
}  // namespace MirelAlgorithms
