/// The outcome of matching photographs, as numbers and as text.
#pragma once

#include "output/RunRecord.h"
#include "texture/TexturePair.h"

#include <MirelAlgorithms/texture/MultiMatch.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace mirel {

/// A feature of the first image that was found in others.
struct TextureTrack {
  MirelAlgorithms::MultiMatch match;
  std::vector<bool> foundIn;  ///< for each image after the first
};

/// Fewer matches than these may well be chance: few random positions always lie near some homography.
inline constexpr int fewMatches = 15;

struct TextureResult {
  TextureTests tests;
  int leastMultiplicity;
  std::vector<TextureImage> images;
  std::vector<TexturePair> pairs;    ///< every image with every later one, those of the first image first
  std::vector<TextureTrack> tracks;  ///< of three images or more, in the order of the first image's features

  bool onePair() const { return images.size() == 2; }

  /// The pair of two images, given by their places from 0, in any order.
  const TexturePair& pairOf(std::size_t i, std::size_t j) const;

  /// Matches of two images; of an image with itself: its features.
  int tableCell(std::size_t i, std::size_t j) const;

  std::vector<std::string> names() const;

  /// Tracks by their multiplicity; index 0 and 1 count none but for a least multiplicity of 1.
  std::vector<int> tracksByMultiplicity() const;

  /// Whether there is a match, or a track.
  bool found() const { return onePair() ? pairs[0].matchCount() > 0 : !tracks.empty(); }
};

/// The library's tracks, and for each the images it is in.
std::vector<TextureTrack> followTexture(const TextureResult& result, const Settings& settings);

/// Why there is nothing, in one line.
std::string whyNothing(const TextureResult& result);

/// Fields are described in docs/texture-json.md.
nlohmann::json resultJson(const TextureResult& result, const StageClock& clock);

/// Aligned lines for the console, with the table where it has room.
std::string summaryText(const TextureResult& result, const StageClock& clock);

/// "4 to 90, median 31".
std::string distanceText(const TexturePair& pair);

}  // namespace mirel
