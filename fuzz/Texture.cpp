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

/// Whether an operation neither refuses nor passes on an error of OpenCV.
template <class Operation>
bool succeeds(const Operation& operation) {
  try {
    operation();
    return true;
  } catch (const std::invalid_argument&) {
  } catch (const cv::Exception&) {
  }
  return false;
}

struct Features {
  Features(FuzzedDataProvider& data, int width)
      : descriptors(data, fuzz::upTo(data, 30), width, CV_8UC1),
        points(descriptors.mat.rows + (fuzz::rarely(data) ? 1 : 0)) {
    for (cv::Vec2f& p : points) p = {anyReal<float>(data) * 8, anyReal<float>(data) * 8};
  }
  int code() const {
    return points.empty()                                       ? 1
           : descriptors.mat.empty()                            ? 2
           : points.size() != std::size_t(descriptors.mat.rows) ? 3
                                                                : 0;
  }
  fuzz::ExactMatrix descriptors;
  Points points;
};

void matchLists(FuzzedDataProvider& data, const fuzz::Settings& settings) {
  const int width = data.PickValueInArray({1, 16, 32, 32, 61, 64});
  const Features f1(data, width);
  Features f2(data, fuzz::rarely(data) ? 33 : width);
  const cv::Mat &d1 = f1.descriptors.mat, d2 = data.ConsumeBool() ? d1 : f2.descriptors.mat;
  if (d1.data == d2.data) {
    const cv::Vec2f shift(anyReal<float>(data), anyReal<float>(data));
    f2.points = f1.points;
    for (cv::Vec2f& p : f2.points) p += shift;
  }
  const int code1 = f1.code(), code2 = d1.data == d2.data ? code1 : f2.code();
  std::vector<cv::Vec3i> matches(1), agreed(1);
  int code = 0, codeOfAgreed = 0;
  const bool fine = succeeds([&] { code = textureMatch(f1.points, d1, f2.points, d2, matches, settings); });
  const bool agrees = succeeds([&] { codeOfAgreed = textureMatch(d1, d2, agreed, settings); });
  if (fine) MIREL_CHECK(code == (code1 != 0 ? code1 : code2 != 0 ? code2 + 3 : 0));
  if (agrees) MIREL_CHECK(codeOfAgreed == (d1.empty() ? 2 : d2.empty() ? 5 : 0));
  if (!fine || code != 0) MIREL_CHECK(matches.size() == 1);
  if (!agrees || codeOfAgreed != 0) MIREL_CHECK(agreed.size() == 1);
  MIREL_CHECK(f1.descriptors.untouched() && f2.descriptors.untouched());
  if (!fine || code != 0) return;
  std::vector<cv::Vec3i> wanted(1);
  for (const cv::Vec3i& match : literal::match(f1.points, d1, f2.points, d2, settings)) wanted.push_back(match);
  MIREL_CHECK(matches == wanted);
  wanted.resize(1);
  for (const cv::DMatch& m : literal::agreedMatches(d1, d2, settings))
    wanted.emplace_back(m.queryIdx, m.trainIdx, static_cast<int>(m.distance));
  MIREL_CHECK(agreed == wanted);
}

struct Extracted {
  Points points;
  cv::Mat descriptors;
  bool fine;

  Extracted(const cv::Mat& image, const fuzz::Settings& settings) : points(1), descriptors(2, 2, CV_8UC1) {
    const cv::Mat before = descriptors;
    int code = 0;
    fine = succeeds([&] { code = textureExtract(image, points, descriptors, settings); });
    if (fine) MIREL_CHECK(code == (image.empty() ? 1 : 0));
    fine = fine && code == 0;
    if (!fine) MIREL_CHECK(points.size() == 1 && descriptors.data == before.data);
    if (!fine) return;
    points.erase(points.begin());
    MIREL_CHECK(points.size() == std::size_t(descriptors.rows) && (points.empty() || descriptors.cols == 32));
    const literal::Features wanted = literal::extract(image, settings);
    MIREL_CHECK(literal::positions(wanted.keyPoints) == points && same(wanted.descriptors, descriptors));
  }
};

void matchImages(FuzzedDataProvider& data, const fuzz::Settings& settings) {
  const auto image1 = fuzz::anyImage(data, 72), other = fuzz::anyImage(data, 72);
  const cv::Mat image2 = data.ConsumeBool() ? image1.mat : other.mat;
  const Extracted e1(image1.mat, settings), e2(image2, settings);
  Points points1(1), points2, wanted1(1), wanted2;
  int code = 0;
  const bool fine =
      succeeds([&] { code = textureExtractAndMatch(image1.mat, image2, points1, points2, settings); }) && code == 0;
  if (fine) {
    MIREL_CHECK(e1.fine && e2.fine);
    for (const cv::Vec3i& match : literal::match(e1.points, e1.descriptors, e2.points, e2.descriptors, settings))
      wanted1.push_back(e1.points[match[0]]), wanted2.push_back(e2.points[match[1]]);
  }
  MIREL_CHECK(points1 == wanted1 && points2 == wanted2 && image1.untouched() && other.untouched());
}

void matchMany(FuzzedDataProvider& data, const fuzz::Settings& settings) {
  const auto image1 = fuzz::anyImage(data, 72), other = fuzz::anyImage(data, 72);
  const cv::Mat image2 = data.ConsumeBool() ? image1.mat : other.mat;
  int code = 0;
  std::vector<MultiMatch> tracks;
  if (succeeds([&] { code = textureMultiMatch({image1.mat, image2, {}}, tracks, settings); })) {
    MIREL_CHECK(code == (image1.mat.empty() ? 1 : 0));
    const int least = fuzz::valueOf(settings, L"txmMinMultipicity", 2);
    for (const MultiMatch& track : tracks)
      MIREL_CHECK(track.multiplicity >= least && track.multiplicity <= 2 && track.maxDistance <= 256);
  } else {
    MIREL_CHECK(tracks.empty());
  }
  MIREL_CHECK(image1.untouched() && other.untouched());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  constexpr void (*subjects[])(FuzzedDataProvider&, const fuzz::Settings&) = {matchImages, matchLists, matchMany};
  const int subject = data.ConsumeIntegralInRange(0, 2);
  const fuzz::Settings settings = fuzz::anySettings(  // small pyramids: large ones are allowed, but slow
      data, "texture",
      {{L"txmToGray", -1, 100000},
       {L"txmCells", 1, 3},
       {L"txmMaxKeys", -1, 100},
       {L"txmORBmaxFeatures", -3, 300},
       {L"txmORBnLevels", 0, 9, false},
       {L"txmORBedgeThreshold", -1, 40, false},
       {L"txmORBpatchSize", 1, 40, false},
       {L"txmORBWTA_K", 2, 4},
       {L"txmORBfirstLevel", 0, 1, false}});
  const int kind = data.ConsumeIntegralInRange(0, 7);
  settings->set(L"txmORBscaleFactor",
                kind < 4   ? static_cast<double>(1.2f)
                : kind < 7 ? data.ConsumeFloatingPointInRange(0.95, 2.0)
                           : data.PickValueInArray({0.0, -1.2, 1.0, 1e-9, 1e30, HUGE_VAL, std::nan("")}));
  subjects[subject](data, settings);
  return 0;
}
