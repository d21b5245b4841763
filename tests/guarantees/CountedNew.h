/// The C++ allocator of this test program: counts, and fails when asked to.
#pragma once

/// Allocations by `operator new` that were not given back, of all threads.
long liveAllocations();

/// Makes the n-th allocation of all threads from now on throw `std::bad_alloc`, unless the object ends before.
class FailingAllocation {
 public:
  explicit FailingAllocation(long n);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  bool happened() const;
};
