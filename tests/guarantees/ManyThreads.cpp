#include <gtest/gtest.h>

#include <random>
#include <thread>

#include "Capabilities.h"

namespace MirelAlgorithms {
namespace {

// Every thread calls all capabilities in an order of its own; the inputs are shared, the objects are not.
TEST(ManyThreads, GetTheAnswersOfOne) {
  constexpr unsigned threadCount = 8, rounds = 10;
  const Inputs& in = Inputs::small();
  const std::uint64_t inputs = in.digest();
  std::vector<std::uint64_t> expected;
  for (const Capability& capability : capabilities()) expected.push_back(capability.run(in));

  std::vector<std::string> wrong[threadCount];
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < threadCount; ++t)
    threads.emplace_back([&, t] {
      std::mt19937 random(t);
      std::vector<std::size_t> order(expected.size());
      for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
      for (unsigned round = 0; round < rounds; ++round) {
        std::shuffle(order.begin(), order.end(), random);
        for (const std::size_t i : order)
          if (capabilities()[i].run(in) != expected[i]) wrong[t].push_back(capabilities()[i].name);
      }
    });
  for (std::thread& thread : threads) thread.join();
  for (const auto& names : wrong) EXPECT_EQ(names, std::vector<std::string>());
  EXPECT_EQ(in.digest(), inputs) << "an input was written to";
}

}  // namespace
}  // namespace MirelAlgorithms
