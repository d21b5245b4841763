#include <MirelCore/Image.h>
#include <support/BadInput.h>

#include <climits>
#include <cmath>

namespace MirelAlgorithms {
namespace {

TEST(BadInput, enhance) {
  const int cube[] = {4, 4, 4};
  cv::Mat result(2, 2, CV_32FC1, cv::Scalar(3));
  BadInput pairs("enhance");
  pairs.keep(result);
  const std::pair<const char*, cv::Mat> sources[] = {{"no image", {}},
                                                     {"image without rows", cv::Mat(0, 4, CV_8UC1)},
                                                     {"floats", cv::Mat::zeros(4, 4, CV_32FC1)},
                                                     {"signed", cv::Mat::zeros(4, 4, CV_8SC1)},
                                                     {"signed 16 bits", cv::Mat::zeros(4, 4, CV_16SC1)},
                                                     {"two channels", cv::Mat::zeros(4, 4, CV_8UC2)},
                                                     {"five channels", cv::Mat::zeros(4, 4, CV_8UC(5))},
                                                     {"volume", cv::Mat(3, cube, CV_8UC1, cv::Scalar(0))}};
  for (const auto& [name, source] : sources)
    pairs.expect(
        name, refused + "enhance: source: 8- or 16-bit image of 1, 3 or 4 channels expected",
        [&, bad = source] { MirelCore::enhance(bad, result, 80000, {}); }, source);
}

TEST(BadInput, get) {
  const Settings settings(new AttrContainer());
  settings->set(L"flag", true);
  settings->set(L"count", 7);
  settings->set(L"limit", 2.5);
  settings->set(L"text", L"abc");
  BadInput pairs("MirelCore::get");
  const auto read = [](const Settings& from, const wchar_t* key) {
    return std::to_string(MirelCore::get(from, key, false)) + " " + std::to_string(MirelCore::get(from, key, -1)) +
           " " + std::to_string(MirelCore::get(from, key, -0.5)) + " " +
           MirelCore::get(from, key, L"none").stringAnsi();
  };
  for (const auto& [defect, key, values] : {std::tuple("missing key", L"other", "0 -1 -0.500000 none"),
                                            {"key in capitals", L"FLAG", "0 -1 -0.500000 none"},
                                            {"empty key", L"", "0 -1 -0.500000 none"},
                                            {"flag as other types", L"flag", "1 -1 -0.500000 none"},
                                            {"count as other types", L"count", "0 7 -0.500000 none"},
                                            {"limit as other types", L"limit", "0 -1 2.500000 none"},
                                            {"text as other types", L"text", "0 -1 -0.500000 abc"}})
    pairs.expect(defect, values, [&, key = key] { return read(settings, key); });
  pairs.expect("null key", "0 -1 -0.500000 none", [&] { return read(settings, nullptr); });
  pairs.expect("no settings", "0 -1 -0.500000 none", [&] { return read({}, L"flag"); });
  pairs.expect("null default", "", [&] { return MirelCore::get(settings, L"other", nullptr).stringAnsi(); });
}

}  // namespace
}  // namespace MirelAlgorithms
