#include <MirelAlgorithms/frame/internal/ModuleRegistration.h>
#include <VoskBase/Module.h>

#if defined(_WIN32)
#include <afxwin.h>
// Needs the header above; the entry point's source is the one place for it.
#include <afxdllx.h>
#endif

namespace MirelAlgorithms {
namespace {

VoskBase::Module& libraryModule() {
  static VoskBase::Module module;
  return module;
}

#if defined(_WIN32)

/// The extension-module record of the host's framework.
class ExtensionModule {
 public:
  bool init(HINSTANCE instance) {
    record_ = AFX_EXTENSION_MODULE{};
    return AfxInitExtensionModule(record_, instance) != 0;
  }
  void term() { AfxTermExtensionModule(record_, FALSE); }

 private:
  AFX_EXTENSION_MODULE record_;
};

ExtensionModule& libraryExtension() {
  static ExtensionModule extension;
  return extension;
}

}  // namespace
}  // namespace MirelAlgorithms

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  using namespace MirelAlgorithms;
  if (reason == DLL_PROCESS_ATTACH) return attachLibrary(libraryModule(), libraryExtension(), instance);
  if (reason == DLL_PROCESS_DETACH) detachLibrary(libraryModule(), libraryExtension());
  return TRUE;
}

#else

/// Other systems have no extension modules, and no way for a library to refuse being loaded.
struct NoExtension {
  bool init(void*) { return true; }
  void term() {}
};

struct Registration {
  Registration() { attachLibrary(libraryModule(), extension, static_cast<void*>(nullptr)); }
  ~Registration() { detachLibrary(libraryModule(), extension); }
  NoExtension extension;
};

const Registration registration;

}  // namespace
}  // namespace MirelAlgorithms

#endif
