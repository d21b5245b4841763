#include "ToolTest.h"

namespace {

/// Tables are looked at through `mirel imu`, which has the most to say about them.
using CsvTable = ToolTest;

const std::string samples =
    "t_s,gyro_x_rad_s,gyro_y_rad_s,gyro_z_rad_s,accel_x_m_s2,accel_y_m_s2,accel_z_m_s2\n"
    "0,0.1,0,0,0,0,9.8\n"
    "0.01,0.1,0,0.25,0,1,9.8\n"
    "0.02,0.1,0.5,0,-1,0,9.8\n";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

TEST_F(CsvTable, everyWayToWriteATableIsRead) {
  write("plain.csv", samples);
  expectSuccess("imu plain.csv --out plain");
  const std::string expected = read("plain/attitude.csv");
  const std::string rows = samples.substr(samples.find('\n') + 1);
  const std::string nanoseconds = "140363657";  // a double does not hold such stamps
  const std::string epoch = nanoseconds + "0000000003,0.1,0,0,0,0,9.8\n" + nanoseconds +
                            "0010000003,0.1,0,0.25,0,1,9.8\n" + nanoseconds + "0020000003,0.1,0.5,0,-1,0,9.8\n";
  const std::pair<std::string, std::string> cases[] = {
      {replaced(samples, "\n", "\r\n"), ""},
      {"\xEF\xBB\xBF" + samples, ""},
      {replaced(samples, ",", " ; "), ""},
      {replaced(samples, ",", "\t"), ""},
      {replaced(samples, ",", "   "), ""},
      {std::string("# logger 3\n\n") + replaced(samples, "\n", ",\n\n# pause\n"), ""},
      {replaced(samples, ",0.1", ",+1e-1"), ""},
      {samples.substr(0, samples.size() - 1), ""},
      {"#" + samples, ""},
      {rows, "--columns 1,2,3,4,5,6,7"},
      {"a,b,c,d,e,f,g\n" + rows, "--columns 'a, b,3,d,e,f,g'"},
      {"gyro_x_raw,Time (s),\"Gyroscope x (rad/s)\",GyroY,wz,ax,acc_y,linear_acceleration.z\n" +
           replaced("\n" + rows, "\n0", "\n\"a,b\",0"),
       ""},
      {"timestamp [ns],w_RS_S_x [rad s^-1],gy,gz,a_RS_S_x [m s^-2],ay,az\n" + epoch, ""},
  };
  for (const auto& [text, options] : cases) {
    write("log.csv", text);
    expectSuccess("imu log.csv --out out " + options);
    EXPECT_EQ(read("out/attitude.csv"), expected) << text;
  }
}

TEST_F(CsvTable, recordingsThatCannotBeAreToldWithTheirLine) {
  const Refusal cases[] = {
      {samples.substr(samples.find('\n') + 1), "log.csv: no heads"},
      {replaced(samples, "0.25", "1e30"), "log.csv:3: column 4 (gyro_z_rad_s): '1e30' given, no sensor"},
      {replaced(samples, "0.02", "9223372036854775807"), "log.csv:4: column 1 (t_s): 9.22337e+18 s after"},
      {replaced(samples, "0.02", "1e300"), "log.csv:4: column 1 (t_s): out of the range"},
      {replaced(samples, "\n0.0", "\n10"), "--time-unit tells the unit"},
      {replaced(samples, "gyro_z_rad_s", "speed"), "log.csv:1: no column for gyro z"},
      {replaced(samples, "accel_y_m_s2", "gz"), "column 4 (gyro_z_rad_s) and column 6 (gz) both look like gyro z"},
      {replaced(samples, "gyro_x_rad", "gyro_x_deg"),
       "column 3 (gyro_y_rad_s): in rad/s, but the column before in deg"},
      {replaced(samples, "gyro_x_rad_s", "gyro x [mdps]"), "unit [mdps] not known; --gyro-unit"},
      {samples.substr(0, samples.find("0.01")), "log.csv: one sample"},
  };
  for (const auto& [text, said] : cases) {
    write("log.csv", text);
    expectRefused("imu log.csv", {{"--out out", said}});
  }
}

}  // namespace
