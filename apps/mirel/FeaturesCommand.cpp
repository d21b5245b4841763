/// `mirel features`: features and descriptors of one image.
#include "Command.h"
#include "Errors.h"
#include "Session.h"
#include "input/NotedInput.h"
#include "output/Csv.h"
#include "output/Digest.h"
#include "output/Summary.h"
#include "pictures/FeaturePicture.h"
#include "tracking/FeatureGrid.h"

#include <MirelCore/Log.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <opencv2/core.hpp>

namespace mirel {

namespace {

constexpr const char* operations = "retrieve";

/// Throws `UsageError` for endings that OpenCV's storage does not know.
void checkStorageName(const std::string& file) {
  constexpr std::array endings = {".yml", ".yaml", ".xml", ".json", ".yml.gz", ".yaml.gz", ".xml.gz", ".json.gz"};
  const bool known = std::any_of(endings.begin(), endings.end(), [&](const char* e) { return file.ends_with(e); });
  if (!known) throw UsageError("--descriptors " + file + ": .yml, .xml or .json expected, .gz may follow");
}

/// The storage does not tell whether the disk took all of it; the descriptors come last.
bool hasArrived(const std::filesystem::path& path, const cv::Mat& descriptors) {
  cv::Mat arrived;
  cv::FileStorage(path.string(), cv::FileStorage::READ)["descriptors"] >> arrived;
  return arrived.size() == descriptors.size() &&
         std::equal(arrived.begin<uchar>(), arrived.end<uchar>(), descriptors.begin<uchar>());
}

void writeDescriptors(const std::filesystem::path& path, const std::string& shown, const FrameFeatures& features) {
  cv::Mat table(static_cast<int>(features.keyPoints.size()), 5, CV_32F);
  for (int i = 0; i < table.rows; ++i) {
    const cv::KeyPoint& p = features.keyPoints[i];
    const float row[] = {p.pt.x, p.pt.y, p.size, p.angle, p.response};
    std::copy(std::begin(row), std::end(row), table.ptr<float>(i));
  }
  try {
    cv::FileStorage storage(path.string(), cv::FileStorage::WRITE);
    storage << "schema" << 1 << "image" << features.frame.name << "width" << features.frame.grey.cols << "height"
            << features.frame.grey.rows << "features" << table << "descriptors" << features.descriptors;
    storage.release();
    if (hasArrived(path, features.descriptors)) return;
  } catch (const cv::Exception&) {
    // the same as for what has not arrived
  }
  throw UsageError("--descriptors " + shown + ": cannot be written");
}

void writeCsv(Session& session, const FrameFeatures& features) {
  Csv csv(session.folder(), "features.csv", "x_px,y_px,size_px,angle,response,descriptor_hex");
  for (int i = 0; i < features.descriptors.rows; ++i) {
    const cv::KeyPoint& p = features.keyPoints[i];
    const std::string_view bytes(features.descriptors.ptr<char>(i),
                                 static_cast<std::size_t>(features.descriptors.cols));
    csv.row(p.pt.x, p.pt.y, p.size, p.angle, p.response, hexadecimal(bytes));
  }
  csv.close();
}

nlohmann::json cellsJson(const FeatureGrid& grid) {
  nlohmann::json cells = nlohmann::json::array();
  for (const GridCell& cell : grid.cells) {
    cells.push_back({{"x_px", cell.area.x},
                     {"y_px", cell.area.y},
                     {"width_px", cell.area.width},
                     {"height_px", cell.area.height},
                     {"found", cell.found},
                     {"kept", cell.kept}});
  }
  return cells;
}

/// Fields are described in docs/features-json.md.
nlohmann::json resultJson(const FrameFeatures& features, const FeatureGrid& grid, const StageClock& clock) {
  const auto fewer = [](const GridCell& a, const GridCell& b) { return a.kept < b.kept; };
  const auto [least, most] = std::minmax_element(grid.cells.begin(), grid.cells.end(), fewer);
  const bool listed = !grid.cells.empty();
  const int selected = static_cast<int>(features.selected.size()), kept = static_cast<int>(features.keyPoints.size());
  nlohmann::json milliseconds = nlohmann::json::object();
  for (const auto& [stage, seconds] : clock.stages()) milliseconds[stage] = 1000 * seconds;
  return {{"schema", 1},
          {"command", "features"},
          {"image", features.frame.name},
          {"width_px", features.frame.grey.cols},
          {"height_px", features.frame.grey.rows},
          {"found", grid.found},
          {"kept_by_quotas", selected},
          {"dropped_by_quotas", grid.found - selected},
          {"kept", kept},
          {"dropped_by_descriptor", selected - kept},
          {"descriptor_bytes", features.descriptors.cols},
          {"cells_per_side", grid.cellsPerSide},
          {"cell_columns", grid.columns},
          {"cell_rows", grid.rows},
          {"quota_per_cell", grid.quota},
          {"least_per_cell", listed ? nlohmann::json(least->kept) : nullptr},
          {"most_per_cell", listed ? nlohmann::json(most->kept) : nullptr},
          {"cells", cellsJson(grid)},
          {"milliseconds", milliseconds}};
}

std::string whyNothing(const nlohmann::json& result) {
  if (result["found"] == 0) return "no feature was found";
  if (result["quota_per_cell"] == 0) {
    return fmt::format("{} features were found, but the quota of a cell is 0: FBMnFeatures is below FBMnCells squared",
                       result["found"].dump());
  }
  return fmt::format("{} features were found, {} kept by the quotas and none by the descriptor", result["found"].dump(),
                     result["kept_by_quotas"].dump());
}

ReportAnswer judge(const nlohmann::json& result, const std::string& image) {
  const std::string title = fmt::format("{} features in {}", result["kept"].get<int>(), image);
  if (result["kept"] == 0) return {title, Verdict::bad, "No result: " + whyNothing(result) + "."};
  if (result["least_per_cell"] == 0) {
    return {title, Verdict::weak,
            "Weak: some cells of the grid have no feature; the image has too little texture there."};
  }
  return {title, Verdict::good, "Good: features all over the image."};
}

std::string perCell(const nlohmann::json& result) {
  const auto number = [&](const char* name) { return result[name].dump(); };
  if (result["cells"].empty()) return "not counted";
  return number("least_per_cell") + " to " + number("most_per_cell");
}

std::string gridText(const nlohmann::json& result) {
  return fmt::format("quota {}, grid of {} x {}", result["quota_per_cell"].dump(), result["cell_columns"].dump(),
                     result["cell_rows"].dump());
}

std::vector<ReportFact> facts(const nlohmann::json& result) {
  const auto number = [&](const char* name) { return result[name].dump(); };
  const auto milliseconds = [&](const char* stage) {
    return fmt::format("{:.1f} ms", result["milliseconds"].value(stage, 0.0));
  };
  return {{"Found", number("found"), "by the detector"},
          {"Within quotas", number("kept_by_quotas"), number("dropped_by_quotas") + " dropped"},
          {"Described", number("kept"), number("dropped_by_descriptor") + " dropped"},
          {"Per cell", perCell(result), gridText(result)},
          {"Descriptor", number("descriptor_bytes") + " bytes", ""},
          {"Image", number("width_px") + " x " + number("height_px"), "pixels"},
          {"Features", milliseconds("features"), ""},
          {"Descriptors", milliseconds("descriptors"), ""}};
}

std::string summaryText(const nlohmann::json& result, const StageClock& clock) {
  const auto number = [&](const char* name) { return result[name].dump(); };
  const auto step = [&](const char* kept, const char* dropped) {
    return fmt::format("{} kept, {} dropped", number(kept), number(dropped));
  };
  return summaryLine("image", fmt::format("{} ({} x {} px)", result["image"].get<std::string>(), number("width_px"),
                                          number("height_px"))) +
         summaryLine("found", number("found")) + summaryLine("quotas", step("kept_by_quotas", "dropped_by_quotas")) +
         summaryLine("descriptor", step("kept", "dropped_by_descriptor")) +
         summaryLine("per cell", perCell(result) + ", " + gridText(result)) +
         summaryLine("time", describeStages(clock));
}

class FeaturesCommand : public Command {
 public:
  void addOptions(CLI::App& app) override {
    app.add_option("image", image_, "an image file, or - for standard input")->type_name("IMAGE");
    app.add_option("--descriptors", descriptors_,
                   "also write features (x, y, size, angle, response per row) and descriptors (bytes per row) as "
                   "matrices for cv::FileStorage: .yml, .xml or .json, .gz may follow")
        ->type_name("FILE");
    common_.add(app);
  }

  int run(CLI::App& app) override {
    Session session(app, common_, operations);
    if (image_.empty()) throw UsageError("no image given; an image file expected");
    if (!descriptors_.empty()) checkStorageName(descriptors_);
    std::vector<InputFile> inputs;
    const std::string bytes = readInput(image_, imageFile, inputs);
    Frame frame{shownName(image_), session.clock().time("reading", [&] { return decodeImage(image_, bytes); })};
    session.folder();
    const FrameFeatures features = extractFeatures(std::move(frame), 1, session.settings(), session.clock());
    return show(session, features, inputs);
  }

 private:
  FeatureGrid count(Session& session, const FrameFeatures& features) const {
    MirelCore::setLogLevel(0);  // the lines of the run would come once more
    FeatureGrid grid = session.clock().time("counting", [&] { return countInCells(features, session.settings()); });
    MirelCore::setLogLevel(common_.logLevel);
    return grid;
  }

  int show(Session& session, const FrameFeatures& features, const std::vector<InputFile>& inputs) {
    const FeatureGrid grid = count(session, features);
    const cv::Mat overlay = session.clock().time("picture", [&] { return drawFeatures(features, grid); });
    session.folder().writePicture("overlay.png", overlay);
    writeCsv(session, features);
    if (!descriptors_.empty()) writeDescriptors(session.stageFile(descriptors_).path(), descriptors_, features);
    const nlohmann::json result = resultJson(features, grid, session.clock());
    Report report = {
        .command = "mirel features",
        .answer = judge(result, features.frame.name),
        .facts = facts(result),
        .pictures = {{"Circles as wide as the features, coloured by response; numbers: features kept in the "
                      "cell, its quota, features found in it",
                      reportJpeg(overlay)}},
        .charts = {},
        .tables = {},
        .result = result,
        .run = {}};
    const std::string picture = summaryLine("picture", session.folder().shownPath("overlay.png"));
    session.finish(report, inputs, summaryText(result, session.clock()) + picture);
    if (!features.keyPoints.empty()) return success;
    fmt::print(stderr, "mirel features: {}: {}\n", features.frame.name, whyNothing(result));
    return noResult;
  }

  RunOptions common_;
  std::string image_, descriptors_;
};

const CommandRegistration<FeaturesCommand> registration(
    "features", "find and describe the features of one image",
    {"mirel features view_1.png --out out/features",
     "mirel features photo_1.png --set FBMType=2 --set FBMFeatureType=5 --json"});

}  // namespace

}  // namespace mirel
