#include <MirelAlgorithms/frame/internal/Require.h>

#include <stdexcept>

namespace MirelAlgorithms {

void refuse(const char* function, const char* argument, const std::string& found, const std::string& wanted) {
  throw std::invalid_argument(std::string(function) + ": " + argument + ": " + found + " given, " + wanted +
                              " expected");
}

std::string describe(const cv::Mat& matrix) {
  if (matrix.empty()) return "empty";
  static const char* const depths[] = {"8U", "8S", "16U", "16S", "32S", "32F", "64F", "16F"};
  return std::string("CV_") + depths[matrix.depth()] + "C" + std::to_string(matrix.channels());
}

void requireGrey8(const char* function, const char* argument, const cv::Mat& image) {
  if (image.empty() || image.dims != 2 || image.type() != CV_8UC1)
    refuse(function, argument, describe(image), "8-bit grey image");
}

void requireRange(const char* function, const char* argument, long long value, long long least, long long most) {
  if (value < least || value > most)
    refuse(function, argument, std::to_string(value), std::to_string(least) + " to " + std::to_string(most));
}

}  // namespace MirelAlgorithms
