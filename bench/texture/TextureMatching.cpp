// Texture matching of two photographs and of six against the literal steps (detection with a mask per cell, two passes
// of the brute force matcher) and against plain ORB, cross-checked matcher and homography. Enhancement is off.
#include <MirelAlgorithms/texture/MultiMatch.h>
#include <MirelAlgorithms/texture/TextureFeatures.h>
#include <MirelAlgorithms/texture/TextureMatching.h>
#include <benchmark/benchmark.h>

#include <opencv2/imgproc.hpp>
#include <string>

#include "../../tests/texture/LiteralTexture.h"
#include "../OneThread.h"
#include "../features/Images.h"

namespace {

using namespace MirelAlgorithms;

struct Scene {
  const char* name;
  bench::ImageFormat first, second;
};

constexpr Scene scenes[] = {{"graffiti", {"graf1.png", 800, 640}, {"graf3.png", 800, 640}},
                            {"leuven", {"leuvenA.jpg", 751, 563}, {"leuvenB.jpg", 751, 563}},
                            {"aloe", {"aloeL.jpg", 1282, 1110}, {"aloeR.jpg", 1282, 1110}}};

literal::Settings withoutEnhancement() {
  const literal::Settings settings(new AttrContainer());
  settings->set(L"txmToGray", 0);
  return settings;
}

void pairOf(benchmark::State& state, const Scene& scene) {
  const bench::OneThread oneThread;
  const cv::Mat image1 = bench::greyImage(scene.first), image2 = bench::greyImage(scene.second);
  const literal::Settings settings = withoutEnhancement();
  std::vector<cv::Vec2f> points1, points2;
  for (auto _ : state) {
    points1.clear();
    points2.clear();
    textureExtractAndMatch(image1, image2, points1, points2, settings);
  }
  state.counters["matches"] = static_cast<double>(points1.size());
}

std::size_t literalPair(const cv::Mat& image1, const cv::Mat& image2, const literal::Settings& settings) {
  const auto features1 = literal::extract(image1, settings), features2 = literal::extract(image2, settings);
  return literal::match(literal::positions(features1.keyPoints), features1.descriptors,
                        literal::positions(features2.keyPoints), features2.descriptors, settings)
      .size();
}

void pairLiteral(benchmark::State& state, const Scene& scene) {
  const bench::OneThread oneThread;
  const cv::Mat image1 = bench::greyImage(scene.first), image2 = bench::greyImage(scene.second);
  const literal::Settings settings = withoutEnhancement();
  std::size_t matches = 0;
  for (auto _ : state) matches = literalPair(image1, image2, settings);
  state.counters["matches"] = static_cast<double>(matches);
}

void pairByPlainOrb(benchmark::State& state, const Scene& scene) {
  const bench::OneThread oneThread;
  const cv::Mat image1 = bench::greyImage(scene.first), image2 = bench::greyImage(scene.second);
  const auto orb = cv::ORB::create(1200);
  std::vector<uchar> inliers;
  for (auto _ : state) {
    literal::Features features1, features2;
    orb->detectAndCompute(image1, {}, features1.keyPoints, features1.descriptors);
    orb->detectAndCompute(image2, {}, features2.keyPoints, features2.descriptors);
    literal::Matches matches;
    cv::BFMatcher(cv::NORM_HAMMING, true).match(features1.descriptors, features2.descriptors, matches);
    std::vector<cv::Point2f> from, to;
    for (const cv::DMatch& match : matches) {
      from.push_back(features1.keyPoints[match.queryIdx].pt);
      to.push_back(features2.keyPoints[match.trainIdx].pt);
    }
    cv::findHomography(from, to, cv::RANSAC, 3.0, inliers, 2000, 0.995);
  }
  state.counters["matches"] = cv::countNonZero(inliers);
}

template <class Match>
void match(benchmark::State& state, const Scene& scene, const Match& matcher) {
  const bench::OneThread oneThread;
  const literal::Settings settings = withoutEnhancement();
  std::vector<cv::Vec2f> points1, points2;
  cv::Mat descriptors1, descriptors2;
  textureExtract(bench::greyImage(scene.first), points1, descriptors1, settings);
  textureExtract(bench::greyImage(scene.second), points2, descriptors2, settings);
  for (auto _ : state) benchmark::DoNotOptimize(matcher(points1, descriptors1, points2, descriptors2, settings));
  state.counters["features"] = descriptors1.rows;
}

std::vector<cv::Vec3i> matchOf(const std::vector<cv::Vec2f>& points1, const cv::Mat& descriptors1,
                               std::vector<cv::Vec2f>& points2, const cv::Mat& descriptors2,
                               const literal::Settings& settings) {
  std::vector<cv::Vec3i> matches;
  textureMatch(points1, descriptors1, points2, descriptors2, matches, settings);
  return matches;
}

// A photograph and five views of it from further and further aside.
std::vector<cv::Mat> sixViews(const Scene& scene) {
  const cv::Mat image = bench::greyImage(scene.first);
  std::vector<cv::Mat> views{image};
  for (int i = 1; i < 6; ++i) {
    const float dx = 0.02f * static_cast<float>(i * image.cols), dy = 0.01f * static_cast<float>(i * image.rows);
    const float w = static_cast<float>(image.cols), h = static_cast<float>(image.rows);
    const cv::Point2f corners[] = {{0, 0}, {w, 0}, {w, h}, {0, h}},
                      moved[] = {{dx, dy}, {w, 0}, {w - dx, h}, {0, h - dy}};
    cv::Mat view;
    cv::warpPerspective(image, view, cv::getPerspectiveTransform(corners, moved), image.size());
    views.push_back(view);
  }
  return views;
}

void six(benchmark::State& state, const Scene& scene) {
  const bench::OneThread oneThread;
  const std::vector<cv::Mat> images = sixViews(scene);
  const literal::Settings settings = withoutEnhancement();
  std::vector<MultiMatch> found;
  for (auto _ : state) {
    found.clear();
    textureMultiMatch(images, found, settings);
  }
  state.counters["found"] = static_cast<double>(found.size());
}

void sixLiteral(benchmark::State& state, const Scene& scene) {
  const bench::OneThread oneThread;
  const std::vector<cv::Mat> images = sixViews(scene);
  const literal::Settings settings = withoutEnhancement();
  for (auto _ : state)
    for (std::size_t j = 1; j < images.size(); ++j)
      benchmark::DoNotOptimize(literalPair(images[0], images[j], settings));
}

const bool registered = [] {
  const auto add = [](const std::string& name, auto... arguments) {
    benchmark::RegisterBenchmark(name.c_str(), arguments...)->Unit(benchmark::kMillisecond);
  };
  for (const Scene& scene : scenes) {
    const std::string of = std::string("/") + scene.name;
    add("texture_pair" + of, pairOf, scene);
    add("texture_pair_literal" + of, pairLiteral, scene);
    add("ORB1200_crossCheck_homography" + of, pairByPlainOrb, scene);
    add("texture_match" + of, match<decltype(&matchOf)>, scene, matchOf);
    add("texture_match_literal" + of, match<decltype(&literal::match)>, scene, literal::match);
    add("texture_six" + of, six, scene);
    add("texture_six_literal_pairs" + of, sixLiteral, scene);
  }
  return true;
}();

}  // namespace
