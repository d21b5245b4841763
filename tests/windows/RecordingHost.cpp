#include "RecordingHost.h"

#include <VoskBase/Module.h>
#include <afxwin.h>

namespace recording {

Host& host() {
  static Host host;
  return host;
}

namespace {

void note(const char* call) { host().calls.emplace_back(call); }

}  // namespace
}  // namespace recording

using recording::host;
using recording::note;

bool VoskBase::Module::internalInit(InstanceHandle instance) {
  note("module init");
  host().instances.push_back(instance);
  return initialised_ = host().moduleAccepts;
}

void VoskBase::Module::internalTerm() { note(initialised_ ? "module term" : "module term for nothing"); }

BOOL WINAPI AfxInitExtensionModule(AFX_EXTENSION_MODULE& module, HMODULE instance) {
  note("extension init");
  host().instances.push_back(instance);
  return module.bInitialized = host().frameworkAccepts;
}

void WINAPI AfxTermExtensionModule(AFX_EXTENSION_MODULE& module, BOOL all) {
  note(all ? "extension term for all" : module.bInitialized ? "extension term" : "extension term for nothing");
}
