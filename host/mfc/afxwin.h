/// Stand-in for the host's application framework where the real one is absent, as with mingw-w64: no more than the
/// registration of extension modules, written after the framework's public reference. Builds that have the framework
/// leave this folder out of their include path.
#pragma once

#include <VoskBase/Export.h>
#include <windows.h>

struct CRuntimeClass;
class COleObjectFactory;

/// What the framework keeps about one extension module; zero-filled before its first use.
struct AFX_EXTENSION_MODULE {
  BOOL bInitialized;
  HMODULE hModule;
  HMODULE hResource;
  CRuntimeClass* pFirstSharedClass;
  COleObjectFactory* pFirstSharedFactory;
};

/// Registers the library `instance` in `module`. FALSE when it cannot be registered; here it always can.
HOST_API BOOL WINAPI AfxInitExtensionModule(AFX_EXTENSION_MODULE& module, HMODULE instance);

/// Takes the registration back; without one, nothing happens. `all` is about the framework's class lists: not used.
HOST_API void WINAPI AfxTermExtensionModule(AFX_EXTENSION_MODULE& module, BOOL all = FALSE);
