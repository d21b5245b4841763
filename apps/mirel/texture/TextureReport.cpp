#include "texture/TextureReport.h"

#include "output/MatrixTable.h"

#include <fmt/format.h>

#include <algorithm>

namespace mirel {

namespace {

constexpr std::size_t mostInMatrix = 60, mostPairsListed = 100;

/// Number and note of each test, in the order of the tests.
std::vector<ReportFact> testFacts(const TexturePair& pair, const TextureTests& tests) {
  const auto both = [](int a, int b) { return fmt::format("{} / {}", a, b); };
  return {{"Features", both(pair.features1, pair.features2), "left / right"},
          {"After ratio test", both(pair.ratioForward, pair.ratioBackward),
           tests.ratio > 0 ? fmt::format("nearest / next nearest below {:g}", tests.ratio) : "no such test"},
          {"In both directions", fmt::format("{}", pair.agreed), "left to right gives what right to left gives"},
          {"Within distance", fmt::format("{}", pair.withinDistance),
           fmt::format("positions at most {:g} px apart", std::abs(tests.longestShift))},
          {"Fit one homography", fmt::format("{}", pair.matchCount()), "these are the matches"}};
}

ReportAnswer judgePair(const TextureResult& result) {
  constexpr double goodShare = 0.5;
  const TexturePair& pair = result.pairs[0];
  const std::string title =
      fmt::format("{} matches of {} and {}", pair.matchCount(), result.images[0].name, result.images[1].name);
  if (pair.matches.empty()) return {title, Verdict::bad, "No result: " + whyNoMatch(pair, result.tests) + "."};
  const std::string share = fmt::format("{} of the {} matches that pass the other tests fit one homography",
                                        pair.matchCount(), pair.withinDistance);
  if (pair.matchCount() < fewMatches) return {title, Verdict::weak, "Weak: " + share + "; so few can be chance."};
  if (pair.matchCount() < goodShare * pair.withinDistance) {
    return {title, Verdict::weak,
            "Weak: only " + share + "; a surface that is not flat, or repeated texture, can be the cause."};
  }
  return {title, Verdict::good, "Good: " + share + "."};
}

/// The images that have few matches with the first one, at most a few names.
std::string listOfWeak(const TextureResult& result, std::size_t& count) {
  constexpr std::size_t most = 6;
  std::string names;
  for (std::size_t j = 1; j < result.images.size(); ++j) {
    if (result.tableCell(0, j) >= fewMatches) continue;
    if (++count <= most) names += (count == 1 ? "" : ", ") + result.images[j].name;
  }
  return count > most ? names + fmt::format(" and {} more", count - most) : names;
}

ReportAnswer judgeTracks(const TextureResult& result) {
  const std::string title = fmt::format("{} of {} features of {} found again", result.tracks.size(),
                                        result.images[0].features(), result.images[0].name);
  if (!result.found()) return {title, Verdict::bad, "No result: " + whyNothing(result) + "."};
  std::size_t weak = 0;
  const std::string names = listOfWeak(result, weak);
  const std::size_t others = result.images.size() - 1;
  const int inAll = result.tracksByMultiplicity().back();
  const std::string everywhere = fmt::format("{} features are in all {} images", inAll, result.images.size());
  if (weak > 0) {
    return {
        title, Verdict::weak,
        fmt::format("Weak: fewer than {} matches with the first image, which can be chance, in {} of the {} others: "
                    "{}; {}.",
                    fewMatches, weak, others, names, everywhere)};
  }
  return {title, Verdict::good, fmt::format("Good: every other image shares features with the first; {}.", everywhere)};
}

std::string timeText(const StageClock& clock, const char* stage) {
  return fmt::format("{:.1f} ms", 1000 * clock.seconds(stage));
}

std::vector<ReportFact> pairFacts(const TextureResult& result, const StageClock& clock) {
  std::vector<ReportFact> list = testFacts(result.pairs[0], result.tests);
  list.push_back({"Descriptor distance, bits", distanceText(result.pairs[0]), "of 256"});
  list.push_back({"Time for features", timeText(clock, "features"), "both images"});
  list.push_back({"Time for matching", timeText(clock, "matching"), "with the counts"});
  return list;
}

std::vector<ReportFact> trackFacts(const TextureResult& result, const StageClock& clock) {
  const std::vector<int> counts = result.tracksByMultiplicity();
  double drift = 0;
  for (const TextureTrack& track : result.tracks) drift = std::max(drift, track.match.maxDistance);
  const auto matched = std::count_if(result.pairs.begin(), result.pairs.end(),
                                     [](const TexturePair& pair) { return pair.matchCount() >= fewMatches; });
  return {{"Images", fmt::format("{}", result.images.size()), ""},
          {"Features found again", fmt::format("{}", result.tracks.size()),
           fmt::format("in {} images or more, of {}", result.leastMultiplicity, result.images[0].features())},
          {"In all images", fmt::format("{}", counts.back()), "features of the first image"},
          {"Pairs with matches", fmt::format("{}", matched),
           fmt::format("of {}; {} matches or more", result.pairs.size(), fewMatches)},
          {"Largest drift, bits", fmt::format("{:g}", drift), "of a descriptor"},
          {"Time for features", timeText(clock, "features"), "every image once"},
          {"Time for pairs", timeText(clock, "matching"), "with the counts"},
          {"Time for tracks", timeText(clock, "tracks"), "features to tracks"}};
}

ReportTable multiplicityTable(const TextureResult& result) {
  ReportTable table{"Features of the first image by the number of images they are in", {"Images", "Features"}, {}};
  const std::vector<int> counts = result.tracksByMultiplicity();
  for (std::size_t m = 1; m < counts.size(); ++m) {
    if (static_cast<int>(m) >= result.leastMultiplicity)
      table.rows.push_back({fmt::format("{}", m), fmt::format("{}", counts[m])});
  }
  return table;
}

ReportTable imageTable(const TextureResult& result) {
  ReportTable table{"Images", {"Number", "Image", "Size, px", "Features", "Matches with the first"}, {}};
  for (std::size_t i = 0; i < result.images.size(); ++i) {
    const TextureImage& image = result.images[i];
    table.rows.push_back({fmt::format("{}", image.number), image.name,
                          fmt::format("{} x {}", image.grey.cols, image.grey.rows), fmt::format("{}", image.features()),
                          i == 0 ? "-" : fmt::format("{}", result.tableCell(0, i))});
  }
  return table;
}

ReportTable pairTable(const TextureResult& result) {
  std::vector<const TexturePair*> pairs;
  for (const TexturePair& pair : result.pairs) pairs.push_back(&pair);
  std::stable_sort(pairs.begin(), pairs.end(),
                   [](const TexturePair* a, const TexturePair* b) { return a->matchCount() > b->matchCount(); });
  const std::size_t listed = std::min(pairs.size(), mostPairsListed);
  ReportTable table{
      fmt::format("Pairs with the most matches, {} of {}", listed, pairs.size()),
      {"Left", "Right", "ratio, left", "ratio, right", "both directions", "in distance", "matches", "distance, bits"},
      {}};
  for (std::size_t k = 0; k < listed; ++k) {
    const TexturePair& pair = *pairs[k];
    const auto name = [&](int number) { return result.images[static_cast<std::size_t>(number) - 1].name; };
    table.rows.push_back({name(pair.from), name(pair.to)});
    for (const int count : {pair.ratioForward, pair.ratioBackward, pair.agreed, pair.withinDistance, pair.matchCount()})
      table.rows.back().push_back(fmt::format("{}", count));
    table.rows.back().push_back(distanceText(pair));
  }
  return table;
}

std::vector<ReportTable> tables(const TextureResult& result) {
  if (result.onePair()) return {imageTable(result)};
  std::vector<ReportTable> list;
  if (result.images.size() <= mostInMatrix) {
    list.push_back(
        matrixTable("Matches of each two images; features of an image with itself", "Image", result.names(),
                    [&](std::size_t i, std::size_t j) { return fmt::format("{}", result.tableCell(i, j)); }));
  }
  list.push_back(multiplicityTable(result));
  list.push_back(imageTable(result));
  list.push_back(pairTable(result));
  return list;
}

}  // namespace

Report textureReport(const TextureResult& result, const StageClock& clock) {
  return {.command = "mirel texture",
          .answer = result.onePair() ? judgePair(result) : judgeTracks(result),
          .facts = result.onePair() ? pairFacts(result, clock) : trackFacts(result, clock),
          .pictures = {},
          .charts = {},
          .tables = tables(result),
          .result = resultJson(result, clock),
          .run = {}};
}

}  // namespace mirel
