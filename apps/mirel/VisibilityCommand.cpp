/// `mirel visibility`: which regions of a scanned scene have been seen best.
#include "Command.h"
#include "Errors.h"
#include "Session.h"
#include "input/NotedInput.h"
#include "options/Checks.h"
#include "output/Csv.h"
#include "output/Summary.h"
#include "pictures/VoxelPicture.h"
#include "views/SeenVoxels.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdio>

namespace mirel {

namespace {

Eigen::Vector3d parseSensor(const std::string& text) {
  const std::vector<std::string> parts = splitList(text);
  Eigen::Vector3d sensor(0, 0, 0);
  bool valid = parts.size() == 3;
  for (int i = 0; valid && i < 3; ++i) {
    valid = parseNumber(parts[static_cast<std::size_t>(i)], sensor[i]) && std::abs(sensor[i]) <= farthest;
  }
  if (!valid) throw UsageError("--sensor: '" + text + "' given, three numbers expected, such as 0.1,0,-0.02");
  return sensor;
}

void writeVoxels(const OutputFolder& folder, const SeenVoxels& result) {
  Csv csv(folder, "voxels.csv",
          "key_x,key_y,key_z,centre_x_m,centre_y_m,centre_z_m,points,rays,first_pose,last_pose,score");
  for (const SeenVoxel& v : result.voxels) {
    csv.row(v.key.x, v.key.y, v.key.z, v.centre.x, v.centre.y, v.centre.z, v.points, v.rays, v.firstPose, v.lastPose,
            v.score);
  }
  csv.close();
}

class VisibilityCommand : public Command {
 public:
  void addOptions(CLI::App& app) override {
    app.add_option("points", pointsFile_,
                   "a table with x, y, z in the frame of a pose and the pose's number (docs/pose-files.md), or - for "
                   "standard input")
        ->type_name("POINTS.csv");
    app.add_option("poses", posesFile_, "a file of poses, or -")->type_name("POSES.json");
    app.add_option("--columns", columns_, "heads or numbers of the columns for x, y, z, pose; by default these heads")
        ->type_name("LIST");
    app.add_option("--voxel", voxelSize_, "side of a voxel, above 0")->type_name("METRES")->capture_default_str();
    app.add_option("--sensor", sensors_,
                   "a point of the sensor in the frame of a pose, which sight lines lead to; repeatable, at least "
                   "three; by default 0,0,0 and 0.1 to both sides along x")
        ->type_name("X,Y,Z")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--regions", regions_, "how many of the best regions to tell, at least 1 m apart")
        ->type_name("N")
        ->check(atLeast(1))
        ->capture_default_str();
    common_.add(app);
  }

  int run(CLI::App& app) override {
    Session session(app, common_);
    checkOptions();
    std::vector<InputFile> inputs;
    SeenVoxels result;
    const PosedPoints points = session.clock().time("reading", [&] { return readFiles(result, inputs); });
    session.clock().time("voxels", [&] { findSeenVoxels(result, points, regions_); });
    return show(session, result, inputs);
  }

 private:
  void checkOptions() const {
    if (pointsFile_.empty()) throw UsageError("no points given; a table of points and a file of poses expected");
    if (posesFile_.empty()) throw UsageError("no poses given; a file of poses expected after the table of points");
    if (pointsFile_ == "-" && posesFile_ == "-") throw UsageError("-: standard input can be read only once");
    if (!(voxelSize_ > 0 && voxelSize_ <= farthest)) {
      throw UsageError(fmt::format("--voxel: {} given, a size above 0 and up to {:g} expected", voxelSize_, farthest));
    }
    if (!sensors_.empty() && sensors_.size() < 3) {
      throw UsageError(fmt::format("--sensor: {} sensor points given, at least 3 expected", sensors_.size()));
    }
  }

  PosedPoints readFiles(SeenVoxels& result, std::vector<InputFile>& inputs) const {
    result.pointsFile = shownName(pointsFile_);
    result.posesFile = shownName(posesFile_);
    result.voxelSize = voxelSize_;
    result.sensors = {{0, 0, 0}, {-0.1, 0, 0}, {0.1, 0, 0}};
    if (!sensors_.empty()) result.sensors.clear();
    for (const std::string& text : sensors_) result.sensors.push_back(parseSensor(text));
    result.poses = readPoses(posesFile_, readInput(posesFile_, poseFile, inputs));
    const CsvTable table(pointsFile_, readInput(pointsFile_, tableFile, inputs));
    return readPosedPoints(table, columns_, result.poses, posesFile_);
  }

  static int show(Session& session, const SeenVoxels& result, const std::vector<InputFile>& inputs) {
    writeVoxels(session.folder(), result);
    Report report = seenReport(result);
    session.clock().time("picture", [&] {
      const cv::Mat picture = drawVoxels(result);
      session.folder().writePicture("visibility.png", picture);
      report.pictures.push_back(
          {"The voxels from above and from the side, dots: positions of the poses. The score counts how often sampled "
           "points "
           "of a voxel lie on sampled sight lines through it",
           reportJpeg(picture)});
    });
    const std::string files = summaryLine("table", session.folder().shownPath("voxels.csv")) +
                              summaryLine("picture", session.folder().shownPath("visibility.png"));
    session.finish(report, inputs, summaryText(result) + files);
    if (!result.regions.empty()) return success;
    fmt::print(stderr, "mirel visibility: {}: {}\n", result.pointsFile, whyNothing(result));
    return noResult;
  }

  RunOptions common_;
  std::string pointsFile_, posesFile_, columns_;
  double voxelSize_ = 0.25;
  std::vector<std::string> sensors_;
  int regions_ = 3;
};

const CommandRegistration<VisibilityCommand> registration(
    "visibility", "which regions of a scanned scene have been seen best",
    {"mirel visibility scan.csv poses.json --voxel 0.1 --regions 5",
     "mirel visibility scan.csv poses.json --sensor 0,0,0 --sensor 0.2,0,0 --sensor 0,0.1,0"});

}  // namespace

}  // namespace mirel
