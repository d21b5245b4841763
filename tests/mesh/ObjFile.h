/// A file in the folder for temporary ones.
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

/// Exists as long as the object.
class ObjFile {
 public:
  explicit ObjFile(const std::string& text)
      : name_((std::filesystem::temp_directory_path() / ("mesh-" + std::to_string(std::random_device()()))).string()) {
    std::ofstream(name_, std::ios::binary) << text;
  }
  ~ObjFile() { std::filesystem::remove(name_); }
  ObjFile(const ObjFile&) = delete;
  ObjFile& operator=(const ObjFile&) = delete;

  const char* name() const { return name_.c_str(); }

  std::string read() const {
    std::ostringstream text;
    text << std::ifstream(name_).rdbuf();
    return text.str();
  }

 private:
  std::string name_;
};
