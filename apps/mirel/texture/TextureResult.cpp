#include "texture/TextureResult.h"

#include "output/MatrixTable.h"
#include "output/Summary.h"

#include <fmt/format.h>

#include <algorithm>

namespace mirel {

namespace {

using nlohmann::json;

json pairJson(const TexturePair& pair, const TextureTests& tests) {
  json object = {{"from", pair.from},
                 {"to", pair.to},
                 {"features_1", pair.features1},
                 {"features_2", pair.features2},
                 {"after_ratio_test_1", pair.ratioForward},
                 {"after_ratio_test_2", pair.ratioBackward},
                 {"in_both_directions", pair.agreed},
                 {"within_distance", pair.withinDistance},
                 {"matches", pair.matchCount()}};
  if (pair.matches.empty()) object["reason"] = whyNoMatch(pair, tests);
  return object;
}

json tableJson(const TextureResult& result) {
  json rows = json::array();
  for (std::size_t i = 0; i < result.images.size(); ++i) {
    json row = json::array();
    for (std::size_t j = 0; j < result.images.size(); ++j) row.push_back(result.tableCell(i, j));
    rows.push_back(std::move(row));
  }
  return rows;
}

json tracksJson(const TextureResult& result) {
  json byMultiplicity = json::array();
  const std::vector<int> counts = result.tracksByMultiplicity();
  for (std::size_t m = 1; m < counts.size(); ++m) byMultiplicity.push_back({{"images", m}, {"features", counts[m]}});
  return {{"count", result.tracks.size()},
          {"least_multiplicity", result.leastMultiplicity},
          {"by_multiplicity", byMultiplicity}};
}

std::string imageLines(const TextureResult& result) {
  if (!result.onePair()) {
    return summaryLine("images", fmt::format("{} ({} to {})", result.images.size(), result.images.front().name,
                                             result.images.back().name));
  }
  std::string text;
  for (const TextureImage& image : result.images) {
    text += summaryLine(
        "image " + std::to_string(image.number),
        fmt::format("{} ({} x {} px), {} features", image.name, image.grey.cols, image.grey.rows, image.features()));
  }
  return text;
}

std::string pairLines(const TexturePair& pair, const TextureTests& tests) {
  return summaryLine("ratio test", fmt::format("{} and {} features left", pair.ratioForward, pair.ratioBackward)) +
         summaryLine("both ways", fmt::format("{} matches agree", pair.agreed)) +
         summaryLine("distance", fmt::format("{} within {:g} px", pair.withinDistance, std::abs(tests.longestShift))) +
         summaryLine("homography", fmt::format("{} matches", pair.matchCount())) +
         summaryLine("bits apart", distanceText(pair));
}

std::string trackLines(const TextureResult& result) {
  constexpr std::size_t mostInConsole = 12;
  std::string text = summaryLine(
      "features", fmt::format("{} of {} in {} are found in {} images or more", result.tracks.size(),
                              result.images[0].features(), result.images[0].name, result.leastMultiplicity));
  const std::vector<int> counts = result.tracksByMultiplicity();
  for (std::size_t m = 1; m < counts.size(); ++m) {
    if (counts[m] > 0) text += summaryLine("", fmt::format("{} in {} images", counts[m], m));
  }
  if (result.images.size() > mostInConsole) return text;
  return text + "Matches of each two images, features of an image with itself\n" +
         matrixText(result.names(),
                    [&](std::size_t i, std::size_t j) { return fmt::format("{}", result.tableCell(i, j)); });
}

}  // namespace

const TexturePair& TextureResult::pairOf(std::size_t i, std::size_t j) const {
  const auto [first, second] = std::minmax(i, j);
  return pairs[first * (2 * images.size() - first - 1) / 2 + second - first - 1];
}

int TextureResult::tableCell(std::size_t i, std::size_t j) const {
  return i == j ? images[i].features() : pairOf(i, j).matchCount();
}

std::vector<std::string> TextureResult::names() const {
  std::vector<std::string> list;
  for (const TextureImage& image : images) list.push_back(image.name);
  return list;
}

std::vector<int> TextureResult::tracksByMultiplicity() const {
  std::vector<int> counts(images.size() + 1);
  for (const TextureTrack& track : tracks) ++counts[static_cast<std::size_t>(track.match.multiplicity)];
  return counts;
}

std::vector<TextureTrack> followTexture(const TextureResult& result, const Settings& settings) {
  std::vector<cv::Mat> images;
  for (const TextureImage& image : result.images) images.push_back(image.grey);
  std::vector<MirelAlgorithms::MultiMatch> matches;
  MirelAlgorithms::textureMultiMatch(images, matches, settings.container());

  const std::size_t others = images.size() - 1;
  std::vector<std::vector<bool>> foundIn(result.images[0].points.size(), std::vector<bool>(others));
  for (std::size_t j = 0; j < others; ++j) {
    for (const cv::Vec3i& match : result.pairOf(0, j + 1).matches)
      foundIn[static_cast<std::size_t>(match[0])][j] = true;
  }
  std::erase_if(foundIn, [&](const std::vector<bool>& found) {
    return 1 + std::count(found.begin(), found.end(), true) < result.leastMultiplicity;
  });
  std::vector<TextureTrack> tracks;
  for (std::size_t i = 0; i < matches.size(); ++i) tracks.push_back({matches[i], foundIn.at(i)});
  return tracks;
}

std::string whyNothing(const TextureResult& result) {
  if (result.onePair()) {
    return fmt::format("no match of {} and {}: {}", result.images[0].name, result.images[1].name,
                       whyNoMatch(result.pairs[0], result.tests));
  }
  const std::size_t others = result.images.size() - 1;
  const auto fewer = [](const TexturePair& a, const TexturePair& b) { return a.matchCount() < b.matchCount(); };
  const auto best = std::max_element(result.pairs.begin(), result.pairs.begin() + static_cast<std::ptrdiff_t>(others),
                                     fewer);  // of those with the first image
  const std::string& first = result.images[0].name;
  const std::string start =
      fmt::format("no feature of {} is found in {} images or more: ", first, result.leastMultiplicity);
  if (!best->matches.empty()) {
    return start + fmt::format("{} matches with {} are the most that it has", best->matchCount(),
                               result.images[static_cast<std::size_t>(best->to) - 1].name);
  }
  const auto nearest =
      std::max_element(result.pairs.begin(), result.pairs.begin() + static_cast<std::ptrdiff_t>(others),
                       [](const TexturePair& a, const TexturePair& b) { return a.agreed < b.agreed; });
  return start + fmt::format("it has no match with any of the {} others; with {}: {}", others,
                             result.images[static_cast<std::size_t>(nearest->to) - 1].name,
                             whyNoMatch(*nearest, result.tests));
}

json resultJson(const TextureResult& result, const StageClock& clock) {
  json images = json::array(), pairs = json::array(), milliseconds = json::object();
  for (const TextureImage& image : result.images) {
    images.push_back({{"image", image.number},
                      {"name", image.name},
                      {"width_px", image.grey.cols},
                      {"height_px", image.grey.rows},
                      {"features", image.features()}});
  }
  for (const TexturePair& pair : result.pairs) pairs.push_back(pairJson(pair, result.tests));
  for (const auto& [stage, seconds] : clock.stages()) milliseconds[stage] = 1000 * seconds;
  json object = {{"schema", 1},    {"command", "texture"},       {"images", images},
                 {"pairs", pairs}, {"table", tableJson(result)}, {"milliseconds", milliseconds}};
  if (!result.onePair()) object["tracks"] = tracksJson(result);
  return object;
}

std::string distanceText(const TexturePair& pair) {
  if (pair.matches.empty()) return "-";
  std::vector<int> distances;
  for (const cv::Vec3i& match : pair.matches) distances.push_back(match[2]);
  std::sort(distances.begin(), distances.end());
  return fmt::format("{} to {}, median {}", distances.front(), distances.back(), distances[distances.size() / 2]);
}

std::string summaryText(const TextureResult& result, const StageClock& clock) {
  return imageLines(result) + (result.onePair() ? pairLines(result.pairs[0], result.tests) : trackLines(result)) +
         summaryLine("time", describeStages(clock));
}

}  // namespace mirel
