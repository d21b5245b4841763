// Loads and unloads the library in a host that accepts it, whose module refuses, and whose framework refuses.
#include "Check.h"
#include "RecordingHost.h"

#include <thread>
#include <utility>

namespace {

using Calls = std::vector<std::string>;

constexpr const char* library = "RecordedFrame.dll";

Calls takeCalls() { return std::exchange(recording::host().calls, {}); }

void setHost(bool moduleAccepts, bool frameworkAccepts) {
  recording::host() = {moduleAccepts, frameworkAccepts, {}, {}};
}

void attachesAndDetachesInReverse() {
  const HMODULE loaded = LoadLibraryA(library);
  CHECK(loaded != nullptr);
  CHECK((takeCalls() == Calls{"module init", "extension init"}));
  CHECK((recording::host().instances == std::vector<HINSTANCE>{loaded, loaded}));

  std::thread([] {}).join();
  CHECK(takeCalls().empty());

  CHECK(FreeLibrary(loaded));
  CHECK((takeCalls() == Calls{"extension term", "module term"}));
  CHECK(GetModuleHandleA(library) == nullptr);
}

// The system's loader sends a detach after a refused attach: what had been begun is taken back.
void isNotLoaded(const Calls& calls) {
  SetLastError(0);
  CHECK(LoadLibraryA(library) == nullptr);
  CHECK(GetLastError() == ERROR_DLL_INIT_FAILED);
  CHECK(GetModuleHandleA(library) == nullptr);
  CHECK(takeCalls() == calls);
}

}  // namespace

int main() {
  setHost(true, true);
  attachesAndDetachesInReverse();
  setHost(false, true);
  isNotLoaded({"module init", "extension term for nothing", "module term for nothing"});
  setHost(true, false);
  isNotLoaded({"module init", "extension init", "extension term for nothing", "module term"});
  setHost(true, true);
  attachesAndDetachesInReverse();
  return failures != 0;
}
