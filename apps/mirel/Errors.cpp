#include "Errors.h"

#include <algorithm>
#include <new>
#include <opencv2/core.hpp>

namespace mirel {

namespace {

std::string firstLine(const std::string& text) { return oneLine(text.substr(0, text.find('\n'))); }

}  // namespace

std::string oneLine(const std::exception& error) {
  if (const auto* openCV = dynamic_cast<const cv::Exception*>(&error)) {
    return "OpenCV: " + firstLine(openCV->err) + " (in " + firstLine(openCV->func) + ")";
  }
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "out of memory; smaller or fewer files may do";
  return oneLine(std::string(error.what()));
}

std::string oneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < 32 || c == 127; }, ' ');
  return text;
}

}  // namespace mirel
