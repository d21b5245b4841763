/// Numbers of every pair of things, as a table of the report and on the console.
#pragma once

#include "output/Report.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <vector>

namespace mirel {

/// @param head  over the names
/// @param cell  text for row i, column j
template <class Cell>
ReportTable matrixTable(const std::string& title, const std::string& head, const std::vector<std::string>& names,
                        const Cell& cell) {
  ReportTable table{title, {head}, {}};
  table.heads.insert(table.heads.end(), names.begin(), names.end());
  for (std::size_t i = 0; i < names.size(); ++i) {
    table.rows.push_back({names[i]});
    for (std::size_t j = 0; j < names.size(); ++j) table.rows.back().push_back(cell(i, j));
  }
  return table;
}

/// The same with cells of equal width.
template <class Cell>
std::string matrixText(const std::vector<std::string>& names, const Cell& cell) {
  std::size_t width = 6;
  for (const std::string& name : names) width = std::clamp(name.size(), width, std::size_t{10});
  const auto line = [&](const std::string& name, const auto& text) {
    std::string cells = fmt::format("  {:{}.{}}", name, width, width);
    for (std::size_t j = 0; j < names.size(); ++j) cells += fmt::format(" {:>{}.{}}", text(j), width, width);
    return cells + '\n';
  };
  std::string text = line("", [&](std::size_t j) { return names[j]; });
  for (std::size_t i = 0; i < names.size(); ++i) text += line(names[i], [&](std::size_t j) { return cell(i, j); });
  return text;
}

}  // namespace mirel
