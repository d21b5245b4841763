#include <afxwin.h>

BOOL WINAPI AfxInitExtensionModule(AFX_EXTENSION_MODULE& module, HMODULE instance) {
  module.hModule = module.hResource = instance;
  module.bInitialized = TRUE;
  return TRUE;
}

void WINAPI AfxTermExtensionModule(AFX_EXTENSION_MODULE& module, BOOL /*all*/) { module = {}; }
