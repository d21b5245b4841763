/// Texture matching step by step, with OpenCV's parts alone: what the library has to equal, and what it is measured
/// beside.
#pragma once

#include <MirelAlgorithms/Host.h>

#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>
#include <vector>

namespace literal {

using Settings = MirelAlgorithms::SmartPtr<MirelAlgorithms::AttrContainer>;
using KeyPoints = std::vector<cv::KeyPoint>;
using Matches = std::vector<cv::DMatch>;

template <class T>
T setting(const Settings& settings, const wchar_t* key, T fallback) {
  return MirelCore::get(settings, MirelAlgorithms::String(key), fallback);
}

inline cv::Ptr<cv::ORB> createOrb(const Settings& settings) {
  const auto orb = cv::ORB::create();
  orb->setMaxFeatures(setting(settings, L"txmORBmaxFeatures", orb->getMaxFeatures()));
  orb->setScaleFactor(setting(settings, L"txmORBscaleFactor", orb->getScaleFactor()));
  orb->setNLevels(setting(settings, L"txmORBnLevels", orb->getNLevels()));
  orb->setEdgeThreshold(setting(settings, L"txmORBedgeThreshold", orb->getEdgeThreshold()));
  orb->setFirstLevel(setting(settings, L"txmORBfirstLevel", orb->getFirstLevel()));
  orb->setWTA_K(setting(settings, L"txmORBWTA_K", orb->getWTA_K()));
  orb->setScoreType(cv::ORB::ScoreType(setting(settings, L"txmORBscoreType", int(orb->getScoreType()))));
  orb->setPatchSize(setting(settings, L"txmORBpatchSize", orb->getPatchSize()));
  orb->setFastThreshold(setting(settings, L"txmORBfastThreshold", orb->getFastThreshold()));
  return orb;
}

inline KeyPoints detectInCells(cv::ORB& detector, const cv::Mat& image, const Settings& settings) {
  const int cells = setting(settings, L"txmCells", 3), perCell = setting(settings, L"txmMaxKeys", 400) / cells;
  cv::Mat mask = cv::Mat::zeros(image.size(), CV_8UC1);
  const int height = image.rows / cells, width = image.cols / cells;
  KeyPoints all;
  for (int y = 0; y < image.rows - height / 2; y += height)
    for (int x = 0; x < image.cols - width / 2; x += width) {
      cv::Mat cell = mask(cv::Rect(x, y, width, height));
      cell = 255;
      KeyPoints found;
      detector.detect(image, found, mask);
      cv::KeyPointsFilter::retainBest(found, perCell);
      all.insert(all.end(), found.begin(), found.end());
      cell = 0;
    }
  return all;
}

struct Features {
  KeyPoints keyPoints;
  cv::Mat descriptors;
};

inline Features extract(const cv::Mat& image, const Settings& settings) {
  cv::Mat grey;
  MirelCore::enhance(image, grey, setting(settings, L"txmToGray", 80000), {});
  Features features{detectInCells(*createOrb(settings), grey, settings), {}};
  cv::KeyPointsFilter::removeDuplicated(features.keyPoints);
  createOrb(settings)->compute(grey, features.keyPoints, features.descriptors);
  return features;
}

inline Matches matchOneWay(const cv::Mat& query, const cv::Mat& train, int norm, const Settings& settings) {
  if (query.empty() || train.empty()) return {};
  const double ratio = setting(settings, L"txmUniquenessRatio", 0.8);
  const bool byRatio = ratio > 0;
  std::vector<Matches> lists;
  cv::BFMatcher(norm, !byRatio).knnMatch(query, train, lists, byRatio ? 2 : 1, cv::noArray(), true);
  Matches matches;
  for (const Matches& list : lists)
    if (!byRatio || (list.size() == 2 && !(list[0].distance / list[1].distance >= ratio))) matches.push_back(list[0]);
  return matches;
}

inline Matches crossCheck(const Matches& forward, const Matches& backward) {
  Matches agreed;
  for (const cv::DMatch& there : forward)
    for (const cv::DMatch& back : backward)
      if (back.queryIdx == there.trainIdx && back.trainIdx == there.queryIdx && back.distance == there.distance) {
        agreed.emplace_back(there.queryIdx, there.trainIdx, there.distance);
        break;
      }
  return agreed;
}

inline Matches agreedMatches(const cv::Mat& descriptors1, const cv::Mat& descriptors2, const Settings& settings) {
  const int norm = createOrb(settings)->defaultNorm();
  return crossCheck(matchOneWay(descriptors1, descriptors2, norm, settings),
                    matchOneWay(descriptors2, descriptors1, norm, settings));
}

inline Matches filterByPosition(const Matches& matches, const std::vector<cv::Vec2f>& at1,
                                const std::vector<cv::Vec2f>& at2, const Settings& settings) {
  const double longest = setting(settings, L"txmMaxKeyDist", 500.0);
  Matches near, fitting;
  std::vector<cv::Point2f> from, to;
  for (const cv::DMatch& match : matches) {
    const cv::Vec2f shift = at2[match.trainIdx] - at1[match.queryIdx];
    const double dx = shift[0], dy = shift[1];
    if (!(dx * dx + dy * dy <= longest * longest)) continue;
    near.push_back(match);
    from.emplace_back(at1[match.queryIdx]);
    to.emplace_back(at2[match.trainIdx]);
  }
  if (near.size() < 5) return {};
  std::vector<uchar> inliers(near.size(), 255);
  if (cv::findHomography(from, to, cv::RANSAC, setting(settings, L"txmReprojectionError", 3.0), inliers, 2000, 0.995)
          .empty())
    return {};
  for (std::size_t i = 0; i < near.size(); ++i)
    if (inliers[i]) fitting.push_back(near[i]);
  return fitting;
}

inline std::vector<cv::Vec2f> positions(const KeyPoints& keyPoints) {
  std::vector<cv::Vec2f> points;
  for (const cv::KeyPoint& keyPoint : keyPoints) points.emplace_back(keyPoint.pt.x, keyPoint.pt.y);
  return points;
}

inline std::vector<cv::Vec3i> match(const std::vector<cv::Vec2f>& points1, const cv::Mat& descriptors1,
                                    const std::vector<cv::Vec2f>& points2, const cv::Mat& descriptors2,
                                    const Settings& settings) {
  std::vector<cv::Vec3i> matches;
  for (const cv::DMatch& match :
       filterByPosition(agreedMatches(descriptors1, descriptors2, settings), points1, points2, settings))
    matches.emplace_back(match.queryIdx, match.trainIdx, static_cast<int>(match.distance));
  return matches;
}

}  // namespace literal
