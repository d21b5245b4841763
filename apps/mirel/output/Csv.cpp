#include "output/Csv.h"

#include "Errors.h"

namespace mirel {

Csv::Csv(const OutputFolder& folder, const std::string& name, std::string_view head)
    : path_(folder.shownPath(name)), stream_(folder.stagingFolder() + name, std::ios::binary) {
  stream_ << head << '\n';
}

void Csv::close() {
  stream_.close();
  if (!stream_) throw UsageError(path_ + ": cannot be written: the disk does not take it");
}

}  // namespace mirel
