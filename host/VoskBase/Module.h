/// A library that registers itself with the host when it is loaded.
#pragma once

#include <VoskBase/Export.h>

#if defined(_WIN32)
struct HINSTANCE__;  // of windows.h
#endif

namespace VoskBase {

/// What the system calls a loaded library.
#if defined(_WIN32)
using InstanceHandle = HINSTANCE__*;
#else
using InstanceHandle = void*;
#endif

/// The registration of one loaded library. One thread at a time.
class HOST_API Module {
 public:
  /// Registers the module under its instance handle. False when it cannot be registered; here it always can.
  bool internalInit(InstanceHandle instance);

  /// Takes the registration back; without one, nothing happens.
  void internalTerm();

  /// Whether it is registered.
  bool initialised() const noexcept { return initialised_; }

 private:
  bool initialised_ = false;
};

}  // namespace VoskBase
