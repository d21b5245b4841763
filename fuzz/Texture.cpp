/// Texture features and their matching with any settings: codes as promised, matches as OpenCV's parts find them, both
/// forms alike, outputs untouched by errors.
#include <MirelAlgorithms/texture/MultiMatch.h>
#include <MirelAlgorithms/texture/TextureFeatures.h>
#include <MirelAlgorithms/texture/TextureMatching.h>
#include <support/Matrices.h>
#include <texture/LiteralTexture.h>

#include <cmath>

#include "Inputs.h"

namespace {

using namespace MirelAlgorithms;
using Points = std::vector<cv::Vec2f>;

int codeOf(const fuzz::Frame& frame) {
  if (frame.keyPoints.empty()) return 1;
  if (frame.descriptors.mat.empty()) return 2;
  return frame.keyPoints.size() == static_cast<std::size_t>(frame.descriptors.mat.rows) ? 0 : 3;
}

void matchLists(FuzzedDataProvider& data, const fuzz::Settings& settings) {
  const int width = data.PickValueInArray({1, 16, 32, 32, 61, 64});
  const fuzz::Frame f1(data, width);
  fuzz::Frame f2(data, fuzz::rarely(data) ? 33 : width);
  if (data.ConsumeBool()) f2.resemble(data, f1);
  const cv::Mat &d1 = f1.descriptors.mat, &d2 = f2.descriptors.mat;
  Points p1 = literal::positions(f1.keyPoints), p2 = literal::positions(f2.keyPoints);
  const int code1 = codeOf(f1), code2 = codeOf(f2);
  std::vector<cv::Vec3i> matches, agreed, wanted, wantedAgreed;
  int code = 0, codeOfAgreed = 0;
  const End end = endOf([&] { code = textureMatch(p1, d1, p2, d2, matches, settings); });
  const End endOfAgreed = endOf([&] { codeOfAgreed = textureMatch(d1, d2, agreed, settings); });
  MIREL_CHECK(f1.descriptors.untouched() && f2.descriptors.untouched());
  if (end == End::well) MIREL_CHECK(code == (code1 != 0 ? code1 : code2 != 0 ? code2 + 3 : 0));
  if (endOfAgreed == End::well) MIREL_CHECK(codeOfAgreed == (d1.empty() ? 2 : d2.empty() ? 5 : 0));
  if (end == End::well && code == 0) {
    wanted = literal::match(p1, d1, p2, d2, settings);
    for (const cv::DMatch& m : literal::agreedMatches(d1, d2, settings))
      wantedAgreed.emplace_back(m.queryIdx, m.trainIdx, static_cast<int>(m.distance));
    MIREL_CHECK(agreed == wantedAgreed);
  }
  MIREL_CHECK(matches == wanted);
}

// Whether there are features; they are what OpenCV's parts find.
bool extract(const cv::Mat& image, const fuzz::Settings& settings, Points& points, cv::Mat& descriptors) {
  int code = 0;
  const End end = endOf([&] { code = textureExtract(image, points, descriptors, settings); });
  if (end == End::well) MIREL_CHECK(code == (image.empty() ? 1 : 0));
  if (end != End::well || code != 0) {
    MIREL_CHECK(points.empty() && descriptors.empty());
    return false;
  }
  const literal::Features wanted = literal::extract(image, settings);
  MIREL_CHECK(literal::positions(wanted.keyPoints) == points && same(wanted.descriptors, descriptors));
  return true;
}

void matchImages(FuzzedDataProvider& data, const fuzz::Settings& settings) {
  const auto image1 = fuzz::anyImage(data, 72), other = fuzz::anyImage(data, 72);
  const cv::Mat image2 = data.ConsumeBool() ? image1.mat : other.mat;
  Points points1, points2, all1, all2, wanted1, wanted2;
  cv::Mat descriptors1, descriptors2;
  const bool fine1 = extract(image1.mat, settings, all1, descriptors1);
  const bool fine2 = extract(image2, settings, all2, descriptors2);
  int code = 0;
  const End end = endOf([&] { code = textureExtractAndMatch(image1.mat, image2, points1, points2, settings); });
  if (end == End::well && code == 0) {
    MIREL_CHECK(fine1 && fine2);
    for (const cv::Vec3i& match : literal::match(all1, descriptors1, all2, descriptors2, settings)) {
      wanted1.push_back(all1[match[0]]);
      wanted2.push_back(all2[match[1]]);
    }
  }
  MIREL_CHECK(points1 == wanted1 && points2 == wanted2 && image1.untouched() && other.untouched());
}

void matchMany(FuzzedDataProvider& data, const fuzz::Settings& settings) {
  const auto image1 = fuzz::anyImage(data, 72), other = fuzz::anyImage(data, 72);
  const cv::Mat image2 = data.ConsumeBool() ? image1.mat : other.mat;
  int code = 0;
  std::vector<MultiMatch> tracks;
  const End end = endOf([&] { code = textureMultiMatch({image1.mat, image2, {}}, tracks, settings); });
  MIREL_CHECK(end == End::well ? code == (image1.mat.empty() ? 1 : 0) : tracks.empty());
  const int least = fuzz::valueOf(settings, L"txmMinMultipicity", 2);
  for (const MultiMatch& track : tracks)
    MIREL_CHECK(track.multiplicity >= least && track.multiplicity <= 2 && track.maxDistance <= 256);
  MIREL_CHECK(image1.untouched() && other.untouched());
}

}  // namespace

void feed(FuzzedDataProvider& data) {
  constexpr void (*subjects[])(FuzzedDataProvider&, const fuzz::Settings&) = {matchImages, matchLists, matchMany};
  const int subject = data.ConsumeIntegralInRange(0, 2);
  const fuzz::Settings settings = fuzz::anySettings(data, "texture");
  const int kind = data.ConsumeIntegralInRange(0, 7);
  settings->set(L"txmORBscaleFactor",
                kind < 4   ? static_cast<double>(1.2f)
                : kind < 7 ? data.ConsumeFloatingPointInRange(0.95, 2.0)
                           : data.PickValueInArray({0.0, -1.2, 1.0, 1e-9, 1e30, HUGE_VAL, std::nan("")}));
  subjects[subject](data, settings);
}
