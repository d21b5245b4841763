/// `mirel points`: a cleaned or thinned list of measured points.
#include "Command.h"
#include "Errors.h"
#include "Session.h"
#include "input/NotedInput.h"
#include "output/Summary.h"
#include "pictures/PointPicture.h"
#include "smoothing/PointChoice.h"
#include "smoothing/PointTable.h"

#include <fmt/format.h>

#include <cstdio>

namespace mirel {

namespace {

class PointsCommand : public Command {
 public:
  void addOptions(CLI::App& app) override {
    app.add_option("table", in_,
                   "a table with x_px, y_px, x_m, y_m, z_m (docs/point-files.md), or - for standard input")
        ->type_name("IN.csv");
    app.add_option("kept", out_, "where the kept rows go; may be IN")->type_name("OUT.csv");
    app.add_option("--columns", columns_,
                   "heads or numbers of the five columns; by default these heads, or the first five")
        ->type_name("LIST");
    common_.add(app);
  }

  int run(CLI::App& app) override {
    Session session(app, common_, pointOperation);
    if (in_.empty()) throw UsageError("no table given; a table of points and a name for the kept ones expected");
    if (out_.empty()) throw UsageError("no name for the kept points given; one expected after the table");
    std::vector<InputFile> inputs;
    const CsvTable csv(in_, readInput(in_, tableFile, inputs));
    const PointTable table = session.clock().time("reading", [&] { return PointTable(csv, columns_); });
    session.folder();
    const StagedFile& target = session.stageFile(out_);
    PointChoice choice = session.clock().time("choice", [&] { return choosePoints(table.points, session.settings()); });
    choice.table = shownName(in_);
    choice.columns = table.columnsText();
    if (choice.enough) table.write(target, out_, choice.run.kept);
    return show(session, choice, inputs);
  }

 private:
  int show(Session& session, const PointChoice& choice, const std::vector<InputFile>& inputs) const {
    Report report = pointReport(choice);
    session.clock().time("picture", [&] {
      const PointPicture picture = drawPoints(choice);
      session.folder().writePicture("points.png", picture.sheet);
      report.pictures.push_back({"Kept points over dropped ones, which are coloured by the reason",
                                 reportJpeg(picture.sheet), reportJpeg(picture.narrow)});
    });
    const std::string files = (choice.enough ? summaryLine("points", out_) : "") +
                              summaryLine("picture", session.folder().shownPath("points.png"));
    session.finish(report, inputs, summaryText(choice) + files);
    if (choice.enough) return success;
    fmt::print(stderr, "mirel points: {}: {}; {} is not written\n", choice.table, whyNothing(choice), out_);
    return noResult;
  }

  RunOptions common_;
  std::string in_, out_, columns_;
};

const CommandRegistration<PointsCommand> registration(
    "points", "clean or thin a list of measured points",
    {"mirel points points.csv kept.csv --set smoothSparseMode=0x2000 --out out/points",
     "mirel points points.csv kept.csv --set smoothSparseMaxPts=400 --json"});

}  // namespace

}  // namespace mirel
