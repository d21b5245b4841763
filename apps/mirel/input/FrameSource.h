/// Frames of one camera, one after the other: from image files or from a video.
#pragma once

#include <memory>
#include <opencv2/core/mat.hpp>
#include <optional>
#include <string>
#include <vector>

namespace mirel {

struct Frame {
  std::string name;  ///< file name without folder; with the frame number for a video
  cv::Mat grey;      ///< 8-bit, one channel
};

/// A file as it was read.
struct InputFile {
  std::string path;
  std::uintmax_t bytes;
  std::string sha256;
};

class FrameSource {
 public:
  virtual ~FrameSource() = default;

  /// The next frame, or nothing after the last one. Throws `UsageError` for a file that cannot be used.
  virtual std::optional<Frame> next() = 0;

  /// Number of frames to come in all, 0 when that is not known.
  virtual int expected() const = 0;

  /// Files read so far.
  const std::vector<InputFile>& inputs() const { return inputs_; }

 protected:
  std::vector<InputFile> inputs_;
};

/// The files that arguments stand for, patterns among them; "-" is standard input. Every file is looked at.
///
/// Throws `UsageError` for a path that is no file, a pattern without files, or a second "-".
std::vector<std::string> expandFiles(const std::vector<std::string>& arguments);

struct FrameChoice {
  int every = 1;      ///< take every so many-th frame, the first one included
  int maxFrames = 0;  ///< stop after so many taken frames; 0: take all
};

/// Opens what was given: image files, one video, a pattern such as `left*.png`, or a numbered sequence such as
/// `frame_%04d.png`. "-" is an image on standard input. Nothing is decoded yet, but every file is looked at.
///
/// Throws `UsageError` for a path that is no file, a pattern without files, or a video that cannot be opened.
std::unique_ptr<FrameSource> openFrames(const std::vector<std::string>& arguments, const FrameChoice& choice);

}  // namespace mirel
