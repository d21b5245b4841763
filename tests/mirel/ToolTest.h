/// Runs the tool in a folder of its own and looks at what it leaves.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
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
  auto errorLines() const { return std::count(errors.begin(), errors.end(), '\n'); }
};

class ToolTest : public testing::Test {
 protected:
  ToolTest() {
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    const std::string name = std::string("mirel-") + test.test_suite_name() + "-" + test.name();
    folder_ = std::filesystem::temp_directory_path() / (name + "-" + std::to_string(std::random_device()()));
    std::filesystem::create_directories(folder_);
  }
  ~ToolTest() override { std::filesystem::remove_all(folder_); }

  std::filesystem::path path(const std::string& name) const { return folder_ / name; }
  bool exists(const std::string& name) const { return std::filesystem::exists(path(name)); }

  std::string read(const std::string& name) const {
    std::ifstream stream(path(name), std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
  }
  nlohmann::json readJson(const std::string& name) const { return nlohmann::json::parse(read(name)); }

  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
  }
  void write(const std::string& name, const cv::Mat& image) const { cv::imwrite(path(name).string(), image); }

  /// Cells of each line, the heads first.
  std::vector<std::vector<std::string>> readCsv(const std::string& name) const {
    std::vector<std::vector<std::string>> rows;
    std::istringstream text(read(name));
    for (std::string line, cell; std::getline(text, line);) {
      std::istringstream cells(line);
      for (rows.emplace_back(); std::getline(cells, cell, ',');) rows.back().push_back(cell);
    }
    return rows;
  }

  std::set<std::string> files(const std::string& name) const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path(name)))
      names.insert(entry.path().filename().string());
    return names;
  }

  /// Every file and folder below a folder, with the bytes of files.
  std::map<std::string, std::string> contents(const std::string& name) const {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path(name))) {
      const std::string below = entry.path().lexically_relative(path("")).string();
      std::error_code ignored;  // of links that lead nowhere
      files[below] = entry.is_regular_file(ignored) ? read(below) : "";
    }
    return files;
  }

  /// Runs "mirel ARGUMENTS" in the folder.
  ToolResult run(const std::string& arguments) const { return shell("\"" MIREL_TOOL "\" " + arguments); }

  /// Runs a command of the shell in the folder.
  ToolResult shell(const std::string& text) const {
    const std::string command = "cd \"" + folder_.string() + "\" && " + text + " >stdout 2>stderr";
    int status = std::system(command.c_str());
#ifndef _WIN32
    status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
    return {status, read("stdout"), read("stderr")};
  }

 private:
  std::filesystem::path folder_;
};

/// Part of an endless random texture, seen from a place in it.
inline cv::Mat texture(int x, int y, int seed = 1, cv::Size size = {320, 240}) {
  cv::Mat noise(size + cv::Size(160, 160), CV_8U), smooth;
  cv::RNG(static_cast<std::uint64_t>(seed)).fill(noise, cv::RNG::UNIFORM, 0, 256);
  cv::GaussianBlur(noise, smooth, {}, 2.0);
  cv::normalize(smooth, smooth, 0, 255, cv::NORM_MINMAX);
  return smooth(cv::Rect(cv::Point(80 + x, 80 + y), size)).clone();
}
