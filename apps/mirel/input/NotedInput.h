/// Files that a run reads, noted for its record.
#pragma once

#include "input/ImageFile.h"
#include "output/Digest.h"
#include "output/RunRecord.h"

#include <filesystem>
#include <string>
#include <vector>

namespace mirel {

/// All bytes of a file, or of standard input for "-"; adds it to the inputs. Throws `UsageError`.
inline std::string readInput(const std::string& path, const FileKind& wanted, std::vector<InputFile>& inputs) {
  std::string bytes = readBytes(path, wanted);
  inputs.push_back({path, bytes.size(), sha256(bytes)});
  return bytes;
}

/// Name of a file as results show it.
inline std::string shownName(const std::string& path) {
  return path == "-" ? "standard input" : std::filesystem::path(path).filename().string();
}

}  // namespace mirel
