/// Numbers as colours, and the bar that explains them.
#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <string>
#include <vector>

namespace mirel {

/// Colours for a range of numbers, from blue (low) over green to red (high), or for differences.
class ColourScale {
 public:
  /// The range of the values; logarithmic when `mayBeLogarithmic` and the positive values span more than 1 : 30.
  ColourScale(const std::vector<double>& values, bool mayBeLogarithmic);

  /// Around 0: from blue (-most) over white to red (most).
  static ColourScale diverging(double most);

  cv::Scalar colour(double value) const;

  /// Draws the bar with its title and three numbers into the left part of `area`; words when all values are
  /// one, nothing when there were none.
  void drawBar(cv::Mat& picture, cv::Rect area, const std::string& title) const;

 private:
  double position(double value) const;
  double valueAt(double position) const;
  const cv::Mat3b& colours() const;

  bool empty_ = true;
  double low_ = 0, high_ = 1;
  bool logarithmic_ = false, diverging_ = false;
};

}  // namespace mirel
