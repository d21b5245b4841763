/// Matrices and settings that are made of fuzz input.
#pragma once

#include <MirelAlgorithms/Host.h>
#include <MirelAlgorithms/SettingsCatalogue.h>

#include <algorithm>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "Check.h"

namespace fuzz {

using Settings = VoskBase::SmartPtr<Brel::AttrContainer>;

/// OpenCV on one thread, and silent about the errors it throws.
inline const bool openCvIsQuiet = [] {
  cv::setNumThreads(1);
  cv::redirectError([](int, const char*, const char*, const char*, int, void*) { return 0; });
  return true;
}();

/// Once in a while, and not when the input has run out.
inline bool rarely(FuzzedDataProvider& data) { return data.ConsumeIntegralInRange(0, 31) == 31; }

/// From `least` to `most`, which it is when the input has run out.
inline int upTo(FuzzedDataProvider& data, int most, int least = 0) {
  return most - data.ConsumeIntegralInRange(0, most - least);
}

/// A matrix in a block of exactly its size, so that a step past the end is seen, and a copy to compare it with. Rows
/// may be any number of elements apart.
class ExactMatrix {
 public:
  ExactMatrix(FuzzedDataProvider& data, int rows, int cols, int type) {
    const std::size_t element = CV_ELEM_SIZE(type), width = cols * element;
    const std::size_t step = width + data.ConsumeIntegralInRange(0, 3) * std::size_t(CV_ELEM_SIZE1(type));
    size_ = rows > 0 && cols > 0 ? (rows - 1) * step + width : 0;
    block_ = std::make_unique<unsigned char[]>(size_);
    fill(data, CV_MAT_DEPTH(type) == CV_8U ? 1 : 2);
    if (size_ > 0)
      mat = cv::Mat(rows, cols, type, block_.get(), step);
    else
      mat = cv::Mat(rows, cols, type);
    keep();
  }

  /// Takes what is in the block by now for untouched.
  void keep() { copy_.assign(block_.get(), block_.get() + size_); }

  bool untouched() const { return std::equal(copy_.begin(), copy_.end(), block_.get()); }

  cv::Mat mat;

 private:
  // Noise, given bytes over and over, blocks of two values, or one value.
  void fill(FuzzedDataProvider& data, std::size_t unit) {
    const int kind = data.ConsumeIntegralInRange(0, 3);
    cv::RNG random(data.ConsumeIntegral<std::uint16_t>() + 1);
    const int spread = 256 >> data.ConsumeIntegralInRange(0, 8), run = 1 << data.ConsumeIntegralInRange(0, 4);
    const std::vector<unsigned char> given =
        data.ConsumeBytes<unsigned char>(kind == 1 ? data.ConsumeIntegralInRange(0, 600) : 0);
    unsigned char value = data.ConsumeIntegral<std::uint8_t>();
    for (std::size_t i = 0; i < size_; ++i) {
      if (kind == 1 && !given.empty()) value = given[i % given.size()];
      if (kind == 0) value = static_cast<unsigned char>(random.uniform(0, spread));
      if (kind == 2 && i % (run * unit) == 0) value = static_cast<unsigned char>(random.uniform(0, 2) * (spread - 1));
      block_[i] = value;
    }
  }

  std::unique_ptr<unsigned char[]> block_;
  std::size_t size_ = 0;
  std::vector<unsigned char> copy_;
};

/// An image of up to `side` x `side` pixels; now and then empty or of another type.
inline ExactMatrix anyImage(FuzzedDataProvider& data, int side, int type = CV_8UC1) {
  const bool odd = rarely(data);
  const int least = odd ? 0 : 1, rows = upTo(data, side, least), cols = upTo(data, side, least);
  return ExactMatrix(data, rows, cols,
                     odd ? data.PickValueInArray({CV_8UC1, CV_8UC3, CV_16UC1, CV_32FC1, type}) : type);
}

/// Descriptors and places, which disagree in number now and then.
struct Frame {
  Frame(FuzzedDataProvider& data, int width, int type = CV_8UC1) : descriptors(data, upTo(data, 40), width, type) {
    keyPoints.resize(descriptors.mat.rows + (rarely(data) ? 1 : 0));
    for (cv::KeyPoint& k : keyPoints) k.pt = {anyReal<float>(data) * 8, anyReal<float>(data) * 8};
  }

  /// The other's descriptors with a bit turned here and there, if they are of the same kind, and its places moved.
  void resemble(FuzzedDataProvider& data, const Frame& other) {
    cv::Mat &mine = descriptors.mat, others = other.descriptors.mat;
    if (mine.type() != others.type() || mine.cols != others.cols) return;
    const cv::Point2f shift(anyReal<float>(data), anyReal<float>(data));
    for (int i = 0; i < std::min(mine.rows, others.rows); ++i) {
      for (std::size_t k = 0; k < mine.cols * mine.elemSize(); ++k)
        mine.ptr(i)[k] = static_cast<uchar>(others.ptr(i)[k] ^ (i * k % 64 == 0));
      keyPoints[i].pt = other.keyPoints[i].pt + shift;
    }
    descriptors.keep();
  }

  ExactMatrix descriptors;
  std::vector<cv::KeyPoint> keyPoints;
};

/// What an int setting may be: mostly from a range, sometimes anything.
struct Range {
  std::wstring_view key;
  int least, most;
  bool orHostile = true;
};

/// Those of the other settings are -2 to 20. Large pyramids are allowed, but slow.
inline constexpr Range ranges[] = {
    {L"DescLengthBytes", 16, 16},    {L"FBMEnhancement", -1, 100000},         {L"FBMSobelSize", 1, 6},
    {L"FBMnFeatures", -1, 60},       {L"smoothSparseMaxPts", -1, 400},        {L"txmCells", -1, 4, false},
    {L"txmMaxKeys", -1, 100},        {L"txmORBedgeThreshold", -1, 40, false}, {L"txmORBfirstLevel", 0, 1, false},
    {L"txmORBmaxFeatures", -3, 300}, {L"txmORBnLevels", 0, 9, false},         {L"txmORBpatchSize", 1, 40, false},
    {L"txmToGray", -1, 100000}};

/// Values for some of the keys that operations read, those in whose names `readBy` is found. Files are not written and
/// windows not opened.
inline Settings anySettings(FuzzedDataProvider& data, std::string_view readBy) {
  static const std::vector<MirelAlgorithms::SettingInfo> catalogue = MirelAlgorithms::settingsCatalogue();
  constexpr int widest = (std::numeric_limits<int>::max)();
  Settings settings(new Brel::AttrContainer());
  for (const auto& [key, fallback, meaning, readers] : catalogue) {
    if (readers.find(readBy) == std::string::npos || key.starts_with(L"FBMWrite") || key == L"txmDraw") continue;
    const int kind = data.ConsumeIntegralInRange(0, 7);
    if (kind < 5) continue;  // the default
    const wchar_t* name = key.c_str();
    if (std::holds_alternative<bool>(fallback)) settings->set(name, data.ConsumeBool());
    if (std::holds_alternative<double>(fallback)) settings->set(name, anyReal<double>(data));
    if (std::holds_alternative<std::wstring>(fallback))
      settings->set(name, data.PickValueInArray({L"SingleMaximum7x7Patch", L"AverageRingMask", L"", L"other"}));
    if (!std::holds_alternative<int>(fallback)) continue;
    Range range{key, -2, 20};
    for (const Range& r : ranges)
      if (r.key == key) range = r;
    if (kind == 7 && range.orHostile)
      settings->set(name,
                    data.PickValueInArray({-widest - 1, -65537, -1, 0, 1, 31, 32, 33, 65536, widest - 1, widest}));
    else
      settings->set(name, data.ConsumeIntegralInRange(range.least, range.most));
  }
  return settings;
}

/// The value of a setting as an operation reads it.
template <class T>
T valueOf(const Settings& settings, const wchar_t* key, T fallback) {
  return MirelCore::get(settings, VoskBase::String(key), fallback);
}

}  // namespace fuzz
