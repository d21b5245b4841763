#include "pictures/TexturePicture.h"

#include "pictures/ColourBar.h"
#include "pictures/Drawing.h"
#include "pictures/PairView.h"

#include <fmt/format.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

const cv::Scalar lostFeature(150, 150, 150), noMatch(238, 236, 234), diagonal(222, 218, 214);

/// Black or white, whichever reads better on the colour.
cv::Scalar inkOn(const cv::Scalar& colour) {
  return 0.114 * colour[0] + 0.587 * colour[1] + 0.299 * colour[2] > 130 ? ink : paper;
}

void drawCentred(cv::Mat& picture, const std::string& text, const cv::Rect& area, double height,
                 const cv::Scalar& colour) {
  const cv::Point baseline(area.x + (area.width - textWidth(text, height)) / 2,
                           area.y + area.height / 2 + static_cast<int>(height / 2));
  drawText(picture, text, baseline, height, colour);
}

/// The whole image inside a square, and its number.
void drawThumbnail(cv::Mat& picture, const TextureImage& image, const cv::Rect& area) {
  const double scale = static_cast<double>(area.width) / std::max(image.grey.cols, image.grey.rows);
  cv::Mat view = viewOf(image.grey, std::min(scale, 1.0));
  view = view(cv::Rect({}, view.size()) & cv::Rect({}, area.size()));
  const cv::Point corner = area.tl() + cv::Point((area.width - view.cols) / 2, (area.height - view.rows) / 2);
  view.copyTo(picture(cv::Rect(corner, view.size())));
  constexpr double height = 11;
  const std::string number = fmt::format("{}", image.number);
  const cv::Rect box(corner, cv::Size(textWidth(number, height) + 8, static_cast<int>(height) + 8));
  cv::rectangle(picture, box & cv::Rect({}, picture.size()), ink, cv::FILLED);
  drawText(picture, number, box.tl() + cv::Point(4, static_cast<int>(height) + 4), height, paper);
}

/// Where the cells of the table are.
struct TableLayout {
  int cell;
  bool thumbnails;

  explicit TableLayout(int images) : cell(std::clamp(1100 / (images + 1), 5, 130)), thumbnails(cell >= 40) {}

  int edge() const { return thumbnails ? cell + gap : 0; }
  cv::Rect at(int row, int column) const {
    return {edge() + column * cell, edge() + row * cell, cell - (thumbnails ? 2 : 0), cell - (thumbnails ? 2 : 0)};
  }
  cv::Rect head(int i, bool ofColumn) const {
    const cv::Rect along = at(i, i);
    return ofColumn ? cv::Rect(along.x, 0, along.width, along.height) : cv::Rect(0, along.y, along.width, along.height);
  }
  int size(int images) const { return edge() + images * cell; }

  static constexpr int gap = 6;
};

void drawCell(cv::Mat& view, const cv::Rect& area, int value, const cv::Scalar& colour, bool numbers) {
  cv::rectangle(view, area, colour, cv::FILLED);
  if (numbers) drawCentred(view, fmt::format("{}", value), area, area.width > 70 ? 14 : 10, inkOn(colour));
}

std::vector<double> matchCounts(const TextureResult& result) {
  std::vector<double> counts;
  for (const TexturePair& pair : result.pairs) {
    if (pair.matchCount() >= fewMatches) counts.push_back(pair.matchCount());
  }
  return counts;
}

}  // namespace

cv::Mat drawTexturePair(const TextureImage& from, const TextureImage& to, const TexturePair& pair) {
  std::vector<PairLine> lines;
  for (const cv::Vec3i& match : pair.matches) {
    lines.push_back({from.points[static_cast<std::size_t>(match[0])], to.points[static_cast<std::size_t>(match[1])],
                     static_cast<double>(match[2])});
  }
  PairView view(from.grey, to.grey);
  const ColourScale colours = coloursOf(lines);
  view.draw(lines, colours);
  Sheet sheet(view.picture(),
              {fmt::format("left: {}   right: {}", from.name, to.name),
               fmt::format("{} matches of {} and {} features{}", lines.size(), pair.features1, pair.features2,
                           PairView::lineStepText(lines.size())),
               fmt::format("ratio test: {} and {} left; both directions: {}; within distance: {}; one homography: {}",
                           pair.ratioForward, pair.ratioBackward, pair.agreed, pair.withinDistance, lines.size())});
  colours.drawBar(sheet.picture(), sheet.footer(), "descriptor distance, bits");
  return sheet.picture();
}

cv::Mat drawMultiplicity(const TextureResult& result) {
  constexpr int imageWidth = 1280;
  const TextureImage& first = result.images[0];
  std::vector<const TextureTrack*> tracks;
  std::vector<double> multiplicities;
  for (const TextureTrack& track : result.tracks) {
    tracks.push_back(&track);
    multiplicities.push_back(track.match.multiplicity);
  }
  std::stable_sort(tracks.begin(), tracks.end(), [](const TextureTrack* a, const TextureTrack* b) {
    return a->match.multiplicity < b->match.multiplicity;
  });
  const double scale = viewScale(first.grey.size(), imageWidth);
  cv::Mat view = viewOf(first.grey, scale, 0.8);
  const ColourScale colours(multiplicities, false);
  for (const cv::Vec2f& point : first.points) drawDot(view, viewPoint(point, scale), 1.5, lostFeature);
  for (const TextureTrack* track : tracks) {
    const int multiplicity = track->match.multiplicity;
    drawDot(view, viewPoint(track->match.point, scale), std::min(3.0 + 0.7 * (multiplicity - 1), 7.0),
            colours.colour(multiplicity));
  }
  Sheet sheet(view, {"Features found again: " + first.name,
                     fmt::format("{} of {} features are in {} of the {} images or more; small and grey: the others",
                                 tracks.size(), first.features(), result.leastMultiplicity, result.images.size())});
  colours.drawBar(sheet.picture(), sheet.footer(), "images with the feature, this one too");
  return sheet.picture();
}

cv::Mat drawTable(const TextureResult& result) {
  const int images = static_cast<int>(result.images.size());
  const TableLayout layout(images);
  const ColourScale colours(matchCounts(result), true);
  cv::Mat view(layout.size(images), layout.size(images), CV_8UC3, paper);
  for (int i = 0; i < images; ++i) {
    const auto row = static_cast<std::size_t>(i);
    for (int j = 0; j < images; ++j) {
      const int value = result.tableCell(row, static_cast<std::size_t>(j));
      const cv::Scalar colour = i == j ? diagonal : value < fewMatches ? noMatch : colours.colour(value);
      drawCell(view, layout.at(i, j), value, colour, layout.thumbnails);
    }
    if (!layout.thumbnails) continue;
    drawThumbnail(view, result.images[row], layout.head(i, true));
    drawThumbnail(view, result.images[row], layout.head(i, false));
  }
  Sheet sheet(view, {"Matches of each two images",
                     fmt::format("{} images, {} to {}; on the diagonal: their features", images,
                                 result.images.front().name, result.images.back().name),
                     fmt::format("pale: fewer than {}, which can be chance", fewMatches)});
  colours.drawBar(sheet.picture(), sheet.footer(), "matches");
  return sheet.picture();
}

}  // namespace mirel
