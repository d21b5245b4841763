/// One web page about a run that needs nothing but itself.
#pragma once

#include <nlohmann/json.hpp>
#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

namespace mirel {

enum class Verdict { good, weak, bad };

struct ReportFact {
  std::string label, value, note;
};

struct ReportPicture {
  std::string caption;
  std::string jpeg;         ///< as `reportJpeg` gives it
  std::string narrow = {};  ///< the same for screens as narrow as a telephone's; may be empty
};

struct ReportChart {
  std::string title, xLabel, yLabel;
  nlohmann::json labels;  ///< one per point
  nlohmann::json series;  ///< list of {"name", "values"}, also "dashed"; null is a gap
  bool fromZero = true;
  bool overTime = false;  ///< labels are numbers in ascending order, shown to scale and over the whole width
  nlohmann::json shaded = nlohmann::json::array();  ///< over time: list of [from, to]
};

/// Cells that read as numbers are set to the right.
struct ReportTable {
  std::string title;
  std::vector<std::string> heads;
  std::vector<std::vector<std::string>> rows;
};

struct ReportLink {
  std::string text, target;  ///< the target is relative to the page
};

struct ReportAnswer {
  std::string title;  ///< the answer
  Verdict verdict;
  std::string sentence;  ///< what to think of it
};

/// One of several runs that a page shows.
struct ReportPart {
  std::string name;         ///< "track"
  std::string meaning;      ///< what the subcommand does
  std::string commandLine;  ///< to copy
  ReportAnswer answer;
  std::vector<ReportFact> facts;
  std::vector<ReportPicture> pictures;
  std::vector<ReportChart> charts;
  std::vector<ReportLink> links;
};

struct Report {
  std::string command;  ///< "mirel track"
  ReportAnswer answer;
  std::vector<ReportFact> facts;
  std::vector<ReportPicture> pictures;
  std::string chartsTitle = "Over the frames";
  std::string chartsNote = {};  ///< a sentence under the title
  std::vector<ReportChart> charts;
  std::vector<ReportTable> tables;
  std::vector<ReportPart> parts = {};
  nlohmann::json result;  ///< the numbers
  nlohmann::json run;     ///< the run record; its settings are shown

  /// The page: style, script, numbers and pictures inside, nothing fetched from anywhere; only the parts' links lead
  /// to other files.
  std::string html() const;
};

/// A picture for the page: JPEG of at most 1560 pixels in width.
std::string reportJpeg(const cv::Mat& picture);

}  // namespace mirel
