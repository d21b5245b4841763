#include "output/Report.h"

#include "output/Digest.h"
#include "output/PageParts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

std::string escape(std::string_view text) {
  std::string safe;
  for (const char c : text) {
    switch (c) {
      case '&':
        safe += "&amp;";
        break;
      case '<':
        safe += "&lt;";
        break;
      case '>':
        safe += "&gt;";
        break;
      case '"':
        safe += "&quot;";
        break;
      default:
        safe += c;
    }
  }
  return safe;
}

/// JSON that cannot end the script element it stands in.
std::string scriptSafe(const nlohmann::json& value) {
  std::string text = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  for (std::size_t at = 0; (at = text.find('<', at)) != std::string::npos;) text.replace(at, 1, "\\u003c");
  return text;
}

/// Replaces every {{name}} of the page; what is put in is not looked at again.
std::string fill(std::string_view page, const std::map<std::string, std::string, std::less<>>& parts) {
  std::string text;
  while (true) {
    const std::size_t open = page.find("{{");
    text += page.substr(0, open);
    if (open == std::string_view::npos) return text;
    const std::size_t close = page.find("}}", open);
    text += parts.find(page.substr(open + 2, close - open - 2))->second;
    page.remove_prefix(close + 2);
  }
}

bool isNumber(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789.,-+e %") == std::string::npos;
}

std::string factsHtml(const std::vector<ReportFact>& facts) {
  std::string html;
  for (const ReportFact& fact : facts) {
    html += fmt::format("<div><dt>{}</dt><dd>{}<small>{}</small></dd></div>\n", escape(fact.label), escape(fact.value),
                        escape(fact.note));
  }
  return html;
}

std::string figuresHtml(const std::vector<ReportPicture>& pictures) {
  std::string html;
  for (const ReportPicture& picture : pictures) {
    std::string narrow;
    if (!picture.narrow.empty()) {
      narrow = fmt::format("<source media=\"(max-width: 600px)\" srcset=\"data:image/jpeg;base64,{}\">",
                           base64(picture.narrow));
    }
    html += fmt::format(
        "<figure><picture>{2}<img alt=\"{0}\" src=\"data:image/jpeg;base64,{1}\"></picture>"
        "<figcaption>{0}</figcaption></figure>\n",
        escape(picture.caption), base64(picture.jpeg), narrow);
  }
  return html;
}

std::string picturesHtml(const std::vector<ReportPicture>& pictures) {
  return pictures.empty() ? "" : "<section>\n<h2>Pictures</h2>\n" + figuresHtml(pictures) + "</section>\n";
}

/// @param first  number of the first chart on the page
std::string canvasesHtml(const std::vector<ReportChart>& charts, std::size_t first) {
  if (charts.empty()) return {};
  std::string html = charts[0].overTime ? "<div class=\"charts stacked\">\n" : "<div class=\"charts\">\n";
  for (std::size_t i = 0; i < charts.size(); ++i) {
    html += fmt::format("<div class=\"chart\"><h3>{}</h3><div><canvas id=\"chart{}\"></canvas></div></div>\n",
                        escape(charts[i].title), first + i);
  }
  return html + "</div>\n";
}

std::string chartsHtml(const Report& report, const std::vector<ReportChart>& charts) {
  if (charts.empty()) return {};
  std::string html = fmt::format("<section>\n<h2>{}</h2>\n", escape(report.chartsTitle));
  if (!report.chartsNote.empty()) html += fmt::format("<p class=\"note\">{}</p>\n", escape(report.chartsNote));
  return html + canvasesHtml(charts, 0) + "</section>\n";
}

nlohmann::json chartsJson(const std::vector<ReportChart>& charts) {
  nlohmann::json list = nlohmann::json::array();
  for (const ReportChart& chart : charts) {
    list.push_back({{"x", chart.xLabel},
                    {"y", chart.yLabel},
                    {"labels", chart.labels},
                    {"series", chart.series},
                    {"fromZero", chart.fromZero},
                    {"overTime", chart.overTime},
                    {"shaded", chart.shaded}});
  }
  return list;
}

/// A column goes to the right when none of its cells has words in it.
bool isNumberColumn(const ReportTable& table, std::size_t column) {
  const auto isNumberCell = [&](const auto& row) { return isNumber(row[column]); };
  const auto hasWords = [&](const auto& row) {
    return std::any_of(row[column].begin(), row[column].end(), [](unsigned char c) { return std::isalpha(c) != 0; });
  };
  return std::any_of(table.rows.begin(), table.rows.end(), isNumberCell) &&
         std::none_of(table.rows.begin(), table.rows.end(),
                      [&](const auto& row) { return hasWords(row) && !isNumberCell(row); });
}

/// Whether the last column has sentences: on narrow screens they get lines of their own.
bool isWordy(const ReportTable& table) {
  return std::any_of(table.rows.begin(), table.rows.end(), [](const auto& row) { return row.back().size() > 40; });
}

std::string tableHtml(const ReportTable& table) {
  std::string html = fmt::format("<section>\n<h2>{}</h2>\n<div class=\"wide\"><table{}><thead><tr>",
                                 escape(table.title), isWordy(table) ? " class=\"wordy\"" : "");
  std::vector<const char*> kinds;
  for (std::size_t i = 0; i < table.heads.size(); ++i) {
    kinds.push_back(isNumberColumn(table, i) ? "number" : "name");
    html += fmt::format("<th class=\"{}\">{}</th>", kinds[i], escape(table.heads[i]));
  }
  html += "</tr></thead><tbody>\n";
  for (const auto& row : table.rows) {
    html += "<tr>";
    for (std::size_t i = 0; i < row.size(); ++i) {
      html += fmt::format("<td class=\"{}\">{}</td>", kinds[i], escape(row[i]));
    }
    html += "</tr>\n";
  }
  return html + "</tbody></table></div>\n</section>\n";
}

std::string tablesHtml(const std::vector<ReportTable>& tables) {
  std::string html;
  for (const ReportTable& table : tables) html += tableHtml(table);
  return html;
}

constexpr const char* levels[] = {"good", "weak", "bad"};

std::string verdictHtml(const ReportAnswer& answer) {
  return fmt::format("<p class=\"verdict {}\">{}</p>\n", levels[static_cast<int>(answer.verdict)],
                     escape(answer.sentence));
}

/// Broken between words only: browsers like to break at hyphens too.
std::string lineHtml(const std::string& commandLine) {
  std::string html = escape(commandLine);
  constexpr std::string_view between = "</span> <span>";
  for (std::size_t at = 0; (at = html.find(' ', at)) != std::string::npos; at += between.size()) {
    html.replace(at, 1, between);
  }
  return "<pre class=\"line\"><span>" + html + "</span></pre>\n";
}

/// @param firstChart  number of its first chart on the page
std::string partHtml(const ReportPart& part, std::size_t firstChart) {
  std::string html = fmt::format("<section id=\"{0}\">\n<p class=\"command\">mirel {0}: {1}</p>\n<h2>{2}</h2>\n{3}{4}",
                                 escape(part.name), escape(part.meaning), escape(part.answer.title),
                                 verdictHtml(part.answer), lineHtml(part.commandLine));
  if (!part.facts.empty()) html += "<dl class=\"facts\">\n" + factsHtml(part.facts) + "</dl>\n";
  html += figuresHtml(part.pictures) + canvasesHtml(part.charts, firstChart) + "<p class=\"links\">";
  for (const ReportLink& link : part.links) {
    html += fmt::format("<a href=\"{}\">{}</a>\n", escape(link.target), escape(link.text));
  }
  return html + "</p>\n</section>\n";
}

/// An index, and the parts; appends their charts to those of the page.
std::string partsHtml(const std::vector<ReportPart>& parts, std::vector<ReportChart>& charts) {
  if (parts.empty()) return {};
  std::string index = "<nav>", html;
  for (const ReportPart& part : parts) {
    index += fmt::format("<a href=\"#{0}\">{0}</a>\n", escape(part.name));
    html += partHtml(part, charts.size());
    charts.insert(charts.end(), part.charts.begin(), part.charts.end());
  }
  return index + "</nav>\n" + html;
}

std::string plain(const nlohmann::json& value) { return value.is_string() ? value.get<std::string>() : value.dump(); }

std::string settingsRows(const nlohmann::json& settings, bool changed) {
  std::string html;
  for (const nlohmann::json& row : settings) {
    if (row["changed"] != changed) continue;
    html += fmt::format(
        "<tr{}><td class=\"name\">{}</td><td class=\"name\">{}{}</td><td class=\"name\">{}</td><td>{}</td>"
        "<td>{}</td></tr>\n",
        changed ? " class=\"changed\"" : "", escape(plain(row["key"])), escape(plain(row["value"])),
        changed ? " <span class=\"mark\">changed</span>" : "", escape(plain(row["default"])),
        escape(plain(row["meaning"])), escape(plain(row["read_by"])));
  }
  return html;
}

std::string settingsHtml(const nlohmann::json& settings) {
  if (settings.empty()) return {};
  const char* head =
      "<div class=\"wide\"><table "
      "class=\"wordy\"><thead><tr><th>Key</th><th>Value</th><th>Default</th><th>Meaning</th><th>Read by</th>"
      "</tr></thead><tbody>\n";
  const char* tail = "</tbody></table></div>\n";
  const std::string changed = settingsRows(settings, true);
  return "<section>\n<h2>Settings in force</h2>\n" +
         (changed.empty() ? "<p>All at their defaults.</p>\n" : head + changed + tail) +
         "<details><summary>Settings at their defaults</summary>\n" + head + settingsRows(settings, false) + tail +
         "</details>\n</section>\n";
}

std::string footerHtml(const nlohmann::json& run) {
  return escape(fmt::format("mirel {}, OpenCV {}, xfeatures2d {}, instruction set {}", plain(run["version"]),
                            plain(run["opencv"]), run["xfeatures2d"].get<bool>() ? "yes" : "no",
                            plain(run["instruction_set"])));
}

}  // namespace

std::string Report::html() const {
  std::vector<ReportChart> drawable = page::library.empty() ? std::vector<ReportChart>() : charts;
  const std::string ownCharts = chartsHtml(*this, drawable), partsText = partsHtml(parts, drawable);
  const nlohmann::json data = {{"schema", 1}, {"result", result}, {"run", run}, {"charts", chartsJson(drawable)}};
  return fill(page::html, {{"title", escape(answer.title)},
                           {"command", escape(command)},
                           {"verdict", verdictHtml(answer)},
                           {"facts", factsHtml(facts)},
                           {"pictures", picturesHtml(pictures)},
                           {"charts", ownCharts},
                           {"parts", partsText},
                           {"tables", tablesHtml(tables)},
                           {"settings", settingsHtml(run["settings"])},
                           {"footer", footerHtml(run)},
                           {"data", scriptSafe(data)},
                           {"style", std::string(page::style)},
                           {"library", std::string(page::library)},
                           {"script", std::string(page::script)}});
}

std::string reportJpeg(const cv::Mat& picture) {
  constexpr int widest = 1560;
  cv::Mat smaller = picture;
  if (picture.cols > widest) {
    cv::resize(picture, smaller, {widest, picture.rows * widest / picture.cols}, 0, 0, cv::INTER_AREA);
  }
  std::vector<unsigned char> bytes;
  cv::imencode(".jpg", smaller, bytes, {cv::IMWRITE_JPEG_QUALITY, 88});
  return {bytes.begin(), bytes.end()};
}

}  // namespace mirel
