/// The tool's readers of tables: bad text is refused with one message, and what is accepted holds together. Everything
/// but a message for the user is a fault.
#include <cmath>
#include <opencv2/core.hpp>
#include <string>

#include "Check.h"
#include "inertial/ColumnHead.h"
#include "inertial/ImuRecording.h"
#include "smoothing/PointTable.h"

namespace {

using namespace mirel;

void checkNumber(std::string_view text) {
  double value = 0;
  if (!parseNumber(text, value)) return;
  const std::string copy(text);
  char* end = nullptr;
  const double wanted = std::strtod(copy.c_str(), &end);
  MIREL_CHECK(end == copy.c_str() + copy.size() && (value == wanted || sameBits(value, wanted)));
}

void checkTable(const CsvTable& table) {
  MIREL_CHECK(table.rows() > 0 && table.columns() > 0 && table.heads().size() == table.columns());
  for (std::size_t column = 0; column < table.columns(); ++column) {
    ColumnHead head;
    if (readHead(table.heads()[column], head)) MIREL_CHECK(head.unit.empty() || head.unknown.empty());
    MIREL_CHECK(table.describe(column).starts_with("column "));
    refused<UsageError>([&] { MIREL_CHECK(table.columnOf("--column", table.heads()[column]) < table.columns()); });
    for (std::size_t row = 0; row < table.rows(); ++row) {
      MIREL_CHECK(table.cell(row, column).find('\n') == std::string_view::npos);
      checkNumber(table.cell(row, column));
      refused<UsageError>([&] { MIREL_CHECK(std::abs(table.number(row, column, 100)) <= 100); });
    }
  }
}

void checkTimes(const Times& times, std::size_t rows) {
  MIREL_CHECK(times.seconds.size() == rows && std::is_sorted(times.seconds.begin(), times.seconds.end()));
  if (rows < 2) return;
  const Sampling sampling(times.seconds);
  MIREL_CHECK(sampling.duration >= 0 && sampling.gaps < rows && !describeRate(sampling).empty());
  MIREL_CHECK(sampling.gaps == 0 || describeGaps(sampling) != "none");
}

void readRecordings(const CsvTable& table, const ImuColumnOptions& options) {
  ImuRecording recording;
  refused<UsageError>([&] {
    recording = readImuRecording(table, options);
    checkTimes(recording.time, table.rows());
    MIREL_CHECK(recording.gyro.size() == table.rows() && recording.accel.size() == table.rows());
    MIREL_CHECK(recording.columns.size() == 7);
    for (std::size_t i = 0; i < table.rows(); ++i)
      MIREL_CHECK(cv::norm(recording.gyro[i]) < 2e6 && cv::norm(recording.accel[i]) < 2e6);
  });
  refused<UsageError>([&] {
    const AttitudeRecording attitude = readAttitudeRecording(table, options.timeUnit, recording.time.first);
    MIREL_CHECK(attitude.quaternion.size() == table.rows() && attitude.time.seconds.size() == table.rows());
    for (const cv::Vec4d& q : attitude.quaternion) MIREL_CHECK(std::abs(cv::norm(q) - 1) < 1e-9);
  });
}

}  // namespace

void feed(FuzzedDataProvider& data) {
  const std::string columns = data.ConsumeBool() ? data.ConsumeRandomLengthString(24) : "";
  const std::string timeUnit = data.PickValueInArray({"", "s", "ms", "us", "ns"});
  const std::string gyroUnit = data.PickValueInArray({"", "rad/s", "deg/s"});
  const ImuColumnOptions options{columns, timeUnit, gyroUnit, data.PickValueInArray({"", "m/s2", "g"})};
  const std::string text = data.ConsumeRemainingBytesAsString();
  for (const std::string& part : splitList(columns)) checkNumber(part);
  refused<UsageError>([&] {
    const CsvTable table("table.csv", text);
    checkTable(table);
    readRecordings(table, options);
    for (std::size_t column = 0; column < table.columns(); ++column)
      refused<UsageError>([&] { checkTimes(readTimes(table, column, options.timeUnit), table.rows()); });
    const PointTable points(table, columns);
    MIREL_CHECK(points.points.rows == static_cast<int>(table.rows()) && points.points.cols == 5);
    MIREL_CHECK(cv::checkRange(points.points, true, nullptr, -1.001e9, 1.001e9));
    MIREL_CHECK(points.columns.size() == 5 && !points.columnsText().empty());
  });
}
