/// Image files as 8-bit grey images.
#pragma once

#include <opencv2/core/mat.hpp>
#include <string>
#include <string_view>

namespace mirel {

/// Frames of more pixels are refused: 100 megapixels.
inline constexpr std::uint64_t maxPixels = 100'000'000;

/// What messages say was expected.
struct FileKind {
  const char *name, *example;
};
inline constexpr FileKind imageFile = {"an image or a video", "*.png"};
inline constexpr FileKind depthFile = {"a 16-bit grey image", "depth.png"};
inline constexpr FileKind tableFile = {"a table of numbers", "log.csv"};

/// Throws `UsageError` unless the path leads to a file that has content and is neither a folder nor a device.
void checkIsFile(const std::string& path, const FileKind& wanted = imageFile);

/// All bytes of a file, or of standard input for "-". Throws `UsageError`.
std::string readBytes(const std::string& path, const FileKind& wanted = imageFile);

/// Decodes any image that OpenCV reads; colour and 16-bit images become 8-bit grey, turned as their EXIF data say.
///
/// Throws `UsageError` when it is no image, ends too early or has more than `maxPixels`, which is seen before anything
/// is decoded. One at a time.
cv::Mat decodeImage(const std::string& name, std::string_view bytes);

/// The same for a depth image, which stays as it is: CV_16UC1. Throws `UsageError` for other depths and channels too.
cv::Mat decodeDepth(const std::string& name, std::string_view bytes);

/// Throws `UsageError` for more than `maxPixels`.
void checkPixels(const std::string& name, std::uint64_t width, std::uint64_t height);

}  // namespace mirel
