/// `mirel imu`: attitude, filtered acceleration, speed and position from a recording of an inertial sensor.
#include "Command.h"
#include "Errors.h"
#include "Session.h"
#include "inertial/ImuReport.h"
#include "input/NotedInput.h"
#include "options/Checks.h"
#include "output/Csv.h"
#include "output/Summary.h"
#include "output/TimeCharts.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdio>

namespace mirel {

namespace {

struct ImuOptions {
  std::string log, truth;
  ImuColumnOptions columns;
  ImuFilterOptions filters;
  std::vector<double> band = {0.5, 40};
};

TruthComparison compareWithTruth(const std::string& path, const ImuResult& result, std::vector<InputFile>& inputs) {
  const CsvTable table(path, readInput(path, tableFile, inputs));
  const ImuRecording& recording = result.recording;
  const AttitudeRecording truth = readAttitudeRecording(table, recording.columns[0].unit, recording.time.first);
  TruthComparison comparison = compare(recording, result.estimate, truth);
  if (comparison.compared > 0) return comparison;
  throw UsageError(fmt::format("{}: from {:.6g} to {:.6g} s after the start of {}, times within its {:.6g} s expected",
                               path, truth.time.seconds.front(), truth.time.seconds.back(), result.name,
                               recording.time.seconds.back()));
}

void writeAttitude(const OutputFolder& folder, const ImuResult& result) {
  Csv csv(folder, "attitude.csv",
          "t_s,q_x,q_y,q_z,q_w,angle_x_rad,angle_y_rad,angle_z_rad,gravity_x,gravity_y,gravity_z,standstill,rest,"
          "accel_filtered_x_m_s2,accel_filtered_y_m_s2,accel_filtered_z_m_s2,speed_x_m_s,speed_y_m_s,speed_z_m_s,"
          "position_x_m,position_y_m,position_z_m");
  const ImuEstimate& e = result.estimate;
  for (std::size_t i = 0; i < e.attitude.size(); ++i) {
    const cv::Vec4f& q = e.attitude[i];
    const cv::Vec3f &a = e.angles[i], &g = e.gravity[i], &f = e.filtered[i], &v = e.speed[i], &p = e.position[i];
    csv.row(result.recording.time.seconds[i], q[0], q[1], q[2], q[3], a[0], a[1], a[2], g[0], g[1], g[2],
            static_cast<int>(e.standstill[i]), static_cast<int>(e.rest[i]), f[0], f[1], f[2], v[0], v[1], v[2], p[0],
            p[1], p[2]);
  }
  csv.close();
}

class ImuCommand : public Command {
 public:
  void addOptions(CLI::App& app) override {
    app.add_option("recording", options_.log, "a table of samples, or - for standard input")->type_name("LOG.csv");
    app.add_option("--columns", options_.columns.columns,
                   "seven heads or numbers, for time, gyro x, y, z, accel x, y, z; by default the heads tell")
        ->type_name("LIST");
    const auto addUnit = [&](const char* name, std::string& unit, const std::vector<std::string>& units,
                             const std::string& meaning) {
      app.add_option(name, unit, meaning + "; by default the head tells, else " + units[0])
          ->check(oneOf(units))
          ->type_name("UNIT");
    };
    addUnit("--time-unit", options_.columns.timeUnit, {"s", "ms", "us", "ns"}, "s, ms, us or ns");
    addUnit("--gyro-unit", options_.columns.gyroUnit, {"rad/s", "deg/s"}, "rad/s or deg/s");
    addUnit("--accel-unit", options_.columns.accelUnit, {"m/s2", "g"}, "m/s2 or g");
    app.add_option("--standstill", options_.filters.standstill,
                   "rate in rad/s below which the device stands still and the attitude is frozen; more than the bias "
                   "of the gyroscope and its noise")
        ->type_name("RATE")
        ->capture_default_str();
    app.add_option("--band", options_.band,
                   "band of the filtered acceleration, Hz; ends below half the rate; by default 0.5 40")
        ->type_size(2)
        ->expected(1)
        ->type_name("LOW HIGH");
    app.add_option("--truth", options_.truth, "a table of known attitudes (t_s, q_x, q_y, q_z, q_w) to compare with")
        ->type_name("FILE");
    common_.addOutput(app);
  }

  int run(CLI::App& app) override {
    Session session(app, common_);
    checkOptions();
    std::vector<InputFile> inputs;
    ImuResult result = session.clock().time("reading", [&] { return readLog(inputs); });
    result.asked.low = options_.band[0];
    result.asked.high = options_.band[1];
    result.asked.standstill = options_.filters.standstill;
    result.used = fitBand(result.asked, Sampling(result.recording.time.seconds).rate());
    result.estimate = session.clock().time("filters", [&] { return estimate(result.recording, result.used); });
    if (!options_.truth.empty()) result.truth = compareWithTruth(options_.truth, result, inputs);
    for (const std::string& warning : result.recording.warnings) {
      fmt::print(stderr, "mirel imu: warning: {}: {}\n", options_.log, warning);
    }
    show(session, result, inputs);
    return success;
  }

 private:
  void checkOptions() const {
    if (options_.log.empty()) throw UsageError("no recording given; a table of samples expected");
    if (options_.log == "-" && options_.truth == "-") throw UsageError("-: standard input can be read only once");
    const float standstill = options_.filters.standstill;
    if (!(standstill >= 0 && standstill < 1000)) {
      throw UsageError(fmt::format("--standstill: {} given, a rate from 0 to 1000 rad/s expected", standstill));
    }
    const double low = options_.band[0], high = options_.band[1];
    if (!(low > 0 && low < high && std::isfinite(high))) {
      throw UsageError(fmt::format("--band: {} {} given, two rising numbers above 0 expected", low, high));
    }
  }

  ImuResult readLog(std::vector<InputFile>& inputs) const {
    const CsvTable table(options_.log, readInput(options_.log, tableFile, inputs));
    ImuResult result;
    result.name = shownName(options_.log);
    result.recording = readImuRecording(table, options_.columns);
    return result;
  }

  static void show(Session& session, const ImuResult& result, const std::vector<InputFile>& inputs) {
    session.clock().time("table", [&] { writeAttitude(session.folder(), result); });
    const nlohmann::json numbers = resultJson(result);
    Report report = imuReport(result, numbers);
    session.clock().time("picture", [&] {
      const TimePlot plot = timePlot(result);
      const cv::Mat picture = drawTimePlot(plot, {report.answer.title, result.name});
      session.folder().writePicture("imu.png", picture);
      addTimePlot(report, plot, picture);
    });
    const std::string files = summaryLine("table", session.folder().shownPath("attitude.csv")) +
                              summaryLine("picture", session.folder().shownPath("imu.png"));
    session.finish(report, inputs, summaryText(result, numbers) + files);
  }

  RunOptions common_;
  ImuOptions options_;
};

const CommandRegistration<ImuCommand> registration("imu",
                                                   "attitude, gravity, speed and position from an inertial sensor",
                                                   {"mirel imu recording.csv --out out/imu",
                                                    "mirel imu recording.csv --columns 1,2,3,4,5,6,7 --time-unit s "
                                                    "--gyro-unit rad/s --accel-unit m/s2 --json"});

}  // namespace

}  // namespace mirel
