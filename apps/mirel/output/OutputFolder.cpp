#include "output/OutputFolder.h"

#include "Errors.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

namespace mirel {

namespace fs = std::filesystem;

namespace {

int processId() {
#ifdef _WIN32
  return _getpid();
#else
  return getpid();
#endif
}

UsageError cannotWrite(const fs::path& path, const std::string& reason) {
  return UsageError(fmt::format("{}: cannot be written: {}", path.string(), reason));
}

/// @param shown  name of the file in messages
void writeWhole(const fs::path& path, std::string_view bytes, const fs::path& shown) {
  std::ofstream stream(path, std::ios::binary);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  stream.close();
  if (!stream) throw cannotWrite(shown, "the disk does not take it");
}

bool isNumbered(const std::string& name, const std::string& prefix) {
  constexpr std::string_view ending = ".png";
  if (!name.starts_with(prefix) || !name.ends_with(ending)) return false;
  const auto digits = std::string_view(name).substr(prefix.size(), name.size() - prefix.size() - ending.size());
  return !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

OutputFolder::OutputFolder(const std::string& folder) : folder_(folder) {
  if (folder.empty()) throw UsageError("--out: nothing given, a folder expected");
  std::error_code error, ignored;
  for (fs::path path = folder_; !path.empty() && !fs::exists(path, error); path = path.parent_path()) {
    made_.insert(made_.begin(), path);
  }
  fs::create_directories(folder_, error);
  for (int i = 0; !error; ++i) {  // a run that had the same number may have been killed and left its own
    staging_ = folder_ / fmt::format(".mirel-unfinished-{}-{}", processId(), i);
    if (fs::create_directory(staging_, error)) return;
  }
  for (auto path = made_.rbegin(); path != made_.rend(); ++path) fs::remove(*path, ignored);
  throw UsageError(fmt::format("--out {}: cannot write there: {}", folder, error.message()));
}

OutputFolder::~OutputFolder() {
  std::error_code ignored;
  fs::remove_all(staging_, ignored);
  for (auto path = made_.rbegin(); path != made_.rend(); ++path) fs::remove(*path, ignored);  // those still empty
}

void OutputFolder::write(const std::string& name, std::string_view bytes) {
  writeWhole(staging_ / name, bytes, folder_ / name);
}

void OutputFolder::writePicture(const std::string& name, const cv::Mat& picture) {
  std::vector<unsigned char> bytes;
  cv::imencode(".png", picture, bytes);
  write(name, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

std::string OutputFolder::stagingFolder() const { return (staging_ / "").string(); }

void OutputFolder::checkSpares(const fs::path& file) const {
  std::error_code ignored;
  const fs::path spared = fs::weakly_canonical(file, ignored);
  for (const fs::directory_entry& staged : fs::directory_iterator(staging_)) {
    const fs::path name = staged.path().filename();
    if (fs::weakly_canonical(folder_ / name, ignored) != spared) continue;
    throw UsageError(fmt::format("--out {}: the run's own {} would take the place of {}; another folder expected",
                                 folder_.string(), name.string(), file.string()));
  }
}

void OutputFolder::checkPlaces() const {
  for (const fs::directory_entry& staged : fs::directory_iterator(staging_)) {
    const fs::path target = folder_ / staged.path().filename();
    std::error_code ignored;
    if (fs::is_directory(fs::symlink_status(target, ignored))) throw cannotWrite(target, "there is a folder");
  }
}

void OutputFolder::commit(const std::string& numberedPrefix) {
  if (!numberedPrefix.empty()) removeEarlier(numberedPrefix);
  for (const fs::directory_entry& file : fs::directory_iterator(staging_)) {
    const fs::path target = folder_ / file.path().filename();
    std::error_code error;
    fs::rename(file.path(), target, error);
    if (error) throw cannotWrite(target, error.message());
  }
}

void OutputFolder::removeEarlier(const std::string& numberedPrefix) const {
  std::vector<fs::path> earlier;
  for (const fs::directory_entry& file : fs::directory_iterator(folder_)) {
    const std::string name = file.path().filename().string();
    if (isNumbered(name, numberedPrefix) && !fs::exists(staging_ / name)) earlier.push_back(file.path());
  }
  std::error_code ignored;
  for (const fs::path& path : earlier) fs::remove(path, ignored);
}

StagedFile::StagedFile(fs::path target) : target_(std::move(target)) {
  if (fs::is_directory(target_)) throw UsageError(target_.string() + ": a folder, a file name expected");
  if (fs::exists(target_) && !fs::is_regular_file(target_)) {
    throw UsageError(target_.string() + ": a device, a file name expected");
  }
  if (target_.has_parent_path() && !fs::is_directory(target_.parent_path())) {
    throw cannotWrite(target_, "there is no folder " + target_.parent_path().string());
  }
  staged_ = target_.parent_path() / fmt::format(".mirel-unfinished-{}-{}", processId(), target_.filename().string());
  std::error_code ignored;
  fs::remove(staged_, ignored);  // of a run with the same number that was killed
}

StagedFile::~StagedFile() {
  std::error_code ignored;
  fs::remove(staged_, ignored);
}

void StagedFile::write(std::string_view bytes) const { writeWhole(staged_, bytes, target_); }

void StagedFile::commit() {
  if (!fs::exists(staged_)) return;
  std::error_code error;
  fs::rename(staged_, target_, error);
  if (error) throw cannotWrite(target_, error.message());
}

}  // namespace mirel
