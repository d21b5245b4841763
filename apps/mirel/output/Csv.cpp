#include "output/Csv.h"

#include "Errors.h"

namespace mirel {

std::string csvCell(std::string_view cell) {
  if (cell.find_first_of(",\"") == std::string_view::npos && (cell.empty() || (cell[0] != '#' && cell[0] != '%'))) {
    return std::string(cell);
  }
  std::string text = "\"";
  for (const char c : cell) text += c == '"' ? "\"\"" : std::string(1, c);
  return text + "\"";
}

Csv::Csv(const OutputFolder& folder, const std::string& name, std::string_view head)
    : path_(folder.shownPath(name)), stream_(folder.stagingFolder() + name, std::ios::binary) {
  stream_ << head << '\n';
}

Csv::Csv(const StagedFile& file, std::string shown, std::string_view head)
    : path_(std::move(shown)), stream_(file.path(), std::ios::binary) {
  stream_ << head << '\n';
}

void Csv::close() {
  stream_.close();
  if (!stream_) throw UsageError(path_ + ": cannot be written: the disk does not take it");
}

}  // namespace mirel
