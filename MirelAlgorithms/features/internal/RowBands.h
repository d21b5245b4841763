/// Work on an image in parallel, band of rows by band of rows.
#pragma once

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>
#include <algorithm>

namespace MirelAlgorithms {

/// Rows [first, last) cut into bands of equal height, whatever the number of threads.
class RowBands {
 public:
  RowBands(int first, int last) : first_(first), last_(std::max(first, last)) {}

  int count() const { return (last_ - first_ + height - 1) / height; }

  /// Calls work(band, first row, row after the last) once for each band. Bands run in parallel and apart from the
  /// caller's own tasks, so that a waiting thread never picks up one of those.
  template <class Work>
  void forEach(const Work& work) const {
    tbb::this_task_arena::isolate([&] {
      tbb::parallel_for(tbb::blocked_range<int>(0, count()), [&](const tbb::blocked_range<int>& bands) {
        for (int band = bands.begin(); band != bands.end(); ++band) {
          const int begin = first_ + band * height;
          work(band, begin, std::min(begin + height, last_));
        }
      });
    });
  }

 private:
  static constexpr int height = 64;
  int first_, last_;
};

}  // namespace MirelAlgorithms
