#include <VoskBase/SmartPtr.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <utility>
#include <vector>

using VoskBase::SmartPtr;

namespace {

struct Probe : VoskBase::WeakHandle {
  explicit Probe(std::atomic<int>& destroyed_) : destroyed(destroyed_) {}
  ~Probe() override { ++destroyed; }
  std::atomic<int>& destroyed;
};

TEST(SmartPtr, LastHandleDestroysOnce) {
  std::atomic<int> destroyed = 0;
  SmartPtr<Probe> first(new Probe(destroyed)), copy(first), empty, null(nullptr);
  EXPECT_TRUE(first && copy.get() == first.get() && &*copy == copy.operator->());
  EXPECT_FALSE(empty || null);

  const SmartPtr<Probe>& self = copy;
  copy = self;
  SmartPtr<Probe> moved(std::move(first));
  EXPECT_FALSE(first);  // NOLINT: a handle that was moved from is null
  first = copy;
  copy = nullptr;
  moved = empty;
  EXPECT_EQ(destroyed, 0);
  first = SmartPtr<Probe>(new Probe(destroyed));
  EXPECT_EQ(destroyed, 1);
  first = null;
  EXPECT_EQ(destroyed, 2);
}

TEST(SmartPtr, CopiesOfTheObjectAreCountedApart) {
  std::atomic<int> destroyed = 0;
  const SmartPtr<Probe> first(new Probe(destroyed));
  first->addReference();
  { const SmartPtr<Probe> second(new Probe(*first)); }
  EXPECT_EQ(destroyed, 1);
  EXPECT_FALSE(first->tryDestroy());
  EXPECT_EQ(destroyed, 1);
}

TEST(SmartPtr, ThreadsShareOneObject) {
  std::atomic<int> destroyed = 0;
  {
    std::vector<std::thread> threads;
    SmartPtr<Probe> shared(new Probe(destroyed));
    threads.reserve(8);
    for (int i = 0; i < 8; ++i)
      threads.emplace_back([shared] {
        for (int k = 0; k < 50000; ++k) SmartPtr<Probe> copy(shared), other(std::move(copy));
      });
    shared = nullptr;
    for (std::thread& thread : threads) thread.join();
  }
  EXPECT_EQ(destroyed, 1);
}

}  // namespace
