#include <MirelCore/Image.h>
#include <support/BadInput.h>

namespace MirelAlgorithms {
namespace {

TEST(BadInput, enhance) {
  const int cube[] = {4, 4, 4};
  cv::Mat result(2, 2, CV_32FC1, cv::Scalar(3));
  BadInput pairs("enhance");
  pairs.keep(result);
  const std::pair<const char*, cv::Mat> sources[] = {{"no image", {}},
                                                     {"floats", cv::Mat::zeros(4, 4, CV_32FC1)},
                                                     {"signed", cv::Mat::zeros(4, 4, CV_8SC1)},
                                                     {"two channels", cv::Mat::zeros(4, 4, CV_8UC2)},
                                                     {"five channels", cv::Mat::zeros(4, 4, CV_8UC(5))},
                                                     {"volume", cv::Mat(3, cube, CV_8UC1, cv::Scalar(0))}};
  for (const auto& bad : sources)
    pairs.expect(
        bad.first, refused + "enhance: source: 8- or 16-bit image of 1, 3 or 4 channels expected",
        [&] { MirelCore::enhance(bad.second, result, 80000, {}); }, bad.second);
}

TEST(BadInput, get) {
  const Settings settings(new AttrContainer());
  settings->set(L"flag", true);
  settings->set(L"limit", L"the text that was here is gone");
  settings->set(L"limit", 2.5);
  settings->set(L"count", 7);
  settings->set(L"text", L"abc");
  settings->set(L"nothing", static_cast<const wchar_t*>(nullptr));
  BadInput pairs("MirelCore::get");
  const auto read = [](const Settings& from, const wchar_t* key) {
    return std::to_string(MirelCore::get(from, key, false)) + " " + std::to_string(MirelCore::get(from, key, -1)) +
           " " + std::to_string(MirelCore::get(from, key, -0.5)) + " " +
           MirelCore::get(from, key, L"none").stringAnsi();
  };
  const std::string defaults = "0 -1 -0.500000 none";
  const std::tuple<const char*, const wchar_t*, std::string> rows[] = {
      {"missing key", L"other", defaults},
      {"key in capitals", L"FLAG", defaults},
      {"null key", nullptr, defaults},
      {"flag as other types", L"flag", "1 -1 -0.500000 none"},
      {"count as other types", L"count", "0 7 -0.500000 none"},
      {"limit as other types", L"limit", "0 -1 2.500000 none"},
      {"text as other types", L"text", "0 -1 -0.500000 abc"},
      {"null text", L"nothing", "0 -1 -0.500000 "}};
  for (const auto& row : rows)
    pairs.expect(std::get<0>(row), std::get<2>(row), [&] { return read(settings, std::get<1>(row)); });
  pairs.expect("no settings", defaults, [&] { return read({}, L"flag"); });
  pairs.expect("null default", "", [&] { return MirelCore::get(settings, L"other", nullptr).stringAnsi(); });
}

}  // namespace
}  // namespace MirelAlgorithms
