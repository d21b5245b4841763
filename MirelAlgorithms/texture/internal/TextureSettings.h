/// Settings of texture matching.
#pragma once

namespace MirelAlgorithms {

/// Parameters of OpenCV's ORB; the defaults are those of a new object.
struct TextureOrbSettings {
  int maxFeatures;
  double scaleFactor;
  int nLevels;
  int edgeThreshold;
  int firstLevel;
  int wtaK;
  int scoreType;
  int patchSize;
  int fastThreshold;

  template <class Key>
  void keys(Key& key) {
    key(L"txmORBmaxFeatures", maxFeatures, 500, "ORB: features per cell, before the cell's own limit");
    key(L"txmORBscaleFactor", scaleFactor, static_cast<double>(1.2f), "ORB: scale from pyramid level to level");
    key(L"txmORBnLevels", nLevels, 8, "ORB: levels of the pyramid");
    key(L"txmORBedgeThreshold", edgeThreshold, 31, "ORB: border without features, pixels");
    key(L"txmORBfirstLevel", firstLevel, 0, "ORB: level that is the image itself; those before it are enlarged");
    key(L"txmORBWTA_K", wtaK, 2, "ORB: points per comparison, 2 to 4");
    key(L"txmORBscoreType", scoreType, 0, "ORB: 0 Harris score, everything else FAST score");
    key(L"txmORBpatchSize", patchSize, 31, "ORB: width of the patch that is described, pixels");
    key(L"txmORBfastThreshold", fastThreshold, 20, "ORB: grey levels that make a FAST corner");
  }
};

struct TextureExtractionSettings {
  int enhancement;
  int cells;
  int budget;

  template <class Key>
  void keys(Key& key) {
    key(L"txmToGray", enhancement, 80000, "strength of the image enhancement before detection");
    key(L"txmCells", cells, 3, "cells per image side");
    key(L"txmMaxKeys", budget, 400, "feature budget; each cell keeps this divided by the cells per side");
  }
};

struct TextureMatchSettings {
  double ratio;
  double longestShift;
  double reprojectionError;

  template <class Key>
  void keys(Key& key) {
    key(L"txmUniquenessRatio", ratio, 0.8, "nearest over next nearest distance stays below; 0 or less: nearest alone");
    key(L"txmMaxKeyDist", longestShift, 500.0, "longest distance between the positions of a match, pixels");
    key(L"txmReprojectionError", reprojectionError, 3.0, "largest error of an inlier of the homography, pixels");
  }
};

struct TextureDrawSettings {
  int wait;

  template <class Key>
  void keys(Key& key) {
    key(L"txmDraw", wait, -1, "0 or more: show the matches for that many milliseconds, 0 until a key is pressed");
  }
};

struct MultiMatchSettings {
  int leastMultiplicity;

  template <class Key>
  void keys(Key& key) {
    key(L"txmMinMultipicity", leastMultiplicity, 2, "fewest images, with the first one, that a feature is found in");
  }
};

}  // namespace MirelAlgorithms
