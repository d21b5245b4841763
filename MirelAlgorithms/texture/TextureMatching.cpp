#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/frame/internal/Settings.h>
#include <MirelAlgorithms/texture/TextureMatching.h>
#include <MirelAlgorithms/texture/internal/Display.h>
#include <MirelAlgorithms/texture/internal/MatchFilters.h>
#include <MirelAlgorithms/texture/internal/OneWayMatches.h>
#include <MirelAlgorithms/texture/internal/TextureOrb.h>
#include <MirelAlgorithms/texture/internal/TextureSettings.h>

#include <opencv2/highgui.hpp>
#include <stdexcept>
#include <string>

namespace MirelAlgorithms {
namespace {

// Steps 1 and 2: what both directions agree on.
std::vector<cv::DMatch> agreedMatches(const char* function, const cv::Mat& descriptors1, const cv::Mat& descriptors2,
                                      int norm, double ratio) {
  if (descriptors1.empty() || descriptors2.empty()) return {};
  if (norm != cv::NORM_HAMMING && norm != cv::NORM_HAMMING2)
    refuse(function, "txmORBWTA_K", "a value without a norm", "2 to 4");
  const auto [of1, of2] = findNearestRows(function, descriptors1, descriptors2, norm == cv::NORM_HAMMING2);
  if (ratio > 0) return crossCheckMatches(matchesByRatio(of1, ratio), matchesByRatio(of2, ratio), of2.size());
  return crossCheckMatches(matchesByChoice(of1.size(), of2), matchesByChoice(of2.size(), of1), of2.size());
}

// Steps 3 and 4.
template <class Position>
std::vector<PlacedMatch> fittingMatches(const std::vector<cv::DMatch>& agreed, const Position& position1,
                                        const Position& position2, const TextureMatchSettings& settings) {
  std::vector<PlacedMatch> matches;
  matches.reserve(agreed.size());
  for (const cv::DMatch& match : agreed)
    matches.push_back(
        {match.queryIdx, match.trainIdx, match.distance, position1(match.queryIdx), position2(match.trainIdx)});
  filterByKeyDistance(matches, settings.longestShift);
  filterByHomography(matches, settings.reprojectionError);
  return matches;
}

auto positionsIn(const std::vector<cv::Vec2f>& points) {
  return [&points](int i) { return cv::Point2f(points[static_cast<std::size_t>(i)]); };
}

int textureMatchCode(const std::vector<cv::Vec2f>& points, const cv::Mat& descriptors) {
  if (points.empty()) return 1;
  if (descriptors.empty()) return 2;
  return points.size() == static_cast<std::size_t>(descriptors.rows) ? 0 : 3;
}

void requireDisplay() {
  if (!hasDisplay())
    throw std::runtime_error(
        "textureExtractAndMatch: txmDraw asks for a window, and there is no display to open it on; set DISPLAY, or "
        "txmDraw to -1");
}

void show(const cv::Mat& image1, const std::vector<cv::KeyPoint>& keyPoints1, const cv::Mat& image2,
          const std::vector<cv::KeyPoint>& keyPoints2, const std::vector<PlacedMatch>& matches, int wait) {
  requireDisplay();
  std::vector<cv::DMatch> lines;
  lines.reserve(matches.size());
  for (const PlacedMatch& match : matches) lines.emplace_back(match.query, match.train, match.distance);
  cv::Mat picture;
  cv::drawMatches(image1, keyPoints1, image2, keyPoints2, lines, picture, cv::Scalar::all(-1), cv::Scalar::all(-1), {},
                  cv::DrawMatchesFlags::NOT_DRAW_SINGLE_POINTS);
  cv::namedWindow("matches", cv::WINDOW_NORMAL);
  cv::imshow("matches", picture);
  cv::waitKey(wait);
}

}  // namespace

int textureMatch(const std::vector<cv::Vec2f>& points1, const cv::Mat& descriptors1, std::vector<cv::Vec2f>& points2,
                 const cv::Mat& descriptors2, std::vector<cv::Vec3i>& matches, SmartPtr<AttrContainer> attrs) {
  if (const int code = textureMatchCode(points1, descriptors1)) return code;
  if (const int code = textureMatchCode(points2, descriptors2)) return code + 3;
  const auto settings = readSettings<TextureMatchSettings>(attrs);
  const int norm = createTextureOrb(attrs)->defaultNorm();
  const auto agreed = agreedMatches("textureMatch", descriptors1, descriptors2, norm, settings.ratio);
  const auto fitting = fittingMatches(agreed, positionsIn(points1), positionsIn(points2), settings);
  matches.reserve(matches.size() + fitting.size());
  for (const PlacedMatch& match : fitting)
    matches.emplace_back(match.query, match.train, static_cast<int>(match.distance));
  return 0;
}

int textureMatch(const cv::Mat& descriptors1, const cv::Mat& descriptors2, std::vector<cv::Vec3i>& matches,
                 SmartPtr<AttrContainer> attrs) {
  if (descriptors1.empty()) return 2;
  if (descriptors2.empty()) return 5;
  const auto settings = readSettings<TextureMatchSettings>(attrs);
  const int norm = createTextureOrb(attrs)->defaultNorm();
  const auto agreed = agreedMatches("textureMatch", descriptors1, descriptors2, norm, settings.ratio);
  matches.reserve(matches.size() + agreed.size());
  for (const cv::DMatch& match : agreed)
    matches.emplace_back(match.queryIdx, match.trainIdx, static_cast<int>(match.distance));
  return 0;
}

int textureExtractAndMatch(const cv::Mat& image1, const cv::Mat& image2, std::vector<cv::Vec2f>& points1,
                           std::vector<cv::Vec2f>& points2, SmartPtr<AttrContainer> attrs) {
  constexpr const char* function = "textureExtractAndMatch";
  if (image1.empty()) return 1;
  if (image2.empty()) return 2;
  const auto settings = readSettings<TextureMatchSettings>(attrs);
  const int wait = readSettings<TextureDrawSettings>(attrs).wait;
  const TextureFeatures features1 = extractTexture(function, image1, attrs);
  const TextureFeatures features2 = extractTexture(function, image2, attrs);
  const int norm = createTextureOrb(attrs)->defaultNorm();
  const auto agreed = agreedMatches(function, features1.descriptors, features2.descriptors, norm, settings.ratio);
  const auto positions = [](const TextureFeatures& features) {
    return [&features](int i) { return features.keyPoints[static_cast<std::size_t>(i)].pt; };
  };
  const auto matches = fittingMatches(agreed, positions(features1), positions(features2), settings);
  if (wait >= 0) show(image1, features1.keyPoints, image2, features2.keyPoints, matches, wait);
  points1.reserve(points1.size() + matches.size());
  points2.reserve(points2.size() + matches.size());
  for (const PlacedMatch& match : matches) {
    points1.emplace_back(match.at1.x, match.at1.y);
    points2.emplace_back(match.at2.x, match.at2.y);
  }
  return 0;
}

}  // namespace MirelAlgorithms
