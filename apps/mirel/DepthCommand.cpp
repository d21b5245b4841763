/// `mirel depth`: a smoothed depth image.
#include "Command.h"
#include "Errors.h"
#include "Session.h"
#include "input/NotedInput.h"
#include "output/Summary.h"
#include "pictures/DepthPicture.h"
#include "smoothing/DepthChange.h"

#include <MirelAlgorithms/smoothing/DenseDepth.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>

namespace mirel {

namespace {

constexpr const char* operation = "smoothDenseZ16";
constexpr int nonLocalMeans = 1;

/// Throws `UsageError` for a name whose ending stands for no format that keeps 16-bit grey as it is.
std::string checkedEnding(const std::string& file) {
  constexpr std::array endings = {".png", ".tif", ".tiff", ".pgm", ".pnm"};
  std::string ending = std::filesystem::path(file).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
  if (std::find(endings.begin(), endings.end(), ending) == endings.end()) {
    throw UsageError(file + ": holds no 16-bit grey; .png, .tif or .pgm expected");
  }
  return ending;
}

void writeImage(const StagedFile& file, const cv::Mat& image, const std::string& ending) {
  std::vector<unsigned char> bytes;
  cv::imencode(ending, image, bytes);
  file.write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

class DepthCommand : public Command {
 public:
  void addOptions(CLI::App& app) override {
    app.add_option("image", in_,
                   "a 16-bit grey image (PNG, TIFF, PGM), 0 where there is no depth, or - for standard input")
        ->type_name("IN.png");
    app.add_option("smoothed", out_, "where the smoothed image goes: .png, .tif or .pgm; may be IN")
        ->type_name("OUT.png");
    common_.add(app);
  }

  int run(CLI::App& app) override {
    Session session(app, common_, operation);
    DepthChange change;
    checkOptions(session.settings(), change);
    const std::string ending = checkedEnding(out_);
    std::vector<InputFile> inputs;
    const std::string bytes = readInput(in_, depthFile, inputs);
    change.image = shownName(in_);
    change.before = session.clock().time("reading", [&] { return decodeDepth(in_, bytes); });
    session.folder();
    const StagedFile& target = session.stageFile(out_);
    session.clock().time("smoothing", [&] {
      if (!MirelAlgorithms::smoothDenseZ16(change.before, change.after, session.settings().container())) {
        throw UsageError(in_ + ": refused by smoothDenseZ16");
      }
    });
    countChanges(change);
    if (change.validAfter > 0) writeImage(target, change.after, ending);
    return show(session, change, inputs);
  }

 private:
  void checkOptions(const Settings& settings, DepthChange& change) const {
    if (in_.empty()) throw UsageError("no image given; a 16-bit grey image and a name for the smoothed one expected");
    if (out_.empty()) throw UsageError("no name for the smoothed image given; one expected after the image");
    const bool median = settings.integer("smoothDenseMode", operation) != nonLocalMeans;
    change.filter = median ? "median" : "non-local means";
    change.window = settings.integer("smoothDenseRadius", operation);
    const bool odd = change.window > 0 && change.window % 2 == 1;
    if (median && !(odd && change.window <= 5)) {
      throw UsageError(
          fmt::format("--set smoothDenseRadius: {} given, 1, 3 or 5 expected for the median", change.window));
    }
    if (!odd) throw UsageError(fmt::format("--set smoothDenseRadius: {} given, an odd number expected", change.window));
  }

  int show(Session& session, const DepthChange& change, const std::vector<InputFile>& inputs) const {
    Report report = depthReport(change);
    session.clock().time("picture", [&] {
      const DepthPicture picture = drawDepth(change);
      session.folder().writePicture("before_after.png", picture.sheet);
      report.pictures.push_back(
          {"Before, after, and after less before, in the units of the image. Hatched: no depth; violet: depth removed "
           "next to a hole; ring: largest change",
           reportJpeg(picture.sheet), reportJpeg(picture.stacked)});
    });
    const bool kept = change.validAfter > 0;
    const std::string files = (kept ? summaryLine("smoothed", out_) : "") +
                              summaryLine("picture", session.folder().shownPath("before_after.png"));
    session.finish(report, inputs, summaryText(change) + files);
    if (kept) return success;
    fmt::print(stderr, "mirel depth: {}: no pixel keeps its depth, {} of {} had one; {} is not written\n", change.image,
               change.validBefore, change.before.total(), out_);
    return noResult;
  }

  RunOptions common_;
  std::string in_, out_;
};

const CommandRegistration<DepthCommand> registration(
    "depth", "smooth a depth image without inventing depth at holes",
    {"mirel depth depth.png smooth.png --out out/depth",
     "mirel depth depth.png smooth.png --set smoothDenseMode=1 --set smoothDenseRadius=7"});

}  // namespace

}  // namespace mirel
