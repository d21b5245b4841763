/// `mirel track`: features, descriptors, guided matching and image motion, frame after frame.
#include "Command.h"
#include "Errors.h"
#include "Session.h"
#include "options/Checks.h"
#include "output/Csv.h"
#include "output/Interrupt.h"
#include "output/JsonText.h"
#include "output/Progress.h"
#include "output/Summary.h"
#include "pictures/MatchPicture.h"
#include "pictures/TrackPicture.h"
#include "tracking/PairMatcher.h"
#include "tracking/TrackReport.h"
#include "tracking/Tracks.h"

#include <fmt/format.h>

#include <cstdio>
#include <map>

namespace mirel {

namespace {

using MirelAlgorithms::FBMFilterMode;

const std::map<std::string, FBMFilterMode> modes = {
    {"narrow", MirelAlgorithms::Narrow}, {"wide", MirelAlgorithms::Wide}, {"exhaustive", MirelAlgorithms::Exhaustive}};

struct TrackOptions {
  std::vector<std::string> frames;
  std::string mode = "narrow";
  FrameChoice choice;
  int pictures = 8;
  bool circles = false, noPrediction = false;
};

/// One walk through the frames, written down on the way.
class TrackRun {
 public:
  TrackRun(const TrackOptions& options, Session& session, FrameSource& frames)
      : options_(options),
        session_(session),
        frames_(frames),
        matcher_(modes.at(options.mode), !options.noPrediction, session.clock()),
        features_(session.folder(), "features.csv", "frame,feature,x_px,y_px,size_px,angle,response"),
        matches_(session.folder(), "matches.csv",
                 "frame,query,train,x1_px,y1_px,x2_px,y2_px,distance_bits1024,predicted_x_px,predicted_y_px,"
                 "residual_px,inlier") {
    result_.mode = options.mode;
  }

  /// @param shown  whether a progress bar is wanted
  void follow(bool shown) {
    Progress progress(frames_.expected(), shown);
    std::optional<FrameFeatures> last;
    while (auto frame = session_.clock().time("reading", [&] { return frames_.next(); })) {
      checkInterrupt();
      FrameFeatures current = addFrame(std::move(*frame));
      if (last) addPair(*last, current);
      last = std::move(current);
      progress.step();
    }
    if (result_.pairs.empty()) throw UsageError(tooFew());
    result_.longestTrack = tracks_.longest();
    session_.clock().time("pictures", [&] { addTrackPicture(*last); });
    features_.close();
    matches_.close();
  }

  const TrackResult& result() const { return result_; }
  std::vector<ReportPicture>& reportPictures() { return reportPictures_; }

 private:
  FrameFeatures addFrame(Frame frame) {
    const cv::Size size = frame.grey.size();
    const int number = static_cast<int>(result_.frames.size()) + 1;
    if (number == 1) result_.frameSize = size;
    if (size != result_.frameSize && options_.mode != "exhaustive") {  // the other modes search around a position
      throw UsageError(
          fmt::format("{}: {} x {} pixels, but {} has {} x {}; frames of one size or --mode exhaustive "
                      "expected",
                      frame.name, size.width, size.height, result_.frames[0].name, result_.frameSize.width,
                      result_.frameSize.height));
    }
    FrameFeatures current = extractFeatures(std::move(frame), number, session_.settings(), session_.clock());
    result_.frames.push_back({number, current.frame.name, size, static_cast<int>(current.keyPoints.size())});
    for (std::size_t i = 0; i < current.keyPoints.size(); ++i) {
      const cv::KeyPoint& p = current.keyPoints[i];
      features_.row(number, i, p.pt.x, p.pt.y, p.size, p.angle, p.response);
    }
    return current;
  }

  void addPair(const FrameFeatures& first, const FrameFeatures& second) {
    PairResult pair = matcher_.match(first, second);
    tracks_.add(pair);
    for (const PairMatch& m : pair.matches) {
      matches_.row(pair.from, m.match.queryIdx, m.match.trainIdx, m.from.x, m.from.y, m.to.x, m.to.y, m.match.distance,
                   m.match.predictedX, m.match.predictedY, m.residual, m.inlier ? 1 : 0);
    }
    session_.clock().time("pictures", [&] { addMatchPicture(first, second, pair); });
    pair.matches.clear();  // kept in the file; a long video has many
    result_.pairs.push_back(std::move(pair));
  }

  /// Whether a pair is one of about `wanted` that lie evenly over the run.
  bool isChosen(const PairResult& pair, int wanted) const {
    constexpr int assumedFrames = 300;  // of a video that does not tell
    const int pairs = (frames_.expected() > 0 ? frames_.expected() : assumedFrames) - 1;
    return wanted > 0 && (pair.from - 1) % std::max(1, (pairs + wanted - 1) / wanted) == 0;
  }

  void addMatchPicture(const FrameFeatures& first, const FrameFeatures& second, const PairResult& pair) {
    constexpr int mostInReport = 8;
    const bool inReport = isChosen(pair, std::min(options_.pictures, mostInReport));
    if (!inReport && !isChosen(pair, options_.pictures)) return;
    const cv::Mat picture = drawMatches(first.frame.grey, second.frame.grey, pair, options_.circles);
    session_.folder().writePicture(fmt::format("matches_{:04}.png", pair.from), picture);
    if (inReport) {
      reportPictures_.push_back({fmt::format("Matches from {} to {}; lines coloured by descriptor distance, rings: "
                                             "not in agreement with the image motion",
                                             pair.nameFrom, pair.nameTo),
                                 reportJpeg(picture)});
    }
  }

  void addTrackPicture(const FrameFeatures& last) {
    const cv::Mat picture = drawTracks(last.frame, last.number, tracks_);
    session_.folder().writePicture("tracks.png", picture);
    reportPictures_.push_back({"Tracks that reach the last frame", reportJpeg(picture)});
  }

  std::string tooFew() const {
    if (result_.frames.empty()) return options_.frames[0] + ": no frame can be read from it, two or more expected";
    return result_.frames[0].name + ": one frame given, two or more expected";
  }

  const TrackOptions& options_;
  Session& session_;
  FrameSource& frames_;
  PairMatcher matcher_;
  Csv features_, matches_;
  Tracks tracks_;
  TrackResult result_;
  std::vector<ReportPicture> reportPictures_;
};

class TrackCommand : public Command {
 public:
  void addOptions(CLI::App& app) override {
    app.add_option("frames", options_.frames,
                   "image files in order, one video, a pattern ('left*.png') or a numbered sequence (frame_%04d.png)")
        ->type_name("FRAME");
    app.add_option("--mode", options_.mode,
                   "narrow: within 120 px, strict; wide: within 400 px, less strict; exhaustive: every pair, of "
                   "frames of any size")
        ->check(oneOf({"narrow", "wide", "exhaustive"}))
        ->type_name("MODE")
        ->capture_default_str();
    app.add_flag("--no-prediction", options_.noPrediction,
                 "search every feature around its own position, not where its track or the last image motion takes it");
    app.add_option("--every", options_.choice.every, "take every N-th frame")
        ->check(atLeast(1))
        ->type_name("N")
        ->capture_default_str();
    app.add_option("--max-frames", options_.choice.maxFrames, "stop after N frames")->check(atLeast(1))->type_name("N");
    app.add_option("--pictures", options_.pictures, "about so many pictures of matches, spread over the run; 0: none")
        ->check(atLeast(0))
        ->type_name("N")
        ->capture_default_str();
    app.add_flag("--circles", options_.circles, "show the search circles of some matches in the pictures");
    common_.add(app);
  }

  int run(CLI::App& app) override {
    Session session(app, common_, "retrieve");
    if (options_.frames.empty()) throw UsageError("no frames given; image files or a video expected");
    const auto frames = openFrames(options_.frames, options_.choice);
    TrackRun track(options_, session, *frames);
    track.follow(!common_.quiet);

    const TrackResult& result = track.result();
    Report report = trackReport(result, session.clock());
    report.pictures = std::move(track.reportPictures());
    session.folder().write("motion.json", jsonText(report.result));
    const std::string summary =
        summaryText(result, session.clock()) + summaryLine("pictures", picturesText(session, result.pairs.size() == 1));
    session.finish(report, frames->inputs(), summary, "matches_");
    if (result.matchedPairs() > 0) return success;
    const PairResult& pair = result.pairs.front();
    fmt::print(stderr, "mirel track: no match from {} to {}: {}\n", pair.nameFrom, pair.nameTo, pair.reason);
    return noResult;
  }

 private:
  std::string picturesText(Session& session, bool onePair) const {
    std::string tracks = session.folder().shownPath("tracks.png");
    if (options_.pictures == 0) return tracks;
    return session.folder().shownPath(onePair ? "matches_0001.png" : "matches_*.png") + ", " + tracks;
  }

  RunOptions common_;
  TrackOptions options_;
};

const CommandRegistration<TrackCommand> registration("track",
                                                     "match features frame after frame and estimate the image motion",
                                                     {"mirel track view_1.png view_2.png --mode wide --out out/pair",
                                                      "mirel track 'view_*.png' --every 2 --max-frames 3 --json"});

}  // namespace

}  // namespace mirel
