#include <MirelAlgorithms/geometry/internal/SeededRandom.h>

#include <cstdint>
#include <cstdlib>

namespace MirelAlgorithms {

#if defined(__GLIBC__)

void extendSeededRandom(std::vector<int>& numbers, std::size_t count) {
  if (numbers.size() >= count) return;
  char state[128];  // the size that gives the generator of rand
  random_data generator{};
  initstate_r(1, state, sizeof state, &generator);
  numbers.resize(count);
  for (int& number : numbers) {
    std::int32_t drawn = 0;
    random_r(&generator, &drawn);
    number = drawn;
  }
}

#else

void extendSeededRandom(std::vector<int>& numbers, std::size_t count) {
  if (numbers.size() >= count) return;
  std::srand(1);
  numbers.resize(count);
  for (int& number : numbers) number = std::rand();
}

#endif

}  // namespace MirelAlgorithms
