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

const std::string badSource = refused + "enhance: source: 8- or 16-bit image of 1, 3 or 4 channels expected";

std::vector<std::pair<const char*, cv::Mat>> badImages() {
  static const int cube[] = {60, 60, 60};
  const auto ones = [](int type) { return cv::Mat(60, 60, type, cv::Scalar::all(1)); };
  return {{"floats", ones(CV_32FC1)},
          {"signed", ones(CV_8SC1)},
          {"signed 16 bits", ones(CV_16SC1)},
          {"two channels", ones(CV_8UC2)},
          {"five channels", cv::Mat::zeros(60, 60, CV_8UC(5))},
          {"volume", cv::Mat(3, cube, CV_8UC1, cv::Scalar(1))}};
}

struct Setting {
  const wchar_t* key;
  int value;
  std::string outcome;
};

/// Settings that extraction from an image of 131 x 120 pixels refuses.
std::vector<Setting> badSettings(const std::string& function) {
  const std::string start = refused + function + ": ";
  const auto cells = [&](int value) {
    return start + "txmCells: " + std::to_string(value) + " given, 1 to 120 expected";
  };
  const auto levels = [&](int value) {
    return start + "txmORBnLevels: " + std::to_string(value) + " given, 1 to 1000 expected";
  };
  return {{L"txmCells", 0, cells(0)},
          {L"txmCells", -1, cells(-1)},
          {L"txmCells", 121, cells(121)},
          {L"txmCells", INT_MIN, cells(INT_MIN)},
          {L"txmORBnLevels", 0, levels(0)},
          {L"txmORBnLevels", INT_MIN, levels(INT_MIN)},
          {L"txmORBnLevels", 1001, levels(1001)},
          {L"txmCells", 17, "OpenCV error -215"},  // what is left over makes a cell
          {L"txmORBfirstLevel", -1, "OpenCV error -215"},
          {L"txmORBpatchSize", 1, "OpenCV error -215"},
          {L"txmORBWTA_K", 5, "OpenCV error -215"}};
}

std::string named(const Setting& setting) {
  return String(setting.key).stringAnsi() + " " + std::to_string(setting.value);
}

TEST(BadInput, textureExtract) {
  const cv::Mat image = scene(120, 131, 3), view = oddView(image);
  Points points{{1, 2}};
  cv::Mat descriptors(3, 32, CV_8UC1, cv::Scalar(7));
  BadInput pairs("textureExtract");
  pairs.keep(points, descriptors, image, view);
  const auto extract = [&](const cv::Mat& from, const Settings& settings) {
    return textureExtract(from, points, descriptors, settings);
  };
  pairs.expect("no image", "1", [&] { return extract({}, {}); });
  pairs.expect("no image, no cells", "1", [&] { return extract({}, settingsOf({{L"txmCells", 0}})); });
  pairs.expect("image without rows", "1", [&] { return extract(cv::Mat(0, 9, CV_8UC1), {}); });
  for (const auto& [name, bad] : badImages())
    pairs.expect(name, badSource, [&, bad = bad] { return extract(bad, {}); });
  for (const Setting& bad : badSettings("textureExtract"))
    pairs.expect(named(bad), bad.outcome, [&] { return extract(image, settingsOf({{bad.key, bad.value}})); });
  const auto pyramid = [&](const Settings& settings) {
    const std::string found = outcomeOf([&] { return extract(image, settings); });
    const bool told = found.starts_with(refused + "textureExtract: pyramid of the txmORB keys: ") &&
                      found.ends_with(" pixels given, at most 2^31 expected");
    return told ? "too large" : found;
  };
  for (const auto& [key, value] :
       {std::pair(L"txmORBfirstLevel", 200), {L"txmORBedgeThreshold", INT_MAX}, {L"txmORBpatchSize", INT_MAX}})
    pairs.expect(named({key, value, ""}), "too large", [&, key = key, value = value] {
      return pyramid(settingsOf({{key, value}}));
    });
  pairs.expect("scale factor 0", "too large", [&] { return pyramid(with(L"txmORBscaleFactor", 0.0)); });
  for (const auto& [name, factor] : {std::pair("nan", std::nan("")), {"-1.2", -1.2}, {"0.95", 0.95}, {"inf", HUGE_VAL}})
    pairs.expect(std::string("scale factor ") + name, "refused", [&, factor = factor] {
      const std::string found = outcomeOf([&] { return extract(image, with(L"txmORBscaleFactor", factor)); });
      return found.starts_with("OpenCV error") || found.starts_with(refused) ? "refused" : found;
    });

  const auto extracted = [](const cv::Mat& from, const Settings& settings) {
    Points found{{1, 2}};
    cv::Mat rows(3, 32, CV_8UC1);
    textureExtract(from, found, rows, settings);
    return std::to_string(found.size() - 1) + " points, " + std::to_string(rows.rows) + " rows";
  };
  pairs.expect("one grey level", "0 points, 0 rows",
               [&] { return extracted(cv::Mat(100, 120, CV_8UC1, cv::Scalar(90)), {}); });
  pairs.expect("no budget", "0 points, 0 rows", [&] { return extracted(image, settingsOf({{L"txmMaxKeys", 0}})); });
  pairs.expect("budget below the cells", "0 points, 0 rows", [&] {
    return extracted(image, settingsOf({{L"txmMaxKeys", 2}}));
  });
  pairs.expect("settings of other types: the defaults", extracted(image, {}),
               [&] { return extracted(image, settingsOfOtherTypes()); });
  pairs.expect("view with odd row starts", "true", [&] {
    Points ofView, ofCopy;
    cv::Mat rowsOfView, rowsOfCopy;
    textureExtract(view, ofView, rowsOfView, {});
    textureExtract(image, ofCopy, rowsOfCopy, {});
    return ofView == ofCopy && same(rowsOfView, rowsOfCopy);
  });
}

TEST(BadInput, textureMatch) {
  const cv::Mat three = noise(3, 32, 1), none, odd = oddView(three);
  std::vector<cv::Vec3i> matches{{7, 8, 9}};
  BadInput pairs("textureMatch");
  pairs.keep(matches, three, odd);
  struct Row {
    const char* defect;
    std::string outcome;
    std::size_t points1;
    cv::Mat descriptors1;
    std::size_t points2;
    cv::Mat descriptors2;
  };
  const std::string size = " rows given, CV_8UC1, at most 262143 rows and 2047 columns expected";
  const auto type = [&](int set, const char* found) {
    return refused + "textureMatch: descriptors" + std::to_string(set) + ": " + found + ", 3" + size;
  };
  const std::string width = refused + "textureMatch: columns of descriptors2: 31 given, 32 to 32 expected";
  const auto zeros = [](int kind) { return cv::Mat(3, 32, kind, cv::Scalar::all(0)); };
  for (const Row& row : {
           Row{"nothing at all", "1", 0, none, 0, none},
           Row{"no first points", "1", 0, three, 3, three},
           Row{"no first descriptors", "2", 2, none, 0, none},
           Row{"first rows without columns", "2", 3, cv::Mat(3, 0, CV_8UC1), 0, none},
           Row{"more first rows than points", "3", 2, three, 0, none},
           Row{"fewer first rows than points", "3", 4, three, 3, three},
           Row{"no second points", "4", 3, three, 0, none},
           Row{"no second descriptors", "5", 3, three, 2, none},
           Row{"more second rows than points", "6", 3, three, 2, three},
           Row{"fewer second rows than points", "6", 3, three, 4, three},
           Row{"widths that differ", width, 3, three, 3, noise(3, 31, 1)},
           Row{"floats", type(1, "CV_32FC1"), 3, zeros(CV_32FC1), 3, three},
           Row{"signed", type(2, "CV_8SC1"), 3, three, 3, zeros(CV_8SC1)},
           Row{"three channels", type(2, "CV_8UC3"), 3, three, 3, zeros(CV_8UC3)},
           Row{"too many columns", type(1, "CV_8UC1"), 3, cv::Mat::zeros(3, 2048, CV_8UC1), 3, three},
       }) {
    const Points points1(row.points1);
    Points points2(row.points2);
    pairs.expect(
        row.defect, row.outcome,
        [&] { return textureMatch(points1, row.descriptors1, points2, row.descriptors2, matches, {}); }, points1,
        points2, row.descriptors1, row.descriptors2);
  }
  const auto byDescriptor = [&](const cv::Mat& a, const cv::Mat& b, const Settings& settings = {}) {
    return textureMatch(a, b, matches, settings);
  };
  const cv::Mat tooMany = cv::Mat::zeros(1 << 18, 32, CV_8UC1);
  const std::string many = ": CV_8UC1, 262144" + size;
  pairs.expect("by descriptor, no sets", "2", [&] { return byDescriptor(none, none); });
  pairs.expect("by descriptor, no first set", "2", [&] { return byDescriptor(none, three); });
  pairs.expect("by descriptor, no second set", "5", [&] { return byDescriptor(three, none); });
  pairs.expect("by descriptor, widths that differ", width, [&] { return byDescriptor(three, noise(3, 31, 1)); });
  pairs.expect("by descriptor, too many rows", refused + "textureMatch: descriptors1" + many,
               [&] { return byDescriptor(tooMany, three); });
  pairs.expect("by descriptor, too many rows in the second set", refused + "textureMatch: descriptors2" + many,
               [&] { return byDescriptor(three, tooMany); });
  for (const int points : {5, 1, 0, -1, INT_MAX})
    pairs.expect("comparisons of " + std::to_string(points) + " points",
                 refused + "textureMatch: txmORBWTA_K: a value without a norm given, 2 to 4 expected", [&] {
                   return byDescriptor(three, three, settingsOf({{L"txmORBWTA_K", points}}));
                 });

  // Features with descriptors of their own, all in their places but what a row changes.
  struct Place {
    const char* defect;
    int expected;
    void (*change)(Points&, Points&);
    Settings settings = {};
  };
  for (const Place& row : {
           Place{"nothing", 8, [](Points&, Points&) {}},
           Place{"a place not a number", 7, [](Points&a, Points&) { a[2][1] = NAN; }},
           Place{"no place a number", 0,
                 [](Points&a, Points&) {
                   a.assign(8, {NAN, NAN});
                 }},
           Place{"infinite places", 0,
                 [](Points&, Points&b) {
                   b.assign(8, {INFINITY, 0});
                 }},
           Place{"all in one spot", 0,
                 [](Points&a, Points&b) {
                   a = b = Points(8, {5, 5});
                 }},
           Place{"longest shift not a number", 0, [](Points&, Points&) {}, with(L"txmMaxKeyDist", std::nan(""))},
           Place{"longest shift below 0 acts as above", 8, [](Points&, Points&) {}, with(L"txmMaxKeyDist", -5.0)},
           Place{"ratio not a number: nearest alone", 8, [](Points&, Points&) {},
                 with(L"txmUniquenessRatio", std::nan(""))},
           Place{"settings of other types: the defaults", 8, [](Points&, Points&) {}, settingsOfOtherTypes()},
       })
    pairs.expect(row.defect, "0, " + std::to_string(row.expected) + " matches", [&] {
      const cv::Mat eight = noise(8, 32, 5);
      Points points1, points2;
      for (int i = 0; i < 8; ++i) {
        points1.emplace_back(static_cast<float>(i * 37 % 101), static_cast<float>(i * i % 89));
        points2.push_back(points1.back() + cv::Vec2f(3, 4));
      }
      row.change(points1, points2);
      std::vector<cv::Vec3i> found;
      const int code = textureMatch(points1, eight, points2, oddView(eight), found, row.settings);
      return std::to_string(code) + ", " + std::to_string(found.size()) + " matches";
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
  pairs.expect("no images", "1", [&] { return match({}, {}, {}); });
  pairs.expect("no first image", "1", [&] { return match({}, image, {}); });
  pairs.expect("no second image", "2", [&] { return match(image, {}, {}); });
  pairs.expect("no second image, no cells", "2", [&] { return match(image, {}, settingsOf({{L"txmCells", 0}})); });
  pairs.expect("second image of one grey level", "0", [&] { return match(image, flat, {}); });
  pairs.expect("first image of one grey level", "0", [&] { return match(flat, image, {}); });
  for (const auto& [name, bad] : badImages()) {
    pairs.expect(std::string("first image, ") + name, badSource, [&, bad = bad] { return match(bad, image, {}); });
    pairs.expect(std::string("second image, ") + name, badSource, [&, bad = bad] { return match(image, bad, {}); });
  }
  for (const Setting& bad : badSettings("textureExtractAndMatch"))
    pairs.expect(named(bad), bad.outcome, [&] { return match(image, flat, settingsOf({{bad.key, bad.value}})); });
#ifdef __linux__
  const char* platform = std::getenv("QT_QPA_PLATFORM");
  const std::string before = platform ? platform : "";
  unsetenv("QT_QPA_PLATFORM");
  setenv("DISPLAY", "", 1);
  for (const auto& [name, second] : {std::pair("matches", image), {"nothing", flat}})
    pairs.expect(std::string("no display to draw on: ") + name,
                 "runtime_error: textureExtractAndMatch: txmDraw asks for a window, and there is no display to open it "
                 "on; set DISPLAY, or txmDraw to -1",
                 [&, second = second] {
                   return match(image, second, settingsOf({{L"txmDraw", 1}}));
                 });
  if (platform) setenv("QT_QPA_PLATFORM", before.c_str(), 1);
#endif
}

TEST(BadInput, textureMultiMatch) {
  const cv::Mat image = scene(120, 131, 2), flat(120, 131, CV_8UC1, cv::Scalar(7));
  std::vector<MultiMatch> result(2), foreign(3, {{5, 6}, cv::Mat(1, 7, CV_8UC1, cv::Scalar(1)), 1, 0.0});
  const auto bytesOf = [](const std::vector<MultiMatch>& matches) {
    Bytes bytes;
    for (const MultiMatch& match : matches) {
      bytes.add(match.point);
      bytes.add(match.descriptor);
      bytes.add(match.multiplicity);
      bytes.add(match.maxDistance);
    }
    return bytes.text();
  };
  const auto results = [&] { return bytesOf(result) + bytesOf(foreign); };
  BadInput pairs("textureMultiMatch");
  pairs.keep(results, image, flat);
  pairs.expect("no images", "7", [&] { return textureMultiMatch({}, result, {}); });
  pairs.expect("no images, no cells", "7", [&] {
    return textureMultiMatch({}, result, settingsOf({{L"txmCells", 0}}));
  });
  pairs.expect("empty first image", "1", [&] { return textureMultiMatch({cv::Mat(), image}, result, {}); });
  for (const auto& [name, bad] : badImages()) {
    pairs.expect(std::string("first image, ") + name, badSource, [&, bad = bad] {
      return textureMultiMatch({bad, image}, result, {});
    });
    pairs.expect(std::string("later image, ") + name, badSource, [&, bad = bad] {
      return textureMultiMatch({image, cv::Mat(), bad}, result, {});
    });
  }
  pairs.expect("later image with fewer rows than cells", refused + "textureExtract: txmCells: 3 given, 1 to 2 expected",
               [&] {
                 return textureMultiMatch({image, cv::Mat(2, 300, CV_8UC1, cv::Scalar(1))}, result, {});
               });
  for (const Setting& bad : badSettings("textureExtract"))
    pairs.expect(named(bad), bad.outcome, [&] {
      return textureMultiMatch({image, image}, result, settingsOf({{bad.key, bad.value}}));
    });
  pairs.expect("entries with foreign descriptors", "OpenCV error -215 or -209", [&] {
    const std::string found = outcomeOf([&] { return textureMultiMatch({image, image}, foreign, {}); });
    return found == "OpenCV error -215" || found == "OpenCV error -209" ? "OpenCV error -215 or -209" : found;
  });
  const auto matched = [](const std::vector<cv::Mat>& images, const Settings& settings) {
    std::vector<MultiMatch> found;
    const int code = textureMultiMatch(images, found, settings);
    return std::to_string(code) + (found.empty() ? ", nothing" : ", matches");
  };
  pairs.expect("first image of one grey level", "0, nothing", [&] { return matched({flat, image}, {}); });
  pairs.expect("one image", "0, nothing", [&] { return matched({image}, {}); });
  pairs.expect("later images are empty", "0, nothing", [&] { return matched({image, {}, {}}, {}); });
  pairs.expect("later images of one grey level", "0, nothing", [&] { return matched({image, flat, flat}, {}); });
  const cv::Mat large = scene(200, 220, 1);
  pairs.expect("settings of other types: the defaults", "0, matches", [&] {
    return matched({large, large}, settingsOfOtherTypes());
  });
}

}  // namespace
}  // namespace MirelAlgorithms
