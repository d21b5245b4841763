/// The C library's sequence of random numbers.
#pragma once

#include <cstddef>
#include <vector>

namespace MirelAlgorithms {

/// Makes `numbers` at least `count` long: what `rand` gives after `srand(1)`. On glibc the caller's own sequence goes
/// on undisturbed; elsewhere it starts anew.
void extendSeededRandom(std::vector<int>& numbers, std::size_t count);

}  // namespace MirelAlgorithms
