/// Memory for vectors of many megabytes.
#pragma once

#include <cstddef>
#include <vector>

namespace MirelAlgorithms {

/// Asks the system to map memory in huge pages where that is on request: first use costs a fraction of the time, and
/// the processor finds its way faster. No effect on small blocks and on other systems.
void preferHugePages(void* memory, std::size_t bytes);

/// `vector.reserve(count)` in huge pages, if it allocates.
template <class T>
void reserveLarge(std::vector<T>& vector, std::size_t count) {
  if (count <= vector.capacity()) return;
  vector.reserve(count);
  preferHugePages(vector.data(), count * sizeof(T));
}

}  // namespace MirelAlgorithms
