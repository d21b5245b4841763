/// What matching reads and writes for each key point: predictions and matches.
#pragma once

#include <cstdint>

namespace MirelAlgorithms {

/// Where a key point of the first frame is expected in the second frame.
struct FBPrediction {
  float x;               ///< expected column in the second frame, pixels
  float y;               ///< expected row in the second frame, pixels
  float searchRadiusSq;  ///< square of the search radius, pixels squared
  std::int32_t state;    ///< where the position comes from. 1: the key point's own; 3: moved by the image motion;
                         ///< 4: the position of its match; 2: free for a prediction of the caller's own
};

/// One accepted pair.
struct FBMatch {
  std::int32_t queryIdx;   ///< index of the key point in the first frame
  std::int32_t trainIdx;   ///< index of the key point in the second frame
  std::uint16_t distance;  ///< Hamming distance on the 1024-bit scale
  float predictedX;        ///< column that was predicted when the pair was made
  float predictedY;        ///< row that was predicted when the pair was made
};

}  // namespace MirelAlgorithms
