#include "input/FrameSource.h"

#include "Errors.h"
#include "input/FilePattern.h"
#include "input/NotedInput.h"
#include "input/QuietStderr.h"
#include "output/Digest.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>
#include <opencv2/videoio/registry.hpp>

namespace mirel {

namespace fs = std::filesystem;

namespace {

int taken(int frames, const FrameChoice& choice) {
  const int all = (frames + choice.every - 1) / choice.every;
  return choice.maxFrames > 0 ? std::min(all, choice.maxFrames) : all;
}

class ImageFrames : public FrameSource {
 public:
  ImageFrames(const std::vector<std::string>& files, const FrameChoice& choice) {
    for (int i = 0, count = taken(static_cast<int>(files.size()), choice); i < count; ++i) {
      files_.push_back(files[static_cast<std::size_t>(i) * choice.every]);
    }
  }

  std::optional<Frame> next() override {
    if (next_ == files_.size()) return std::nullopt;
    const std::string& path = files_[next_++];
    const std::string bytes = readInput(path, imageFile, inputs_);
    return Frame{shownName(path), decodeImage(path, bytes)};
  }

  int expected() const override { return static_cast<int>(files_.size()); }

 private:
  std::vector<std::string> files_;
  std::size_t next_ = 0;
};

class VideoFrames : public FrameSource {
 public:
  VideoFrames(const std::string& path, const FrameChoice& choice) : path_(path), choice_(choice) {
    const QuietStderr quiet;
    const bool ffmpeg = cv::videoio_registry::hasBackend(cv::CAP_FFMPEG);
    if (!capture_.open(path, ffmpeg ? cv::CAP_FFMPEG : cv::CAP_ANY)) return;
    checkPixels(path, static_cast<std::uint64_t>(capture_.get(cv::CAP_PROP_FRAME_WIDTH)),
                static_cast<std::uint64_t>(capture_.get(cv::CAP_PROP_FRAME_HEIGHT)));
    const double frames = capture_.get(cv::CAP_PROP_FRAME_COUNT);
    if (frames > 0 && frames < 1e9) expected_ = taken(static_cast<int>(frames), choice);
    inputs_.push_back({path, fs::file_size(path), sha256OfFile(path)});
  }

  bool isOpen() const { return capture_.isOpened(); }

  std::optional<Frame> next() override {
    if (choice_.maxFrames > 0 && taken_ == choice_.maxFrames) return std::nullopt;
    const QuietStderr quiet;
    for (int skipped = taken_ == 0 ? choice_.every : 1; skipped < choice_.every; ++skipped, ++number_) {
      if (!capture_.grab()) return std::nullopt;
    }
    cv::Mat picture, grey;
    if (!capture_.read(picture) || picture.empty()) return std::nullopt;
    ++number_;
    ++taken_;
    if (picture.channels() == 1) {
      grey = picture;
    } else {
      cv::cvtColor(picture, grey, cv::COLOR_BGR2GRAY);
    }
    return Frame{fmt::format("{} #{}", fs::path(path_).filename().string(), number_), grey.clone()};
  }

  int expected() const override { return expected_; }

 private:
  std::string path_;
  FrameChoice choice_;
  cv::VideoCapture capture_;
  int expected_ = 0;
  int number_ = 0;
  int taken_ = 0;
};

/// Video decoders read files only, whatever a play list names.
void keepDecodersToFiles() {
#ifdef _WIN32
  _putenv_s("OPENCV_FFMPEG_CAPTURE_OPTIONS", "protocol_whitelist;file");
#else
  setenv("OPENCV_FFMPEG_CAPTURE_OPTIONS", "protocol_whitelist;file", 1);
#endif
}

bool hasImageSignature(const std::string& path) {
  const QuietStderr quiet;
  return cv::haveImageReader(path);
}

}  // namespace

std::vector<std::string> expandFiles(const std::vector<std::string>& arguments) {
  std::vector<std::string> files;
  for (const std::string& argument : arguments) {
    for (const std::string& file : expandPattern(argument)) {
      if (file != "-") checkIsFile(file);
      files.push_back(file);
    }
  }
  if (std::count(files.begin(), files.end(), "-") > 1) throw UsageError("-: standard input can be read only once");
  return files;
}

std::unique_ptr<FrameSource> openFrames(const std::vector<std::string>& arguments, const FrameChoice& choice) {
  keepDecodersToFiles();
  const std::vector<std::string> files = expandFiles(arguments);
  if (files.size() == 1 && files[0] != "-" && !hasImageSignature(files[0])) {
    auto video = std::make_unique<VideoFrames>(files[0], choice);
    if (!video->isOpen()) throw UsageError(files[0] + ": neither an image nor a video that can be read");
    return video;
  }
  return std::make_unique<ImageFrames>(files, choice);
}

}  // namespace mirel
