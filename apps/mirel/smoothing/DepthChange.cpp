#include "smoothing/DepthChange.h"

#include "output/Summary.h"

#include <fmt/format.h>

#include <cstdlib>

namespace mirel {

namespace {

std::string percent(double share) { return fmt::format("{:.1f} %", 100 * share); }

std::string largestText(const DepthChange& change) {
  return change.largestAt ? fmt::format("{:+}", change.largestChange) : "0";
}

std::string placeText(const DepthChange& change) {
  return change.largestAt ? fmt::format("at x {}, y {} px", change.largestAt->x, change.largestAt->y) : "";
}

ReportAnswer judge(const DepthChange& change) {
  const std::string filter = fmt::format("{}, window of {} pixels", change.filter, change.window);
  if (change.validAfter == 0) {
    return {"No pixel of " + change.image + " keeps its depth", Verdict::bad,
            change.validBefore == 0
                ? "No result: the image has no depth, all its pixels are 0."
                : fmt::format("No result: every pixel with depth has one without in its window of {} pixels.",
                              change.window)};
  }
  const std::string title = fmt::format("{} smoothed, {} of it with depth", change.image, percent(change.shareAfter()));
  const double lost = static_cast<double>(change.removed) / static_cast<double>(change.validBefore);
  const std::string cost = percent(lost) + " of the depth is gone, at the borders of holes";
  constexpr double much = 0.25;
  if (lost > much)
    return {title, Verdict::weak, fmt::format("Weak: {}; a smaller window keeps more ({}).", cost, filter)};
  return {title, Verdict::good, fmt::format("Good: {} ({}).", lost > 0 ? cost : "all depth is kept", filter)};
}

}  // namespace

void countChanges(DepthChange& change) {
  for (int y = 0; y < change.before.rows; ++y) {
    const auto* before = change.before.ptr<std::uint16_t>(y);
    const auto* after = change.after.ptr<std::uint16_t>(y);
    for (int x = 0; x < change.before.cols; ++x) {
      if (before[x] != 0) ++change.validBefore;
      if (after[x] == 0) continue;
      ++change.validAfter;
      const int difference = after[x] - before[x];
      if (difference == 0) continue;
      ++change.changed;
      change.sumOfChanges += std::abs(difference);
      if (std::abs(difference) > std::abs(change.largestChange)) {
        change.largestChange = difference;
        change.largestAt = cv::Point(x, y);
      }
    }
  }
  change.removed = change.validBefore - change.validAfter;
}

nlohmann::json resultJson(const DepthChange& change) {
  const auto at = [&](int value) { return change.largestAt ? nlohmann::json(value) : nullptr; };
  return {{"schema", 1},
          {"command", "depth"},
          {"image", change.image},
          {"width_px", change.before.cols},
          {"height_px", change.before.rows},
          {"filter", change.filter},
          {"window_px", change.window},
          {"valid_before_px", change.validBefore},
          {"valid_after_px", change.validAfter},
          {"valid_share_before", change.shareBefore()},
          {"valid_share_after", change.shareAfter()},
          {"removed_px", change.removed},
          {"changed_px", change.changed},
          {"largest_change", change.largestChange},
          {"largest_change_x_px", at(change.largestAt.value_or(cv::Point()).x)},
          {"largest_change_y_px", at(change.largestAt.value_or(cv::Point()).y)},
          {"mean_absolute_change", change.meanChange()}};
}

Report depthReport(const DepthChange& change) {
  return {
      .command = "mirel depth",
      .answer = judge(change),
      .facts = {{"Valid before", percent(change.shareBefore()),
                 fmt::format("{} pixels with depth", change.validBefore)},
                {"Valid after", percent(change.shareAfter()),
                 fmt::format("{} pixels; {} removed near holes", change.validAfter, change.removed)},
                {"Largest change", largestText(change),
                 change.largestAt ? "raw units, " + placeText(change) : "raw units"},
                {"Mean change", fmt::format("{:.3g}", change.meanChange()), "raw units, absolute, where depth is left"},
                {"Changed", fmt::format("{}", change.changed), "pixels that keep depth, but another one"},
                {"Filter", change.filter, fmt::format("window of {} pixels", change.window)},
                {"Image", fmt::format("{} x {}", change.before.cols, change.before.rows), "pixels of 16 bits"}},
      .pictures = {},
      .charts = {},
      .tables = {},
      .result = resultJson(change),
      .run = {}};
}

std::string summaryText(const DepthChange& change) {
  return summaryLine("image", fmt::format("{} ({} x {} px)", change.image, change.before.cols, change.before.rows)) +
         summaryLine("filter", fmt::format("{}, window of {} px", change.filter, change.window)) +
         summaryLine("valid",
                     fmt::format("{} before, {} after; {} px removed near holes", percent(change.shareBefore()),
                                 percent(change.shareAfter()), change.removed)) +
         summaryLine("changed", fmt::format("{} px, by {:.3g} on average over those with depth", change.changed,
                                            change.meanChange())) +
         summaryLine("largest", change.largestAt ? largestText(change) + " " + placeText(change) : "no change");
}

}  // namespace mirel
