/// Tables as comma-separated values (RFC 4180, line feeds).
#pragma once

#include "output/OutputFolder.h"

#include <fmt/format.h>

#include <fstream>
#include <string>
#include <string_view>

namespace mirel {

/// A cell of text, in quotes where it needs them.
std::string csvCell(std::string_view cell);

/// A table of numbers under one line of heads, written as it grows; numbers read back as the same values.
class Csv {
 public:
  Csv(const OutputFolder& folder, const std::string& name, std::string_view head);

  /// A file of the user's choice, which messages call `shown`.
  Csv(const StagedFile& file, std::string shown, std::string_view head);

  template <class First, class... Rest>
  void row(const First& first, const Rest&... rest) {
    fmt::memory_buffer line;
    fmt::format_to(std::back_inserter(line), "{}", first);
    (fmt::format_to(std::back_inserter(line), ",{}", rest), ...);
    line.push_back('\n');
    stream_.write(line.data(), static_cast<std::streamsize>(line.size()));
  }

  /// Throws `UsageError` when the disk did not take it.
  void close();

 private:
  std::string path_;
  std::ofstream stream_;
};

}  // namespace mirel
