/// The host's log, caught for one test.
#pragma once

#include <MirelCore/Log.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>
#include <vector>

/// Catches lines up to a level until it goes out of scope.
class LogCapture {
 public:
  explicit LogCapture(int maxLevel) {
    MirelCore::setLogSink([this](const MirelCore::LogRecord& record) { records.push_back(record); });
    MirelCore::setLogLevel(maxLevel);
  }
  ~LogCapture() {
    MirelCore::setLogLevel(INT_MIN);
    MirelCore::setLogSink({});
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  /// Lines logged under this function name.
  std::vector<MirelCore::LogRecord> of(const char* function) const {
    std::vector<MirelCore::LogRecord> found;
    std::copy_if(records.begin(), records.end(), std::back_inserter(found),
                 [&](const MirelCore::LogRecord& record) { return std::strcmp(record.function, function) == 0; });
    return found;
  }

  std::vector<MirelCore::LogRecord> records;
};
