/// Settings of the two forms of `retrieveFeatures`, besides those of the steps they call.
#pragma once

namespace MirelAlgorithms {

/// Read first by the matrix form. Cells and budget are read here as well as by the steps that use them, which have
/// defaults of their own.
struct ExtractionSettings {
  int cells;
  int budget;
  int type;

  template <class Key>
  void keys(Key& key) {
    key(L"FBMnCells", cells, 3, "cells per image side");
    key(L"FBMnFeatures", budget, 900, "feature budget of all cells together");
    key(L"FBMType", type, 0, "0: fixed-point corners; 2: detector of FBMFeatureType; others: ORB, sub-pixel positions");
  }
};

/// Read by the matrix form for `FBMType` 2.
struct DetectorChoice {
  int featureType;

  template <class Key>
  void keys(Key& key) {
    key(L"FBMFeatureType", featureType, 3, "0 GFTT, 1 AKAZE, 2 MSER, 5 BRISK; others: ORB");
  }
};

}  // namespace MirelAlgorithms
