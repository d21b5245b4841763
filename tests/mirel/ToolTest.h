/// Runs the tool in a folder of its own and looks at what it leaves.
#pragma once

#include "CommandLine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>
#ifndef _WIN32
#include <sys/wait.h>
#endif

struct ToolResult {
  int status;
  std::string output, errors;

  nlohmann::json json() const { return nlohmann::json::parse(output); }
};

class ToolTest : public testing::Test {
 protected:
  ToolTest() {
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    const std::string name = std::string("mirel-") + test.test_suite_name() + "-" + test.name();
    folder_ = std::filesystem::temp_directory_path() / (name + "-" + std::to_string(std::random_device()()));
    std::filesystem::create_directories(folder_ / "files");
    std::filesystem::current_path(folder_ / "files");
  }
  ~ToolTest() override {
    std::filesystem::current_path(before_);
    std::filesystem::remove_all(folder_);
  }

  static bool exists(const std::string& name) { return std::filesystem::exists(name); }

  static std::string read(const std::string& name) {
    std::ifstream stream(name, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
  }
  static nlohmann::json readJson(const std::string& name) { return nlohmann::json::parse(read(name)); }

  static void write(const std::string& name, const std::string& bytes) {
    std::ofstream(name, std::ios::binary) << bytes;
  }
  static void write(const std::string& name, const cv::Mat& image) { cv::imwrite(name, image); }

  /// What an earlier run left in "out" and the user has beside it.
  static void writePrecious(const std::vector<std::string>& names) {
    std::filesystem::create_directories("out");
    for (const std::string& name : names) write(name, "precious");
  }

  /// Cells of each line, the heads first.
  static std::vector<std::vector<std::string>> readCsv(const std::string& name) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream text(read(name));
    for (std::string line, cell; std::getline(text, line);) {
      std::istringstream cells(line);
      for (rows.emplace_back(); std::getline(cells, cell, ',');) rows.back().push_back(cell);
    }
    return rows;
  }

  static std::set<std::string> files(const std::string& name) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(name)) names.insert(entry.path().filename().string());
    return names;
  }

  /// Every file and folder, with the bytes of files.
  static std::map<std::string, std::string> contents() {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(".")) {
      const std::string below = entry.path().string();
      std::error_code ignored;  // of links that lead nowhere
      files[below] = entry.is_regular_file(ignored) ? read(below) : "";
    }
    return files;
  }

  /// Runs "mirel ARGUMENTS" in the folder.
  static ToolResult run(const std::string& arguments) { return shell("\"" MIREL_TOOL "\" " + arguments); }

  /// Runs commands of the shell in the folder.
  static ToolResult shell(const std::string& text) {
    const std::string command = "(" + text + ") >\"../stdout\" 2>\"../stderr\"";
    int status = std::system(command.c_str());
#ifndef _WIN32
    status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
    return {status, read("../stdout"), read("../stderr")};
  }

  /// Runs the tool's code in this process: most of the time of a run of the program is that of its start.
  static ToolResult runHere(std::vector<std::string> arguments) {
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = mirel::runCommandLine(std::move(arguments));
    std::string output = testing::internal::GetCapturedStdout();
    return {status, std::move(output), testing::internal::GetCapturedStderr()};
  }
  static ToolResult runHere(const std::string& arguments) {
    std::istringstream words(arguments);
    return runHere(std::vector<std::string>(std::istream_iterator<std::string>(words), {}));
  }

  /// The numbers that a run prints which finds something.
  static nlohmann::json resultOf(const std::string& arguments) {
    const ToolResult result = run(arguments + " --json");
    EXPECT_EQ(result.status, 0) << arguments << ": " << result.errors;
    return result.json();
  }

  /// The same of a run that finds nothing and says why in one line.
  static nlohmann::json resultOfNothing(const std::string& arguments, const std::string& said) {
    const ToolResult result = run(arguments + " --json");
    EXPECT_EQ(result.status, 1) << arguments;
    expectOneLine(result, said);
    return result.json();
  }

  static void expectSuccess(const std::string& arguments) {
    const ToolResult result = run(arguments + " --quiet");
    EXPECT_EQ(result.status, 0) << arguments << ": " << result.errors;
  }

  static void expectOneLine(const ToolResult& result, const std::string& said) {
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    EXPECT_EQ(result.errors.rfind("mirel", 0), 0u) << result.errors;
    EXPECT_NE(result.errors.find(said), std::string::npos) << said << " is not in " << result.errors;
  }

  /// One line that says so, and nothing that is new.
  static void expectRefusal(const ToolResult& result, const std::string& said,
                            const std::map<std::string, std::string>& before) {
    EXPECT_EQ(result.status, 2);
    expectOneLine(result, said);
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(contents() == before);
  }

  struct Refusal {
    std::string arguments, said;
  };
  static void expectRefused(const std::string& command, const std::vector<Refusal>& cases) {
    for (const auto& [arguments, said] : cases) {
      SCOPED_TRACE(command + " " + arguments);
      const auto before = contents();
      expectRefusal(runHere(command + " " + arguments), said, before);
    }
  }

 private:
  std::filesystem::path folder_, before_ = std::filesystem::current_path();
};

/// Part of an endless random texture, seen from a place in it.
inline cv::Mat texture(int x, int y, int seed = 1, cv::Size size = {320, 240}) {
  cv::Mat noise(size + cv::Size(160, 160), CV_8U), smooth;
  cv::RNG(static_cast<std::uint64_t>(seed)).fill(noise, cv::RNG::UNIFORM, 0, 256);
  cv::GaussianBlur(noise, smooth, {}, 2.0);
  cv::normalize(smooth, smooth, 0, 255, cv::NORM_MINMAX);
  return smooth(cv::Rect(cv::Point(80 + x, 80 + y), size)).clone();
}

/// An OBJ file: a square of `cells` x `cells` pairs of triangles, `bend` out of its plane in the middle.
inline std::string gridMesh(int cells, double bend = 0) {
  std::string vertices, faces;
  for (int y = 0; y <= cells; ++y) {
    for (int x = 0; x <= cells; ++x) {
      vertices += cv::format("v %d %d %.17g\n", x, y, bend * std::sin(0.9 * x) * std::cos(0.7 * y));
      const int a = y * (cells + 1) + x + 1, d = a + cells + 1;
      if (x < cells && y < cells) faces += cv::format("f %d %d %d\nf %d %d %d\n", a, a + 1, d + 1, a, d + 1, d);
    }
  }
  return vertices + faces;
}

/// The rigid pose that leaves everything in its place, as files of poses have it.
inline const std::string unitPose = R"({"position": [0, 0, 0], "quaternion_xyzw": [0, 0, 0, 1]})";

/// A file of poses.
inline std::string poseFile(const std::vector<std::string>& poses) {
  std::string text;
  for (const std::string& pose : poses) text += (text.empty() ? "" : ", ") + pose;
  return R"({"schema": 1, "poses": [)" + text + "]}";
}
