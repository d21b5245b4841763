/// Settings in one expression.
#pragma once

#include <MirelAlgorithms/Host.h>

#include <initializer_list>
#include <utility>

namespace MirelAlgorithms {

using Settings = SmartPtr<AttrContainer>;

inline Settings settingsOf(std::initializer_list<std::pair<const wchar_t*, int>> values) {
  Settings settings(new AttrContainer());
  for (const auto& [key, value] : values) settings->set(key, value);
  return settings;
}

/// Settings with one more key, of any type.
template <class T>
Settings with(const wchar_t* key, T value, Settings settings = Settings(new AttrContainer())) {
  settings->set(key, value);
  return settings;
}

}  // namespace MirelAlgorithms
