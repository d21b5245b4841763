#include "CountedNew.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> live = 0, untilFailure = 0;

void* allocate(std::size_t size) {
  if (untilFailure.load(std::memory_order_relaxed) > 0 && untilFailure.fetch_sub(1) == 1) throw std::bad_alloc();
  void* memory = std::malloc(size > 0 ? size : 1);
  if (!memory) throw std::bad_alloc();
  live.fetch_add(1, std::memory_order_relaxed);
  return memory;
}

void* allocateOrNull(std::size_t size) noexcept try { return allocate(size); } catch (const std::bad_alloc&) {
  return nullptr;
}

void release(void* memory) {
  if (memory) live.fetch_sub(1, std::memory_order_relaxed);
  std::free(memory);
}

}  // namespace

long liveAllocations() { return live; }

FailingAllocation::FailingAllocation(long n) { untilFailure = n; }
FailingAllocation::~FailingAllocation() { untilFailure = 0; }
bool FailingAllocation::happened() const { return untilFailure <= 0; }

// All forms but those for unusual alignment: a sanitizer's own would not fit the ones here.
void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocateOrNull(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocateOrNull(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { release(memory); }
