/// The tool's readers of tables: bad text is refused with one message, and what is accepted holds together.
#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <string>

#include "Check.h"
#include "inertial/ColumnHead.h"
#include "inertial/ImuRecording.h"
#include "smoothing/PointTable.h"

namespace {

using namespace mirel;

// Whether a reader took its input. Everything but a message for the user is a fault.
template <class Reader>
bool accepted(const Reader& reader) {
  return !refused<UsageError>(reader);
}

void checkNumber(std::string_view text) {
  double value = 0;
  if (!parseNumber(text, value)) return;
  const std::string copy(text);
  char* end = nullptr;
  const double wanted = std::strtod(copy.c_str(), &end);
  MIREL_CHECK(end == copy.c_str() + copy.size());
  MIREL_CHECK(value == wanted || (std::isnan(value) && std::isnan(wanted)));
}

void checkTable(const CsvTable& table, const char* begin, const char* end) {
  MIREL_CHECK(table.rows() > 0 && table.columns() > 0 && table.heads().size() == table.columns());
  for (std::size_t row = 0; row < table.rows(); ++row)
    for (std::size_t column = 0; column < table.columns(); ++column) {
      const std::string_view cell = table.cell(row, column);
      MIREL_CHECK(cell.find('\n') == cell.npos && cell.size() <= static_cast<std::size_t>(end - begin));
      checkNumber(cell);
      double value = 0;
      if (accepted([&] { value = table.number(row, column, 100); })) MIREL_CHECK(std::abs(value) <= 100);
    }
  for (std::size_t column = 0; column < table.columns(); ++column) {
    ColumnHead head;
    if (readHead(table.heads()[column], head)) MIREL_CHECK(head.unit.empty() || head.unknown.empty());
    MIREL_CHECK(table.describe(column).find("column ") == 0);
    std::size_t found = 0;
    if (accepted([&] { found = table.columnOf("--column", table.heads()[column]); }))
      MIREL_CHECK(found < table.columns());
  }
}

void checkTimes(const Times& times, std::size_t rows) {
  MIREL_CHECK(times.seconds.size() == rows);
  for (std::size_t i = 1; i < rows; ++i) MIREL_CHECK(times.seconds[i] >= times.seconds[i - 1]);
  if (rows < 2) return;
  const Sampling sampling(times.seconds);
  MIREL_CHECK(sampling.duration >= 0 && sampling.gaps < rows && !describeRate(sampling).empty());
  MIREL_CHECK(sampling.gaps == 0 || describeGaps(sampling) != "none");
}

void readRecordings(const CsvTable& table, const ImuColumnOptions& options) {
  ImuRecording recording;
  if (accepted([&] { recording = readImuRecording(table, options); })) {
    checkTimes(recording.time, table.rows());
    MIREL_CHECK(recording.gyro.size() == table.rows() && recording.accel.size() == table.rows());
    MIREL_CHECK(recording.columns.size() == 7);
    for (const auto* vectors : {&recording.gyro, &recording.accel})
      for (const cv::Vec3f& v : *vectors) MIREL_CHECK(cv::norm(v) < 2e6);
  }
  AttitudeRecording attitude;
  if (accepted([&] { attitude = readAttitudeRecording(table, options.timeUnit, recording.time.first); })) {
    MIREL_CHECK(attitude.quaternion.size() == table.rows() && attitude.time.seconds.size() == table.rows());
    for (const cv::Vec4d& q : attitude.quaternion) MIREL_CHECK(std::abs(cv::norm(q) - 1) < 1e-9);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  const std::string columns = data.ConsumeBool() ? data.ConsumeRandomLengthString(24) : "";
  const auto unit = [&](std::initializer_list<const char*> units) {
    return units.begin()[data.ConsumeIntegralInRange<std::size_t>(0, units.size() - 1)];
  };
  const ImuColumnOptions options{columns, unit({"", "s", "ms", "us", "ns"}), unit({"", "rad/s", "deg/s"}),
                                 unit({"", "m/s2", "g"})};
  const std::string text = data.ConsumeRemainingBytesAsString();
  for (const std::string& part : splitList(columns)) checkNumber(part);
  accepted([&] {
    const CsvTable table("table.csv", text);
    checkTable(table, text.data(), text.data() + text.size());
    readRecordings(table, options);
    for (std::size_t column = 0; column < table.columns(); ++column) {
      Times times;
      if (accepted([&] { times = readTimes(table, column, options.timeUnit); })) checkTimes(times, table.rows());
    }
    accepted([&] {
      const PointTable points(table, columns);
      MIREL_CHECK(points.points.rows == static_cast<int>(table.rows()) && points.points.cols == 5);
      MIREL_CHECK(cv::countNonZero(cv::abs(points.points) <= 1.001e9f) == static_cast<int>(points.points.total()));
      MIREL_CHECK(points.columns.size() == 5 && !points.columnsText().empty());
    });
  });
  return 0;
}
