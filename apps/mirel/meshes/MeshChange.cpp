#include "meshes/MeshChange.h"

#include "meshes/OpenBorders.h"
#include "output/Summary.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace mirel {

namespace {

std::string countText(std::size_t count, const char* what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

/// Of the diagonal of the box around the mesh.
double fraction(const MeshChange& change, double length) {
  return change.before.diagonal > 0 ? length / change.before.diagonal : 0;
}

std::string percentText(double share) { return fmt::format("{:.3g} %", 100 * share); }

std::string askedText(const MeshChange& change) {
  return change.asked ? fmt::format("{} asked", *change.asked) : "as few as are lossless";
}

double shareLeft(const MeshChange& change) {
  return static_cast<double>(change.after.triangles) / static_cast<double>(change.before.triangles);
}

nlohmann::json distanceJson(const MeshChange& change, const SurfaceDistance& distance) {
  return {{"mean", distance.mean},
          {"rms", distance.rms},
          {"max", distance.largest},
          {"mean_of_diagonal", fraction(change, distance.mean)},
          {"rms_of_diagonal", fraction(change, distance.rms)},
          {"max_of_diagonal", fraction(change, distance.largest)}};
}

std::vector<std::string> distanceRow(const MeshChange& change, const char* name, const SurfaceDistance& distance) {
  std::vector<std::string> row = {name};
  for (const double length : {distance.mean, distance.rms, distance.largest})
    row.push_back(fmt::format("{:.4g}", length));
  for (const double length : {distance.mean, distance.rms, distance.largest}) {
    row.push_back(percentText(fraction(change, length)));
  }
  return row;
}

ReportAnswer judge(const MeshChange& change) {
  if (change.isEmpty()) {
    return {"Nothing is left of " + change.in, Verdict::bad, "No result: every triangle was collapsed."};
  }
  const std::string title =
      fmt::format("{} of {} triangles of {} left", change.after.triangles, change.before.triangles, change.in);
  const SurfaceDistance distance = change.distance.both();
  const std::string cost =
      fmt::format("the surface has moved by {} of the diagonal on average, by {} at most",
                  percentText(fraction(change, distance.mean)), percentText(fraction(change, distance.largest)));
  const bool reached = !change.asked || change.after.triangles <= static_cast<std::size_t>(*change.asked);
  if (!reached) return {title, Verdict::weak, fmt::format("Weak: {}; {}.", change.stop().text, cost)};
  constexpr double much = 0.005;
  if (fraction(change, distance.mean) > much) {
    const char* help = change.asked ? "more triangles help" : "collapses within flat areas move their open borders";
    return {title, Verdict::weak, fmt::format("Weak: {}; {}.", cost, help)};
  }
  return {title, Verdict::good, fmt::format("Good: {}.", cost)};
}

std::string contentText(const MeshChange& change) {
  return fmt::format("{}, {}", change.textured ? "texture coordinates" : "no texture coordinates",
                     change.materials == 0 ? "no materials" : countText(change.materials, "material"));
}

}  // namespace

MeshSize::MeshSize(const Surface& surface)
    : triangles(surface.triangles.size()), vertices(surface.points.size()), openEdges(openBorders(surface).size()) {
  const Eigen::AlignedBox3d box = surface.box();
  if (!box.isEmpty()) diagonal = box.diagonal().stableNorm();
}

MeshChange::Stop MeshChange::stop() const {
  if (!asked) return {"nothing_left", "no collapse is left that changes the surface by practically nothing"};
  const auto target = static_cast<std::size_t>(*asked);
  if (before.triangles <= target) return {"not_more_than_asked", "the mesh had no more than that"};
  if (after.triangles == target) return {"target_reached", "target reached"};
  if (after.triangles < target) return {"below_target", "the last collapse led below the target"};
  return {"passes_used_up", "100 passes did not reach the target; a higher --aggressiveness goes further"};
}

nlohmann::json resultJson(const MeshChange& change) {
  const bool measured = !change.isEmpty();
  const auto distance = [&](const SurfaceDistance& d) { return measured ? distanceJson(change, d) : nullptr; };
  return {{"schema", 1},
          {"command", "mesh"},
          {"mesh", change.in},
          {"rewritten", change.rewritten},
          {"lossless", !change.asked},
          {"triangles_asked", change.asked ? nlohmann::json(*change.asked) : nullptr},
          {"aggressiveness", change.asked ? nlohmann::json(change.aggressiveness) : nullptr},
          {"triangles_before", change.before.triangles},
          {"triangles_after", change.after.triangles},
          {"stopped", change.stop().name},
          {"vertices_before", change.before.vertices},
          {"vertices_after", change.after.vertices},
          {"open_edges_before", change.before.openEdges},
          {"open_edges_after", change.after.openEdges},
          {"textured", change.textured},
          {"materials", change.materials},
          {"diagonal", change.before.diagonal},
          {"distance", distance(change.distance.both())},
          {"distance_to_simplified", distance(change.distance.there)},
          {"distance_from_simplified", distance(change.distance.back)},
          {"samples_per_side", MeshDistance::samples},
          {"rounding", change.rounding}};
}

Report meshReport(const MeshChange& change) {
  const SurfaceDistance distance = change.distance.both();
  const auto lengthNote = [&](double length) {
    return fmt::format("{} of the diagonal", percentText(fraction(change, length)));
  };
  Report report = {
      .command = "mirel mesh",
      .answer = judge(change),
      .facts = {{"Triangles", fmt::format("{}", change.after.triangles),
                 fmt::format("of {}, {}: {}", change.before.triangles, percentText(shareLeft(change)),
                             askedText(change))},
                {"Vertices", fmt::format("{}", change.after.vertices), fmt::format("of {}", change.before.vertices)},
                {"Mean distance", fmt::format("{:.4g}", distance.mean), lengthNote(distance.mean)},
                {"Largest distance", fmt::format("{:.4g}", distance.largest), lengthNote(distance.largest)},
                {"Open edges", fmt::format("{}", change.after.openEdges),
                 fmt::format("of {}; they have a triangle on one side only", change.before.openEdges)},
                {"Diagonal", fmt::format("{:.4g}", change.before.diagonal), "of the box around the mesh, model units"},
                {"Stopped", change.asked ? "at " + askedText(change) : "when lossless", change.stop().text},
                {"Content", contentText(change), change.in}},
      .pictures = {},
      .charts = {},
      .tables = {},
      .result = resultJson(change),
      .run = {}};
  if (change.isEmpty()) return report;
  report.tables.push_back({fmt::format("Distance between the surfaces at {} points of each", MeshDistance::samples),
                           {"", "Mean", "RMS", "Largest", "Mean, %", "RMS, %", "Largest, %"},
                           {distanceRow(change, "both sides", distance),
                            distanceRow(change, "to the simplified mesh", change.distance.there),
                            distanceRow(change, "from the simplified mesh", change.distance.back)}});
  return report;
}

std::string summaryText(const MeshChange& change, const StageClock& clock) {
  const SurfaceDistance distance = change.distance.both();
  const auto lengths = [&](const char* name, double length) {
    return fmt::format("{} {:.4g} ({})", name, length, percentText(fraction(change, length)));
  };
  std::string text = summaryLine(
      "mesh",
      fmt::format("{} ({}, {})", change.in, countText(change.before.triangles, "triangle"), contentText(change)));
  if (!change.rewritten.empty()) {
    text += summaryLine("read", fmt::format("with these written anew: {}", fmt::join(change.rewritten, ", ")));
  }
  text +=
      summaryLine("triangles", fmt::format("{} before, {}, {} after: {}", change.before.triangles, askedText(change),
                                           change.after.triangles, change.stop().text)) +
      summaryLine("vertices", fmt::format("{} before, {} after", change.before.vertices, change.after.vertices)) +
      summaryLine("open edges", fmt::format("{} before, {} after", change.before.openEdges, change.after.openEdges));
  if (!change.isEmpty()) {
    text += summaryLine("distance", fmt::format("{}, {}, {}; of the diagonal {:.4g}", lengths("mean", distance.mean),
                                                lengths("RMS", distance.rms), lengths("largest", distance.largest),
                                                change.before.diagonal));
  }
  return text + summaryLine("time", describeStages(clock));
}

}  // namespace mirel
