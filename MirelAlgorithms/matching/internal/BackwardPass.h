/// Which pairs of the forward pass hold up.
#pragma once

#include <MirelAlgorithms/matching/internal/ForwardPass.h>

#include <cstdint>
#include <vector>

namespace MirelAlgorithms {

/// One flag for each feature of the first frame: 1 when it has a nearest candidate, this candidate is clearly nearer
/// than the second (best / second <= ratio), and no other feature is nearly as near to the same candidate (none within
/// best / ratio).
std::vector<std::uint8_t> acceptedPairs(const ForwardPass& forward, float ratio);

/// best / ratio, truncated to a 32-bit integer as x86 does it (anything that does not fit becomes -2^31), low 16 bits.
std::uint16_t blockingDistance(std::uint16_t best, float ratio);

}  // namespace MirelAlgorithms
