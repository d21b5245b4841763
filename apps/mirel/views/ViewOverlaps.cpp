#include "views/ViewOverlaps.h"

#include "output/MatrixTable.h"
#include "output/Summary.h"

#include <MirelAlgorithms/geometry/Frustum.h>
#include <MirelAlgorithms/geometry/UnionFind.h>
#include <fmt/format.h>

#include <algorithm>

namespace mirel {

namespace {

using MirelAlgorithms::Frustum;
using VoskBase::Mat4d;

constexpr std::size_t mostInConsole = 12, mostGroupsInConsole = 10, mostInReport = 60, mostPairsListed = 20;

Mat4d turnedAboutX(Mat4d pose) {
  for (int i = 0; i < 3; ++i) {
    pose[4 + i] = -pose[4 + i];
    pose[8 + i] = -pose[8 + i];
  }
  return pose;
}

Mat4d scorePose(const NamedPose& view, Look look) {
  return look == Look::alongMinusZ ? turnedAboutX(view.pose) : view.pose;
}

std::vector<std::vector<int>> groupsOf(const std::vector<std::vector<char>>& overlaps) {
  const int count = static_cast<int>(overlaps.size());
  MirelAlgorithms::UnionFind views(count);
  for (int i = 0; i < count; ++i) {
    for (int j = i + 1; j < count; ++j) {
      if (overlaps[i][j] != 0) views.unionPartitions(i, j);
    }
  }
  std::vector<std::vector<int>> groups = views.getPartitions();
  std::sort(groups.begin(), groups.end(), [](const auto& a, const auto& b) {
    return a.size() != b.size() ? a.size() > b.size() : a.front() < b.front();
  });
  return groups;
}

struct Pair {
  std::size_t view, other;
  double score;
};

/// Pairs of different views that overlap or have a score, the highest score first.
std::vector<Pair> bestPairs(const ViewOverlaps& result) {
  std::vector<Pair> pairs;
  for (std::size_t i = 0; i < result.views.size(); ++i) {
    for (std::size_t j = 0; j < result.views.size(); ++j) {
      if (i != j && (result.overlaps[i][j] != 0 || result.scores[i][j] > 0))
        pairs.push_back({i, j, result.scores[i][j]});
    }
  }
  std::stable_sort(pairs.begin(), pairs.end(), [](const Pair& a, const Pair& b) { return a.score > b.score; });
  return pairs;
}

std::vector<std::string> viewNames(const ViewOverlaps& result) {
  std::vector<std::string> names;
  for (const NamedPose& view : result.views) names.push_back(view.name);
  return names;
}

std::string overlapMeaning(const ViewOverlaps& result) {
  return fmt::format("Overlap: the two pyramids share a point, cameras looking along {}",
                     result.range.look == Look::alongPlusZ ? "+z" : "-z");
}

std::string scoreMeaning(const ViewOverlaps& result) {
  return fmt::format("Score: how much of the view the other camera sees, both looking along {}; near points count more",
                     result.range.look == Look::alongMinusZ ? "-z" : "+z");
}

std::string sentence(const ViewOverlaps& result) {
  if (result.overlappingPairs == 0) return "No result: no two views share a point.";
  if (result.groups.size() == 1) return "Good: overlaps connect all views, they belong together.";
  const auto alone =
      std::count_if(result.groups.begin(), result.groups.end(), [](const auto& g) { return g.size() == 1; });
  return fmt::format("Weak: the views fall into {} groups without a common point{}.", result.groups.size(),
                     alone > 0 ? fmt::format(", {} of a single view", alone) : "");
}

ReportAnswer judge(const ViewOverlaps& result) {
  const Verdict verdict = result.overlappingPairs == 0 ? Verdict::bad
                          : result.groups.size() == 1  ? Verdict::good
                                                       : Verdict::weak;
  const char* const directions = result.range.look == Look::asTheLibrary
                                     ? " Overlaps look along -z, scores along +z; --look makes that one direction."
                                     : "";
  return {fmt::format("{} of {} pairs of views overlap", result.overlappingPairs, result.pairs), verdict,
          sentence(result) + directions};
}

/// The first names, and how many more there are.
std::string namesOf(const ViewOverlaps& result, const std::vector<int>& group) {
  constexpr std::size_t most = 12;
  std::string names;
  for (std::size_t k = 0; k < std::min(group.size(), most); ++k) {
    names += (k == 0 ? "" : ", ") + result.views[static_cast<std::size_t>(group[k])].name;
  }
  return group.size() > most ? names + fmt::format(" and {} more", group.size() - most) : names;
}

ReportTable groupTable(const ViewOverlaps& result) {
  ReportTable table{"Groups: views that overlaps connect", {"Group", "Views", "Names"}, {}};
  for (std::size_t i = 0; i < result.groups.size(); ++i) {
    table.rows.push_back(
        {fmt::format("{}", i + 1), fmt::format("{}", result.groups[i].size()), namesOf(result, result.groups[i])});
  }
  return table;
}

ReportTable pairTable(const ViewOverlaps& result) {
  const std::vector<Pair> pairs = bestPairs(result);
  const std::size_t listed = std::min(pairs.size(), mostPairsListed);
  ReportTable table{fmt::format("Pairs of the highest scores, {} of {}", listed, pairs.size()),
                    {"View", "Seen by", "Overlap", "Score"},
                    {}};
  for (std::size_t k = 0; k < listed; ++k) {
    const auto& [i, j, score] = pairs[k];
    table.rows.push_back({result.views[i].name, result.views[j].name, result.overlaps[i][j] != 0 ? "yes" : "no",
                          fmt::format("{:.4g}", score)});
  }
  return table;
}

}  // namespace

Mat4d overlapPose(const NamedPose& view, Look look) {
  return look == Look::alongPlusZ ? turnedAboutX(view.pose) : view.pose;
}

ViewOverlaps findOverlaps(std::string file, std::vector<NamedPose> views, const ViewRange& range) {
  const std::size_t count = views.size();
  std::vector<Frustum> tested, scored;
  for (const NamedPose& view : views) {
    tested.emplace_back(overlapPose(view, range.look), range.nearest, range.farthest, range.fov(), -1);
    scored.emplace_back(scorePose(view, range.look), range.nearest, range.farthest, range.fov(), 1);
  }
  ViewOverlaps result{std::move(file), range, std::move(views), {}, {}, {}};
  result.overlaps.assign(count, std::vector<char>(count));
  result.scores.assign(count, std::vector<double>(count));
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = 0; j < count; ++j) {
      result.scores[i][j] = scored[i].checkPose(scored[j].pose);
      if (j < i) continue;
      result.overlaps[i][j] = result.overlaps[j][i] = Frustum::intersect(tested[i], tested[j]) ? 1 : 0;
      if (i != j) result.overlappingPairs += result.overlaps[i][j] != 0 ? 1 : 0;
    }
  }
  result.pairs = count * (count - 1) / 2;
  result.groups = groupsOf(result.overlaps);
  return result;
}

nlohmann::json resultJson(const ViewOverlaps& result) {
  nlohmann::json views = nlohmann::json::array(), overlaps = views, groups = views;
  for (const NamedPose& view : result.views) {
    const cv::Point3d p = view.position();
    views.push_back({{"number", view.number}, {"name", view.name}, {"position_m", {p.x, p.y, p.z}}});
  }
  for (const std::vector<char>& row : result.overlaps) {
    nlohmann::json flags = nlohmann::json::array();
    for (const char flag : row) flags.push_back(flag != 0);
    overlaps.push_back(std::move(flags));
  }
  for (const std::vector<int>& group : result.groups) {
    nlohmann::json members = nlohmann::json::array();
    for (const int i : group) members.push_back(result.views[static_cast<std::size_t>(i)].number);
    groups.push_back(std::move(members));
  }
  const ViewRange& range = result.range;
  return {{"schema", 1},
          {"command", "frustum"},
          {"poses", result.file},
          {"fov_deg", range.fovDegrees},
          {"near_m", range.nearest},
          {"far_m", range.farthest},
          {"overlaps_look_along", range.look == Look::alongPlusZ ? "+z" : "-z"},
          {"scores_look_along", range.look == Look::alongMinusZ ? "-z" : "+z"},
          {"views", views},
          {"pairs", result.pairs},
          {"overlapping_pairs", result.overlappingPairs},
          {"overlaps", overlaps},
          {"scores", result.scores},
          {"groups", groups}};
}

Report overlapReport(const ViewOverlaps& result) {
  const std::vector<Pair> best = bestPairs(result);
  const ViewRange& range = result.range;
  Report report = {
      .command = "mirel frustum",
      .answer = judge(result),
      .facts = {{"Views", fmt::format("{}", result.views.size()), result.file},
                {"Overlapping pairs", fmt::format("{}", result.overlappingPairs), fmt::format("of {}", result.pairs)},
                {"Groups", fmt::format("{}", result.groups.size()), "of views that overlaps connect"},
                {"Highest score", best.empty() ? "0" : fmt::format("{:.4g}", best[0].score),
                 best.empty() ? "" : result.views[best[0].view].name + " seen by " + result.views[best[0].other].name},
                {"Field of view", fmt::format("{:g} deg", range.fovDegrees), "full angle"},
                {"Range", fmt::format("{:g} to {:g} m", range.nearest, range.farthest), ""}},
      .pictures = {},
      .charts = {},
      .tables = {groupTable(result)},
      .result = resultJson(result),
      .run = {}};
  const std::vector<std::string> names = viewNames(result);
  if (names.size() <= mostInReport) {
    report.tables.push_back(matrixTable(overlapMeaning(result), "View", names, [&](std::size_t i, std::size_t j) {
      return std::string(result.overlaps[i][j] != 0 ? "yes" : "\u00b7");
    }));
    report.tables.push_back(matrixTable(scoreMeaning(result), "View", names, [&](std::size_t i, std::size_t j) {
      return fmt::format("{:.4g}", result.scores[i][j]);
    }));
  }
  report.tables.push_back(pairTable(result));
  return report;
}

std::string summaryText(const ViewOverlaps& result) {
  std::string text = summaryLine("poses", fmt::format("{}, {} views", result.file, result.views.size())) +
                     summaryLine("view", fmt::format("{:g} deg wide, from {:g} to {:g} m", result.range.fovDegrees,
                                                     result.range.nearest, result.range.farthest)) +
                     summaryLine("overlaps", fmt::format("{} of {} pairs", result.overlappingPairs, result.pairs)) +
                     summaryLine("groups", fmt::format("{}", result.groups.size()));
  for (std::size_t i = 0; i < std::min(result.groups.size(), mostGroupsInConsole); ++i) {
    text += summaryLine("", fmt::format("{}: {}", result.groups[i].size(), namesOf(result, result.groups[i])));
  }
  const std::vector<std::string> names = viewNames(result);
  if (names.size() > mostInConsole) return text;
  text += overlapMeaning(result) + "\n" +
          matrixText(names, [&](std::size_t i, std::size_t j) { return result.overlaps[i][j] != 0 ? "yes" : "."; });
  text += scoreMeaning(result) + "\n" +
          matrixText(names, [&](std::size_t i, std::size_t j) { return fmt::format("{:.4g}", result.scores[i][j]); });
  return text;
}

}  // namespace mirel
