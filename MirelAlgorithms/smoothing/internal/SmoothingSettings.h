/// Settings of the smoothing of depth images and of point lists.
#pragma once

namespace MirelAlgorithms {

struct DenseSettings {
  int mode;
  int window;

  template <class Key>
  void keys(Key& key) {
    key(L"smoothDenseMode", mode, 0, "1: non-local means; everything else: median");
    key(L"smoothDenseRadius", window, 5, "width of the window, pixels, odd; the median takes 1, 3 and 5");
  }
};

struct SparseSettings {
  int mode;
  int mostPoints;
  int leastPoints;

  template <class Key>
  void keys(Key& key) {
    key(L"smoothSparseMode", mode, 0x4000,
        "bits 12 to 15: 2 neighbourhood median, 3 and 4 grid, 5 and 6 every so many rows, everything else a copy");
    key(L"smoothSparseMaxPts", mostPoints, 15000, "how many points the grid and the decimation aim at");
    key(L"smoothSparseMinPts", leastPoints, 100, "fewest points taken, and fewest given back for success");
  }
};

}  // namespace MirelAlgorithms
