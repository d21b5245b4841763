#include "Errors.h"

#include <algorithm>
#include <new>
#include <opencv2/core.hpp>

namespace mirel {

namespace {

std::string firstLine(const std::string& text) {
  std::string line = text.substr(0, text.find('\n'));
  std::replace_if(
      line.begin(), line.end(), [](unsigned char c) { return c < 32; }, ' ');
  return line;
}

}  // namespace

std::string oneLine(const std::exception& error) {
  if (const auto* openCV = dynamic_cast<const cv::Exception*>(&error)) {
    return "OpenCV: " + firstLine(openCV->err) + " (in " + firstLine(openCV->func) + ")";
  }
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "out of memory; smaller or fewer images may do";
  return firstLine(error.what());
}

}  // namespace mirel
