#include <gtest/gtest.h>
#include <tbb/global_control.h>
#include <tbb/task_arena.h>

#include <functional>
#include <memory>
#include <new>
#include <opencv2/core/utility.hpp>
#include <ostream>

#include "Capabilities.h"
#include "CountedNew.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace MirelAlgorithms {
namespace {

/// A call whose objects outlive its failure.
struct Operation {
  std::function<void()> call;
  std::function<std::uint64_t()> digest;  ///< of what it leaves in them
};

struct EntryPoint {
  const char* name;
  bool untouched;  ///< an exception leaves the outputs as they were
  Operation (*prepare)(const Inputs&);
};
std::ostream& operator<<(std::ostream& stream, const EntryPoint& entry) { return stream << entry.name; }

Operation objLoad(const Inputs& in) {
  const auto mesh = std::make_shared<MeshSimplification>();
  const auto load = [&in, mesh] {
    mesh->materials.clear();
    mesh->load_obj(in.obj.name(), true);
  };
  return {load, [mesh] { return Digest()(*mesh); }};
}

Operation simplify(const Inputs& in) {
  const auto original = std::make_shared<MeshSimplification>(), mesh = std::make_shared<MeshSimplification>();
  original->load_obj(in.obj.name(), true);
  const auto reduce = [original, mesh] {
    *mesh = *original;
    mesh->simplify_mesh(40, 7.0, false);
  };
  return {reduce, [mesh] { return Digest()(*mesh); }};
}

Operation match(const Inputs& in) {
  struct Pairs {
    std::vector<FBMatch> matches;
    std::vector<FBPrediction> predictions;
  };
  const auto pairs = std::make_shared<Pairs>();
  const auto run = [&in, pairs] {
    pairs->predictions.clear();
    matchFeatures(in.keyPoints, in.descriptors, in.movedKeyPoints, in.movedDescriptors, {Narrow}, pairs->matches,
                  pairs->predictions);
  };
  return {run, [pairs] { return Digest()(pairs->matches)(pairs->predictions); }};
}

template <bool fixedPoint>
Operation corners(const Inputs& in) {
  const auto features = std::make_shared<cv::Mat>(), map = std::make_shared<cv::Mat>();
  const SmartPtr<AttrContainer> settings(new AttrContainer());
  settings->set(L"FBMFpgaQuantized", fixedPoint);
  const auto run = [&in, features, map, settings] { retrieveFeaturesFPGA(in.grey, *features, settings, map); };
  return {run, [features, map] { return Digest()(*features)(*map); }};
}

Operation matchTexture(const Inputs& in) {
  struct Sets {
    std::vector<cv::Vec2f> here, there;
    std::vector<cv::Vec3i> matches;
  };
  const auto sets = std::make_shared<Sets>();
  for (const cv::KeyPoint& k : in.keyPoints) sets->here.emplace_back(k.pt);
  for (const cv::KeyPoint& k : in.movedKeyPoints) sets->there.emplace_back(k.pt);
  const auto run = [&in, sets] {
    textureMatch(sets->here, in.descriptors, sets->there, in.movedDescriptors, sets->matches, {});
  };
  return {run, [sets] { return Digest()(sets->matches); }};
}

Operation updateVisibility(const Inputs& in) {
  const auto check = std::make_shared<Algorithms::VisibilityCheck>(0.25);
  const auto update = [&in, check] { check->updateGrid(in.scan.points, in.scan.poses, in.scan.sensors); };
  return {update, [check] {
            auto copy = *check;
            const auto [seen, seenBy, first, last, score] = copy.getCurrentMax();
            return Digest()(seen)(seenBy)(first)(last)(score);
          }};
}

/// Whether the call fails with its n-th allocation, the exception being `std::bad_alloc`. OpenCV loses blocks of its
/// own allocator then, which leak detection does not count.
enum Outcome { tooFewAllocations, succeeded, failed };
Outcome callWithFailure(const Operation& operation, long n) {
#if defined(__SANITIZE_ADDRESS__)
  const __lsan::ScopedDisabler ignoreLeaks;
#endif
  const FailingAllocation failing(n);
  try {
    operation.call();
  } catch (const std::bad_alloc&) {
    return failed;
  }
  return failing.happened() ? succeeded : tooFewAllocations;
}

class AllocationFailures : public testing::TestWithParam<EntryPoint> {
 protected:
  ~AllocationFailures() override { cv::setNumThreads(-1); }

  /// How many allocations failed, one in each call.
  long failEveryAllocation(int threads) const {
    const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, static_cast<std::size_t>(threads));
    cv::setNumThreads(threads);
    return tbb::task_arena(threads).execute([&] { return failEveryAllocation(threads == 1); });
  }

 private:
  long failEveryAllocation(bool countLive) const {
    const EntryPoint& entry = GetParam();
    const Inputs& in = Inputs::small();
    const Operation usual = entry.prepare(in);
    const std::uint64_t before = usual.digest();
    usual.call();
    const std::uint64_t after = usual.digest();
    EXPECT_NE(before, after);
    for (long n = 1;; ++n) {
      const long live = liveAllocations();
      Outcome outcome;
      {
        const Operation operation = entry.prepare(in);
        outcome = callWithFailure(operation, n);
        if (outcome == failed) {
          EXPECT_TRUE(operation.digest() == before || !entry.untouched) << "allocation " << n;
          operation.call();
        }
        EXPECT_EQ(operation.digest(), after) << "allocation " << n;
      }
      EXPECT_TRUE(!countLive || liveAllocations() == live) << "allocation " << n;
      if (outcome == tooFewAllocations || HasFailure()) return n - 1;
    }
  }
};

// Workers that come late make thread-local objects, which are no leaks.
TEST_P(AllocationFailures, LeakNothing) { EXPECT_GT(failEveryAllocation(1), 3); }

TEST_P(AllocationFailures, EndWellOnAnyThread) { EXPECT_GT(failEveryAllocation(3), 3); }

INSTANTIATE_TEST_SUITE_P(Of, AllocationFailures,
                         testing::Values(EntryPoint{"objLoad", false, objLoad}, EntryPoint{"simplify", false, simplify},
                                         EntryPoint{"match", false, match},
                                         EntryPoint{"floatingPointCorners", true, corners<false>},
                                         EntryPoint{"fixedPointCorners", true, corners<true>},
                                         EntryPoint{"matchTexture", true, matchTexture},
                                         EntryPoint{"updateVisibility", false, updateVisibility}),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace MirelAlgorithms
