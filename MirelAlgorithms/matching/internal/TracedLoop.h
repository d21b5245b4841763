/// Parallel loops over the features of the first frame, with one line in the log for every thread that takes part.
#pragma once

#include <MirelAlgorithms/frame/internal/Log.h>

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/partitioner.h>
#include <tbb/task_arena.h>
#include <cstddef>
#include <cstdint>
#include <typeinfo>

namespace MirelAlgorithms {

using FeatureRange = tbb::blocked_range<std::size_t>;

/// The operating system's number of the calling thread.
std::uint32_t osThreadId();

/// Runs body(range) over ranges that cover [0, count). Isolated: a thread that waits for the loop takes on nothing but
/// parts of it, so that a caller's own tasks never start in the middle of a call. Once per thread and type of body,
/// while level 1000 is wanted, the thread is logged under the name `function`.
template <class Body>
void tracedLoop(const char* function, std::size_t count, const Body& body) {
  const auto traced = [&](const FeatureRange& range) {
    thread_local bool logged = false;
    if (!logged && MirelCore::shouldLog(LogLevel::diagnostic)) {
      logged = true;
      MirelCore::log("FeatureMatching.cpp", __LINE__, function, LogLevel::diagnostic, L"lambda %hs thread 0x%x",
                     typeid(Body).name(), osThreadId());
    }
    body(range);
  };
  tbb::this_task_arena::isolate(
      [&] { tbb::parallel_for(FeatureRange(0, count, 1), traced, tbb::static_partitioner()); });
}

}  // namespace MirelAlgorithms
