/// What happens when the library is loaded and unloaded.
///
/// The library registers its module with the host's base library and then, on Windows, as an extension module of the
/// host's framework; unloading takes both back in reverse order. Windows also unloads after a refused load, so
/// the partners are then asked to take back what they have not begun. Written over the two partners so that their
/// refusals can be tested; the system's entry points are at the end of ModuleRegistration.cpp.
#pragma once

namespace MirelAlgorithms {

/// False: the library must not be loaded. When the module refuses, the extension is not asked.
///
/// @tparam Module     has `bool internalInit(handle)` and `void internalTerm()`
/// @tparam Extension  has `bool init(handle)` and `void term()`
template <class Module, class Extension, class Handle>
bool attachLibrary(Module& module, Extension& extension, Handle instance) {
  return module.internalInit(instance) && extension.init(instance);
}

template <class Module, class Extension>
void detachLibrary(Module& module, Extension& extension) {
  extension.term();
  module.internalTerm();
}

}  // namespace MirelAlgorithms
