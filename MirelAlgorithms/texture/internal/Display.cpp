#include <MirelAlgorithms/texture/internal/Display.h>

#ifdef __linux__
#include <dlfcn.h>

#include <cstdlib>
#include <string_view>

namespace MirelAlgorithms {
namespace {

// Qt draws into memory instead.
bool drawsOffscreen() {
  const char* platform = std::getenv("QT_QPA_PLATFORM");
  return platform &&
         (std::string_view(platform).starts_with("offscreen") || std::string_view(platform).starts_with("minimal"));
}

// By the functions of libxcb, which Qt loads too: xcb_connect, xcb_connection_has_error, xcb_disconnect.
bool reachesXServer() {
  void* library = dlopen("libxcb.so.1", RTLD_LAZY | RTLD_LOCAL);
  if (!library) return false;
  const auto connect = reinterpret_cast<void* (*)(const char*, int*)>(dlsym(library, "xcb_connect"));
  const auto hasError = reinterpret_cast<int (*)(void*)>(dlsym(library, "xcb_connection_has_error"));
  const auto disconnect = reinterpret_cast<void (*)(void*)>(dlsym(library, "xcb_disconnect"));
  bool reached = false;
  if (connect && hasError && disconnect) {
    void* connection = connect(nullptr, nullptr);
    reached = hasError(connection) == 0;
    disconnect(connection);
  }
  dlclose(library);
  return reached;
}

}  // namespace

bool hasDisplay() { return drawsOffscreen() || reachesXServer(); }

}  // namespace MirelAlgorithms
#else
namespace MirelAlgorithms {

bool hasDisplay() { return true; }

}  // namespace MirelAlgorithms
#endif
