/// `mirel texture`: photographs of a surface, matched two by two, and features found again in many of them.
#include "Command.h"
#include "Errors.h"
#include "Session.h"
#include "options/Checks.h"
#include "output/Csv.h"
#include "output/Interrupt.h"
#include "output/Progress.h"
#include "output/Summary.h"
#include "pictures/TexturePicture.h"
#include "texture/TextureReport.h"

#include <MirelAlgorithms/texture/TextureMatching.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

namespace mirel {

namespace {

constexpr std::size_t mostImages = 200;  // every two are matched
constexpr std::size_t mostPixels = 2'000'000'000;
constexpr const char* matchesCaption = "Matches of {} and {}; lines coloured by descriptor distance";

void writeMatches(const OutputFolder& folder, const TextureResult& result) {
  Csv csv(folder, "matches.csv", "x1_px,y1_px,x2_px,y2_px,distance_bits,feature1,feature2");
  for (const cv::Vec3i& match : result.pairs[0].matches) {
    const cv::Vec2f& from = result.images[0].points[static_cast<std::size_t>(match[0])];
    const cv::Vec2f& to = result.images[1].points[static_cast<std::size_t>(match[1])];
    csv.row(from[0], from[1], to[0], to[1], match[2], match[0], match[1]);
  }
  csv.close();
}

void writeTracks(const OutputFolder& folder, const TextureResult& result) {
  std::string head = "x_px,y_px,multiplicity,drift_bits";
  for (std::size_t j = 1; j < result.images.size(); ++j) head += fmt::format(",found_in_{}", j + 1);
  Csv csv(folder, "tracks.csv", head);
  for (const TextureTrack& track : result.tracks) {
    std::string found;
    for (const bool in : track.foundIn) found += in ? ",1" : ",0";
    csv.row(track.match.point[0], track.match.point[1], track.match.multiplicity,
            fmt::format("{}{}", track.match.maxDistance, found));
  }
  csv.close();
}

void writeTable(const OutputFolder& folder, const TextureResult& result) {
  std::string head = "image";
  for (const std::string& name : result.names()) head += "," + csvCell(name);
  Csv csv(folder, "table.csv", head);
  for (std::size_t i = 0; i < result.images.size(); ++i) {
    std::string cells;
    for (std::size_t j = 0; j < result.images.size(); ++j) cells += fmt::format(",{}", result.tableCell(i, j));
    csv.row(csvCell(result.images[i].name) + cells);
  }
  csv.close();
}

class TextureCommand : public Command {
 public:
  void addOptions(CLI::App& app) override {
    app.add_option("images", files_,
                   "two image files or more, a pattern ('wall*.jpg') or a numbered sequence (wall_%04d.jpg); of three "
                   "or more the features of the first are looked for in all others")
        ->type_name("IMAGE");
    app.add_option("--pictures", pictures_,
                   "of three images or more: so many pictures of matches with the first image, those with the most; "
                   "0: none")
        ->check(atLeast(0))
        ->type_name("N")
        ->capture_default_str();
    common_.add(app);
  }

  int run(CLI::App& app) override {
    Session session(app, common_, "texture");
    if (files_.empty()) throw UsageError("no images given; two or more expected");
    const std::vector<std::string> files = expandFiles(files_);
    if (files.size() < 2) throw UsageError(files[0] + ": one image given, two or more expected");
    if (files.size() > mostImages) {
      throw UsageError(fmt::format("{} images given, at most {} expected", files.size(), mostImages));
    }
    std::vector<InputFile> inputs;
    TextureResult result{.tests = TextureTests(session.settings()),
                         .leastMultiplicity = session.settings().integer("txmMinMultipicity", "textureMultiMatch"),
                         .images = {},
                         .pairs = {},
                         .tracks = {}};
    match(session, files, inputs, result);
    return show(session, result, inputs);
  }

 private:
  void match(Session& session, const std::vector<std::string>& files, std::vector<InputFile>& inputs,
             TextureResult& result) const {
    const std::size_t count = files.size();
    Progress progress(static_cast<int>(count + count * (count - 1) / 2), !common_.quiet);
    std::size_t pixels = 0;
    for (const std::string& file : files) {
      checkInterrupt();
      const int number = static_cast<int>(result.images.size()) + 1;
      TextureImage image = session.clock().time("reading", [&] { return readTextureImage(file, number, inputs); });
      pixels += image.grey.total();
      if (pixels > mostPixels) {
        throw UsageError(
            fmt::format("{}: {} megapixels with those before it, at most {} expected; fewer or smaller "
                        "images may do",
                        image.name, pixels / 1'000'000, mostPixels / 1'000'000));
      }
      session.clock().time("features", [&] { extractTexture(image, session.settings()); });
      result.images.push_back(std::move(image));
      progress.step();
    }
    session.folder();
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t j = i + 1; j < count; ++j) {
        checkInterrupt();
        result.pairs.push_back(session.clock().time("matching", [&] {
          return matchTexture(result.images[i], result.images[j], result.tests, session.settings());
        }));
        progress.step();
      }
    }
    if (!result.onePair())
      result.tracks = session.clock().time("tracks", [&] { return followTexture(result, session.settings()); });
    drawIfAsked(session.settings(), result);
  }

  /// The window of "txmDraw" is the library's own.
  static void drawIfAsked(const Settings& settings, const TextureResult& result) {
    if (settings.integer("txmDraw", "textureExtractAndMatch") < 0) return;
    if (!result.onePair()) {
      fmt::print(stderr, "mirel texture: warning: --set txmDraw: matches of two images are shown, not of more\n");
      return;
    }
    std::vector<cv::Vec2f> points1, points2;
    MirelAlgorithms::textureExtractAndMatch(result.images[0].grey, result.images[1].grey, points1, points2,
                                            settings.container());
  }

  /// The images that share the most matches with the first one, in their own order.
  std::vector<const TexturePair*> pairsToDraw(const TextureResult& result, std::size_t most) const {
    std::vector<const TexturePair*> pairs;
    for (const TexturePair& pair : result.pairs) {
      if (pair.from == 1 && pair.matchCount() > 0) pairs.push_back(&pair);
    }
    std::stable_sort(pairs.begin(), pairs.end(),
                     [](const TexturePair* a, const TexturePair* b) { return a->matchCount() > b->matchCount(); });
    pairs.resize(std::min(pairs.size(), most));
    std::sort(pairs.begin(), pairs.end(), [](const TexturePair* a, const TexturePair* b) { return a->to < b->to; });
    return pairs;
  }

  static void addPicture(Session& session, Report& report, const std::string& file, const cv::Mat& picture,
                         const std::string& caption) {
    session.folder().writePicture(file, picture);
    report.pictures.push_back({caption, reportJpeg(picture)});
  }

  static std::string matchesText(const TextureResult& result, const TexturePair& pair) {
    return fmt::format(matchesCaption, result.images[static_cast<std::size_t>(pair.from) - 1].name,
                       result.images[static_cast<std::size_t>(pair.to) - 1].name);
  }

  static std::string addPairFiles(Session& session, const TextureResult& result, Report& report) {
    writeMatches(session.folder(), result);
    const TexturePair& pair = result.pairs[0];
    addPicture(session, report, "matches.png", drawTexturePair(result.images[0], result.images[1], pair),
               matchesText(result, pair));
    return summaryLine("matches", session.folder().shownPath("matches.csv")) +
           summaryLine("picture", session.folder().shownPath("matches.png"));
  }

  std::string addTrackFiles(Session& session, const TextureResult& result, Report& report) const {
    writeTracks(session.folder(), result);
    writeTable(session.folder(), result);
    addPicture(session, report, "multiplicity.png", drawMultiplicity(result),
               "The first image: features found in other images, coloured by the number of images they are in");
    addPicture(session, report, "table.png", drawTable(result), "Matches of each two images");
    for (const TexturePair* pair : pairsToDraw(result, static_cast<std::size_t>(pictures_))) {
      const TextureImage& to = result.images[static_cast<std::size_t>(pair->to) - 1];
      addPicture(session, report, fmt::format("matches_{:04}.png", pair->to),
                 drawTexturePair(result.images[0], to, *pair), matchesText(result, *pair));
    }
    const auto shown = [&](const char* name) { return session.folder().shownPath(name); };
    return summaryLine("tables", shown("tracks.csv") + ", " + shown("table.csv")) +
           summaryLine("pictures", shown("multiplicity.png") + ", " + shown("table.png"));
  }

  int show(Session& session, const TextureResult& result, const std::vector<InputFile>& inputs) const {
    Report report = textureReport(result, session.clock());
    const std::string files = session.clock().time("pictures", [&] {
      return result.onePair() ? addPairFiles(session, result, report) : addTrackFiles(session, result, report);
    });
    session.finish(report, inputs, summaryText(result, session.clock()) + files, "matches_");
    if (result.found()) return success;
    fmt::print(stderr, "mirel texture: {}\n", whyNothing(result));
    return noResult;
  }

  RunOptions common_;
  std::vector<std::string> files_;
  int pictures_ = 6;
};

const CommandRegistration<TextureCommand> registration(
    "texture", "match photographs of a surface, and find its features again in many of them",
    {"mirel texture photo_1.png photo_2.png --out out/pair",
     "mirel texture 'photo_*.png' --set txmMinMultipicity=3 --json"});

}  // namespace

}  // namespace mirel
