/// Typed reading of settings.
#pragma once

#include <Brel/AttrContainer.h>

namespace MirelCore {

/// The value under `key` when the container has one of exactly the default's type, else the default. A null handle
/// gives the default. Any number of threads. @{
HOST_API bool get(VoskBase::SmartPtr<Brel::AttrContainer> settings, const VoskBase::String& key, const bool& fallback);
HOST_API int get(VoskBase::SmartPtr<Brel::AttrContainer> settings, const VoskBase::String& key, const int& fallback);
HOST_API double get(VoskBase::SmartPtr<Brel::AttrContainer> settings, const VoskBase::String& key,
                    const double& fallback);
HOST_API VoskBase::String get(VoskBase::SmartPtr<Brel::AttrContainer> settings, const VoskBase::String& key,
                              const wchar_t* fallback);
/// @}

}  // namespace MirelCore
