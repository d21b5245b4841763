#include <MirelAlgorithms/filters/SavitzkyGolay.h>
#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "SameBits.h"

using namespace MirelAlgorithms;

namespace {

using Series = std::vector<double>;

const std::map<int, int> normalisers = {{5, 35},   {7, 21},    {9, 231},   {11, 429}, {13, 143}, {15, 1105},
                                        {17, 323}, {19, 2261}, {21, 3059}, {23, 805}, {25, 5175}};

Series weights(int window) {
  if (window == 25)
    return {-253, -138, -33, 62,  147, 222, 287, 343, 387, 422, 447,  462, 467,
            462,  447,  422, 387, 343, 287, 222, 147, 62,  -33, -138, -253};
  Series row;
  const int m = (window - 1) / 2;
  for (int i = -m; i <= m; ++i)
    row.push_back(std::round(normalisers.at(window) * 3.0 * (3.0 * m * m + 3.0 * m - 1.0 - 5.0 * i * i) /
                             ((2.0 * m + 3.0) * (2.0 * m + 1.0) * (2.0 * m - 1.0))));
  return row;
}

// On a padded copy, each term as (sample * weight) * (1 / normaliser), summed in order.
Series literalSmoother(const Series& in, int window) {
  const std::size_t n = in.size(), h = static_cast<std::size_t>(window - 1) / 2;
  Series padded, out;
  for (std::size_t i = h; i >= 1; --i) padded.push_back(in[i]);
  padded.insert(padded.end(), in.begin(), in.end());
  for (std::size_t i = 1; i <= h; ++i) padded.push_back(in[n - 1 - i]);
  const Series row = weights(window);
  for (std::size_t i = 0; i < n; ++i) {
    double sum = 0.0;
    for (std::size_t j = 0; j < row.size(); ++j) sum += padded[i + j] * row[j] * (1.0 / normalisers.at(window));
    out.push_back(sum);
  }
  return out;
}

TEST(SavitzkyGolay, EqualsTheLiteralSteps) {
  for (const CpuVariant variant : {CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512}) {
    limitCpuVariant(variant);
    for (const auto& [window, normaliser] : normalisers)
      for (const bool hostile : {false, true})
        for (const std::size_t more : {0, 1, 2, 5, 23, 24, 25, 500, 511, 512, 513, 1600}) {
          const Series in = Stream<double>(51, hostile).series(static_cast<std::size_t>(window) / 2 + 2 + more);
          const Series expected = literalSmoother(in, window);
          Series source = in, out(3, 9.0);
          ASSERT_TRUE(sgCubicSmoother(source, out, window));
          ASSERT_EQ(out.size(), in.size());
          ASSERT_TRUE(std::equal(out.begin(), out.end(), expected.begin(), sameBits<double>))
              << "window " << window << ", " << in.size() << " samples, " << name(variant);
          ASSERT_TRUE(std::equal(in.begin(), in.end(), source.begin(), sameBits<double>));
          ASSERT_TRUE(sgCubicSmoother(source, source, window));
          ASSERT_TRUE(std::equal(source.begin(), source.end(), expected.begin(), sameBits<double>)) << "in place";
        }
  }
  limitCpuVariant(CpuVariant::avx512);
}

}  // namespace
