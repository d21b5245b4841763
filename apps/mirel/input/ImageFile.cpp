#include "input/ImageFile.h"

#include "Errors.h"
#include "input/ImageHeader.h"
#include "input/QuietStderr.h"
#include "input/StandardInput.h"

#include <fmt/format.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <opencv2/imgcodecs.hpp>

namespace mirel {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t maxBytes = 1u << 30;

void checkBytes(const std::string& name, std::uintmax_t size, const FileKind& wanted) {
  if (size == 0) throw UsageError(name + ": empty, " + wanted.name + " expected");
}

void checkFitsMemory(const std::string& name, std::uintmax_t size) {
  if (size > maxBytes) throw UsageError(name + ": more than 1 GiB, a smaller file expected");
}

std::string readStandardInput(const FileKind& wanted) {
  std::string bytes;
  std::vector<char> block(1 << 20);
  while (const std::size_t count = readSome(block)) {
    bytes.append(block.data(), count);
    checkFitsMemory("-", bytes.size());
  }
  checkBytes("-", bytes.size(), wanted);
  return bytes;
}

/// Decoders ask for the memory of a picture between its head and its content. While this lives, too many pixels are
/// refused there, whatever the format.
class PixelLimit : public cv::MatAllocator {
 public:
  explicit PixelLimit(const std::string& name) : name_(name), usual_(cv::Mat::getDefaultAllocator()) {
    cv::Mat::setDefaultAllocator(this);
  }
  PixelLimit(const PixelLimit&) = delete;
  PixelLimit& operator=(const PixelLimit&) = delete;
  ~PixelLimit() override { cv::Mat::setDefaultAllocator(usual_); }

  cv::UMatData* allocate(int dims, const int* sizes, int type, void* data, std::size_t* step, cv::AccessFlag flags,
                         cv::UMatUsageFlags usage) const override {
    if (dims == 2) checkPixels(name_, sizes[1], sizes[0]);
    return usual_->allocate(dims, sizes, type, data, step, flags, usage);
  }
  bool allocate(cv::UMatData* data, cv::AccessFlag flags, cv::UMatUsageFlags usage) const override {
    return usual_->allocate(data, flags, usage);
  }
  void deallocate(cv::UMatData* data) const override { usual_->deallocate(data); }

 private:
  const std::string& name_;
  cv::MatAllocator* usual_;
};

cv::Mat decodeQuietly(const std::string& name, std::string_view bytes, int mode) {
  const QuietStderr quiet;
  const PixelLimit limit(name);
  try {
    const cv::Mat buffer(1, static_cast<int>(bytes.size()), CV_8U, const_cast<char*>(bytes.data()));
    return cv::imdecode(buffer, mode);
  } catch (const cv::Exception&) {
    return {};
  }
}

cv::Mat decode(const std::string& name, std::string_view bytes, int mode) {
  if (const auto header = readImageHeader(bytes)) {
    checkPixels(name, header->width, header->height);
    if (!header->complete) throw UsageError(name + ": the image ends too early, a whole file expected");
  }
  cv::Mat image = bytes.size() <= INT_MAX ? decodeQuietly(name, bytes, mode) : cv::Mat();
  if (image.empty()) throw UsageError(name + ": not an image that can be read (PNG, JPEG, TIFF, BMP, PNM, WebP, ...)");
  checkPixels(name, image.cols, image.rows);
  return image;
}

std::string kindOfPixels(const cv::Mat& image) {
  constexpr const char* depths[] = {"8-bit",
                                    "signed 8-bit",
                                    "16-bit",
                                    "signed 16-bit",
                                    "32-bit integer",
                                    "32-bit floating-point",
                                    "64-bit floating-point",
                                    "16-bit floating-point"};
  const std::string channels = image.channels() == 1 ? "grey" : fmt::format("in {} channels", image.channels());
  return fmt::format("{} {}", depths[image.depth()], channels);
}

}  // namespace

void checkIsFile(const std::string& path, const FileKind& wanted) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) throw UsageError(path + ": no such file");
  if (status.type() == fs::file_type::none) throw UsageError(path + ": cannot be read: " + error.message());
  if (status.type() == fs::file_type::directory) {
    throw UsageError(path + ": a folder, files expected, for example '" + (fs::path(path) / wanted.example).string() +
                     "'");
  }
  if (status.type() != fs::file_type::regular)
    throw UsageError(path + ": no file with content, " + wanted.name + " expected");
  checkBytes(path, fs::file_size(path, error), wanted);
  if (!std::ifstream(path, std::ios::binary)) throw UsageError(path + ": cannot be read: permission denied");
}

std::string readBytes(const std::string& path, const FileKind& wanted) {
  if (path == "-") return readStandardInput(wanted);
  checkIsFile(path, wanted);
  const std::uintmax_t size = fs::file_size(path);
  checkFitsMemory(path, size);
  std::string bytes(size, '\0');
  std::ifstream stream(path, std::ios::binary);
  if (!stream.read(bytes.data(), static_cast<std::streamsize>(size))) throw UsageError(path + ": cannot be read");
  return bytes;
}

void checkPixels(const std::string& name, std::uint64_t width, std::uint64_t height) {
  if (width == 0 || height == 0 || width <= maxPixels / height) return;
  throw UsageError(
      fmt::format("{}: {} x {} pixels, at most {} megapixels expected", name, width, height, maxPixels / 1'000'000));
}

cv::Mat decodeImage(const std::string& name, std::string_view bytes) {
  return decode(name, bytes, cv::IMREAD_GRAYSCALE);
}

cv::Mat decodeDepth(const std::string& name, std::string_view bytes) {
  cv::Mat depth = decode(name, bytes, cv::IMREAD_UNCHANGED);
  if (depth.type() != CV_16UC1) throw UsageError(name + ": " + kindOfPixels(depth) + " given, 16-bit grey expected");
  return depth;
}

}  // namespace mirel
