/// Reference-counted handles.
#pragma once

#include <atomic>
#include <cstddef>
#include <utility>

namespace VoskBase {

/// Base of everything that a `SmartPtr` can hold: the count of handles. Copies of an object start with a count of
/// their own. Counting is atomic.
class WeakHandle {
 public:
  /// No handles yet.
  WeakHandle() = default;

  /// Copies what derives from it, not the count. @{
  WeakHandle(const WeakHandle&) noexcept {}
  WeakHandle& operator=(const WeakHandle&) noexcept { return *this; }
  /// @}

  virtual ~WeakHandle() = default;

  /// Counts one handle more.
  void addReference() const noexcept { count_.fetch_add(1, std::memory_order_relaxed); }

  /// Gives one reference back; the last one destroys the object. True when it was destroyed.
  bool tryDestroy() const noexcept {
    if (count_.fetch_sub(1, std::memory_order_acq_rel) != 1) return false;
    delete this;
    return true;
  }

 private:
  mutable std::atomic<int> count_{0};
};

/// Shared handle of a T, which derives from `WeakHandle`. Copies share the object; the last handle destroys it.
template <class T>
class SmartPtr {
 public:
  /// Holds nothing. @{
  SmartPtr() noexcept = default;
  SmartPtr(std::nullptr_t) noexcept {}
  /// @}

  /// Holds an object made by `new`, or nothing for null.
  explicit SmartPtr(T* object) noexcept : object_(object) { acquire(); }

  /// Shares the object of another handle, or takes it over. @{
  SmartPtr(const SmartPtr& other) noexcept : object_(other.object_) { acquire(); }
  SmartPtr(SmartPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  SmartPtr& operator=(SmartPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  /// @}

  ~SmartPtr() {
    if (object_) object_->tryDestroy();
  }

  /// The object, null when there is none.
  T* get() const noexcept { return object_; }

  /// The object; there must be one. @{
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  /// @}

  /// Whether there is an object.
  explicit operator bool() const noexcept { return object_ != nullptr; }

 private:
  void acquire() const noexcept {
    if (object_) object_->addReference();
  }

  T* object_ = nullptr;
};

}  // namespace VoskBase
