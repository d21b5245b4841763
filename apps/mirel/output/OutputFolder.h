/// Where a run leaves its files: all of them, each one whole, or none.
#pragma once

#include <filesystem>
#include <opencv2/core/mat.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace mirel {

/// Files are first written to a hidden folder inside the folder of results and moved to their places by `commit`.
/// Without `commit` nothing stays: neither the files nor the folders that were made for them.
class OutputFolder {
 public:
  /// Makes the folder if it is missing; throws `UsageError` when files cannot be written there.
  explicit OutputFolder(const std::string& folder);
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;
  ~OutputFolder();

  /// Writes one file; throws `UsageError` when the disk does not take it.
  void write(const std::string& name, std::string_view bytes);

  /// Writes a PNG picture.
  void writePicture(const std::string& name, const cv::Mat& picture);

  /// Where others may write files of the run, ends with a separator.
  std::string stagingFolder() const;

  /// Path of a result as it is shown to the user.
  std::string shownPath(const std::string& name) const { return (folder_ / name).string(); }

  /// Throws `UsageError` when `commit` would write over this file, one that the user has named.
  void checkSpares(const std::filesystem::path& file) const;

  /// Throws `UsageError` when `commit` would find a folder where a file goes.
  void checkPlaces() const;

  /// Moves all files to their places, over those of an earlier run. Numbered files of an earlier run that start with
  /// `numberedPrefix`, go on with digits only and end in .png are removed where this run has none of that name.
  void commit(const std::string& numberedPrefix = {});

 private:
  void removeEarlier(const std::string& numberedPrefix) const;

  std::filesystem::path folder_;
  std::filesystem::path staging_;
  std::vector<std::filesystem::path> made_;  ///< folders made by this run, outermost first
};

/// One file outside the folder of results, moved to its place by `commit` if it has been written.
class StagedFile {
 public:
  /// Throws `UsageError` for a folder or a device, and where there is no folder for the file.
  explicit StagedFile(std::filesystem::path target);
  StagedFile(const StagedFile&) = delete;
  StagedFile& operator=(const StagedFile&) = delete;
  ~StagedFile();

  /// Where to write; has the target's extension.
  const std::filesystem::path& path() const { return staged_; }

  const std::filesystem::path& target() const { return target_; }

  /// Writes the whole file; throws `UsageError` when the disk does not take it.
  void write(std::string_view bytes) const;

  void commit();

 private:
  std::filesystem::path target_, staged_;
};

}  // namespace mirel
