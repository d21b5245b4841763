/// What tests of smoothing share.
#pragma once

#include <MirelAlgorithms/Host.h>

#include <cstring>
#include <initializer_list>
#include <opencv2/core.hpp>
#include <utility>

namespace MirelAlgorithms {

inline SmartPtr<AttrContainer> settingsOf(std::initializer_list<std::pair<const wchar_t*, int>> values) {
  SmartPtr<AttrContainer> settings(new AttrContainer());
  for (const auto& [key, value] : values) settings->set(key, value);
  return settings;
}

/// The same shape, type and bits, NaN included.
inline bool sameMatrix(const cv::Mat& a, const cv::Mat& b) {
  if (a.empty() && b.empty()) return true;
  if (a.size() != b.size() || a.type() != b.type()) return false;
  for (int i = 0; i < a.rows; ++i)
    if (std::memcmp(a.ptr(i), b.ptr(i), static_cast<std::size_t>(a.cols) * a.elemSize()) != 0) return false;
  return true;
}

}  // namespace MirelAlgorithms
