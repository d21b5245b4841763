/// What tests of detection and of description share.
#pragma once

#include <MirelAlgorithms/Host.h>

#include <initializer_list>
#include <utility>

#if __has_include(<opencv2/xfeatures2d.hpp>)
#include <opencv2/xfeatures2d.hpp>
#define WITH_XFEATURES2D 1
#else
#define WITH_XFEATURES2D 0
#endif

namespace MirelAlgorithms {

using Settings = SmartPtr<AttrContainer>;

inline Settings settingsOf(std::initializer_list<std::pair<const wchar_t*, int>> values) {
  Settings settings(new AttrContainer());
  for (const auto& [key, value] : values) settings->set(key, value);
  return settings;
}

}  // namespace MirelAlgorithms
