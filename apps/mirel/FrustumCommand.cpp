/// `mirel frustum`: which views overlap, how much one sees of another, which belong together.
#include "Command.h"
#include "Errors.h"
#include "Session.h"
#include "input/NotedInput.h"
#include "options/Checks.h"
#include "output/Csv.h"
#include "output/Summary.h"
#include "pictures/FrustumPicture.h"
#include "views/ViewOverlaps.h"

#include <fmt/format.h>

#include <cstdio>

namespace mirel {

namespace {

constexpr std::size_t mostViews = 500;  // the matrices stay small enough for a page

void writeOverlaps(const OutputFolder& folder, const ViewOverlaps& result) {
  Csv csv(folder, "overlaps.csv", "view,other,overlap,score");
  for (std::size_t i = 0; i < result.views.size(); ++i) {
    for (std::size_t j = 0; j < result.views.size(); ++j) {
      csv.row(result.views[i].number, result.views[j].number, static_cast<int>(result.overlaps[i][j]),
              result.scores[i][j]);
    }
  }
  csv.close();
}

class FrustumCommand : public Command {
 public:
  void addOptions(CLI::App& app) override {
    app.add_option("poses", file_, "a file of poses (docs/pose-files.md), or - for standard input")
        ->type_name("POSES.json");
    app.add_option("--fov", range_.fovDegrees, "full angle of view in degrees, between 0 and 180")
        ->type_name("DEGREES")
        ->capture_default_str();
    app.add_option("--near", range_.nearest, "nearest distance that is seen, above 0")
        ->type_name("METRES")
        ->capture_default_str();
    app.add_option("--far", range_.farthest, "farthest distance that is seen, beyond the nearest")
        ->type_name("METRES")
        ->capture_default_str();
    app.add_option("--look", look_,
                   "axis that the cameras look along, -z or +z; by default the library's functions take the poses as "
                   "they are: overlaps look along -z, scores along +z")
        ->type_name("AXIS")
        ->check(oneOf({"-z", "+z"}));
    common_.addOutput(app);
  }

  int run(CLI::App& app) override {
    Session session(app, common_);
    checkOptions();
    std::vector<InputFile> inputs;
    std::vector<NamedPose> views =
        session.clock().time("reading", [&] { return readPoses(file_, readInput(file_, poseFile, inputs)); });
    if (views.size() < 2) throw UsageError(file_ + ": poses: 1 pose, at least 2 expected");
    if (views.size() > mostViews) {
      throw UsageError(fmt::format("{}: poses: {} poses, at most {} expected", file_, views.size(), mostViews));
    }
    const ViewOverlaps result =
        session.clock().time("overlaps", [&] { return findOverlaps(shownName(file_), std::move(views), range_); });
    return show(session, result, inputs);
  }

 private:
  void checkOptions() {
    if (file_.empty()) throw UsageError("no poses given; a file of poses expected");
    if (!(range_.fovDegrees > 0 && range_.fovDegrees < 180)) {
      throw UsageError(fmt::format("--fov: {} given, an angle between 0 and 180 degrees expected", range_.fovDegrees));
    }
    if (!(range_.nearest > 0 && range_.nearest < range_.farthest && range_.farthest <= farthest)) {
      throw UsageError(fmt::format("--near, --far: {} and {} given, 0 < near < far <= {:g} expected", range_.nearest,
                                   range_.farthest, farthest));
    }
    if (!look_.empty()) range_.look = look_ == "-z" ? Look::alongMinusZ : Look::alongPlusZ;
  }

  static int show(Session& session, const ViewOverlaps& result, const std::vector<InputFile>& inputs) {
    writeOverlaps(session.folder(), result);
    Report report = overlapReport(result);
    session.clock().time("picture", [&] {
      const cv::Mat picture = drawViews(result);
      session.folder().writePicture("frustum.png", picture);
      report.pictures.push_back(
          {"The pyramids of the overlap test from above and from the side, a colour per view; dark lines join the "
           "positions of views that overlap",
           reportJpeg(picture)});
    });
    const std::string files = summaryLine("table", session.folder().shownPath("overlaps.csv")) +
                              summaryLine("picture", session.folder().shownPath("frustum.png"));
    session.finish(report, inputs, summaryText(result) + files);
    if (result.overlappingPairs > 0) return success;
    fmt::print(stderr, "mirel frustum: {}: no two of {} views overlap\n", result.file, result.views.size());
    return noResult;
  }

  RunOptions common_;
  std::string file_, look_;
  ViewRange range_;
};

const CommandRegistration<FrustumCommand> registration("frustum", "which views of cameras overlap",
                                                       {"mirel frustum views.json --fov 40 --near 0.4 --far 1.8",
                                                        "mirel frustum views.json --look -z --json"});

}  // namespace

}  // namespace mirel
