#include "ToolTest.h"

#include <MirelAlgorithms/filters/AccelIntegrator.h>
#include <MirelAlgorithms/filters/Butterworth.h>
#include <MirelAlgorithms/filters/MayhonyAHRS.h>

#include <Eigen/Geometry>
#include <cmath>

namespace {

struct Sample {
  double time;
  cv::Vec3f gyro, accel;
};

std::string csv(const std::vector<Sample>& samples) {
  std::string text = "t_s,gx_rad_s,gy_rad_s,gz_rad_s,ax_m_s2,ay_m_s2,az_m_s2\n";
  for (const Sample& s : samples) {
    text += cv::format("%.9g,%.9g,%.9g,%.9g,%.9g,%.9g,%.9g\n", s.time, s.gyro[0], s.gyro[1], s.gyro[2], s.accel[0],
                       s.accel[1], s.accel[2]);
  }
  return text;
}

/// Two seconds of rest, two of turning about z by a quarter of a turn, and so on.
std::vector<Sample> restAndTurn(int count, double noise) {
  cv::RNG random(7);
  std::vector<Sample> samples;
  for (int i = 0; i < count; ++i) {
    const bool turning = i / 200 % 2 == 1;
    Sample s{i / 100.0, {0, 0, turning ? static_cast<float>(CV_PI / 4) : 0.0f}, {0, 0, 9.8f}};
    for (int k = 0; k < 3; ++k) {
      s.gyro[k] += static_cast<float>(random.gaussian(noise));
      s.accel[k] += static_cast<float>(random.gaussian(10 * noise));
    }
    samples.push_back(s);
  }
  return samples;
}

/// Three cells of a row.
cv::Vec3f vector(const std::vector<std::string>& row, std::size_t at) {
  return {std::stof(row[at]), std::stof(row[at + 1]), std::stof(row[at + 2])};
}

using ImuCommand = ToolTest;

TEST_F(ImuCommand, theTableIsTheLibraryCalledSampleBySample) {
  const std::vector<Sample> samples = restAndTurn(1200, 0.004);
  write("log.csv", csv(samples));
  const double weight = resultOf("imu log.csv --out out --band 1 20 --standstill 0.05")["gravity_m_s2"];
  const auto table = readCsv("out/attitude.csv");
  ASSERT_EQ(table.size(), samples.size() + 1);

  MirelAlgorithms::MayhonyAHRS attitude(0.6f, 0.15f, 0.05f);
  MirelAlgorithms::ButterworthBandpass band[3];
  for (auto& filter : band) filter = MirelAlgorithms::ButterworthBandpass(1, 20, 100, 1.14f);
  MirelAlgorithms::AccelIntegrator integrator;
  cv::Vec3f start;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const Sample& s = samples[i];
    const auto& row = table[i + 1];
    const auto dt = i == 0 ? 0.0f : static_cast<float>(s.time - samples[i - 1].time);
    attitude.update(s.gyro, s.accel, i == 0 ? cv::Vec3f(1, 1, 1) : s.gyro, dt);
    ASSERT_EQ(std::stod(row[0]), s.time);
    const cv::Vec4f q = attitude.value();
    ASSERT_EQ(vector(row, 1), cv::Vec3f(q[0], q[1], q[2])) << i;
    ASSERT_EQ(std::stof(row[4]), q[3]) << i;
    ASSERT_EQ(vector(row, 5), attitude.angles()) << i;
    ASSERT_EQ(vector(row, 8), attitude.gravity()) << i;
    ASSERT_EQ(row[11], attitude.standstill(s.gyro) ? "1" : "0") << i;
    cv::Vec3f filtered;
    for (int k = 0; k < 3; ++k) {
      band[k].update(s.accel[k]);
      filtered[k] = band[k].value();
    }
    ASSERT_EQ(vector(row, 13), filtered) << i;
    if (row[12] == "1") {
      start += integrator.position();
      integrator.reset();
      ASSERT_EQ(vector(row, 16), cv::Vec3f()) << i;
    } else {
      // q a q* by another's quaternions, up to rounding.
      const Eigen::Vector3d world =
          Eigen::Quaterniond(q[3], q[0], q[1], q[2]) * Eigen::Vector3d(s.accel[0], s.accel[1], s.accel[2]);
      const cv::Vec3d moving(world[0], world[1], world[2] - weight);
      integrator.update(cv::Vec3f(moving), dt);
      ASSERT_LT(cv::norm(vector(row, 16) - integrator.speed()), 1e-5) << i;
    }
    ASSERT_LT(cv::norm(vector(row, 19) - start - integrator.position()), 1e-4) << i;
  }
}

TEST_F(ImuCommand, unitsComeFromHeadsOrOptions) {
  const std::vector<Sample> samples = restAndTurn(600, 0.004);
  std::string other = "time,wx,wy,wz,ax,ay,az\n";
  for (const Sample& s : samples) {
    other += cv::format("%.0f", 1e3 * s.time);
    for (int k = 0; k < 3; ++k) other += cv::format(",%.17g", s.gyro[k] * 180 / CV_PI);
    for (int k = 0; k < 3; ++k) other += cv::format(",%.17g", s.accel[k] / 9.80665);
    other += '\n';
  }
  write("si.csv", csv(samples));
  write("other.csv", other);
  EXPECT_EQ(resultOf("imu si.csv --out si")["columns"][0]["unit_from"], "head");
  EXPECT_EQ(
      resultOf("imu other.csv --out other --time-unit ms --gyro-unit deg/s --accel-unit g")["columns"][0]["unit_from"],
      "option");
  expectSuccess("--config other/run.json --out again");
  EXPECT_EQ(read("again/attitude.csv"), read("other/attitude.csv"));
  const auto a = readCsv("si/attitude.csv"), b = readCsv("other/attitude.csv");
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t k = 0; k < a[0].size(); ++k)
    EXPECT_NEAR(std::stod(a.back()[k]), std::stod(b.back()[k]), 1e-4) << a[0][k];

  EXPECT_NE(run("imu other.csv --time-unit ms --gyro-unit deg/s").errors.find("is m/s2 the unit"), std::string::npos);
  expectRefused("imu si.csv", {{"--gyro-unit deg/s", "but --gyro-unit deg/s"},
                               {"--accel-unit g", "but --accel-unit g"},
                               {"--time-unit ns", "but --time-unit ns"}});
}

TEST_F(ImuCommand, numbersAreThoseOfTheRecording) {
  std::vector<Sample> samples = restAndTurn(1000, 0.002);
  samples.erase(samples.begin() + 450, samples.begin() + 470);
  samples.erase(samples.begin() + 700);
  write("log.csv", csv(samples));
  const nlohmann::json numbers = resultOf("imu - --out out <log.csv");
  EXPECT_EQ(numbers["schema"], 1);
  EXPECT_EQ(numbers["samples"], 979);
  EXPECT_NEAR(numbers["rate_hz"], 100, 1e-6);
  EXPECT_NEAR(numbers["duration_s"], 9.99, 1e-9);
  EXPECT_EQ(numbers["gaps"]["count"], 2);
  EXPECT_NEAR(numbers["gaps"]["longest_s"], 0.21, 1e-9);
  EXPECT_EQ(numbers["rests"], 3);
  EXPECT_NEAR(numbers["rest_samples"], 579, 2);
  EXPECT_NEAR(numbers["gravity_m_s2"], 9.8, 0.01);
  EXPECT_LT(numbers["gravity"]["rms_deg"], 0.5);
  EXPECT_EQ(files("out"), (std::set<std::string>{"attitude.csv", "imu.png", "report.html", "run.json"}));
  EXPECT_EQ(cv::imread("out/imu.png").cols, 1560);
  EXPECT_EQ(readJson("out/run.json")["settings"].size(), 0u);
}

TEST_F(ImuCommand, theBandEndsBelowHalfTheRate) {
  std::vector<Sample> samples = restAndTurn(100, 0);
  for (Sample& s : samples) s.time *= 2;
  write("log.csv", csv(samples));
  const ToolResult result = run("imu log.csv --out out");
  EXPECT_NE(result.output.find("0.5 to 22.5 Hz (40 Hz is too near half the rate, lowered)"), std::string::npos)
      << result.output;
  expectRefused("imu log.csv", {{"--band 30 35", "--band"},
                                {"--band 5 5", "--band: 5 5 given"},
                                {"--band 0 5", "--band: 0 5 given"},
                                {"--band nan 5", "--band: nan 5 given"},
                                {"--standstill -1", "--standstill: -1 given"},
                                {"--set a=b", "--set"}});
}

/// The truth of the turn about z, its heading and clock shifted.
TEST_F(ImuCommand, theTruthIsComparedWhateverItsHeading) {
  const std::vector<Sample> samples = restAndTurn(1000, 0);
  write("log.csv", csv(samples));
  const auto writeTruth = [&](const char* name, double clock, double tilt) {
    std::string text = "t_ms,q_w,q_x,q_y,q_z\n";
    double heading = 1;
    for (std::size_t i = 0; i < samples.size(); i += 10) {
      const double c = std::cos(heading / 2), s = std::sin(heading / 2), a = std::cos(tilt / 2), b = std::sin(tilt / 2);
      text += cv::format("%.9g,%.12g,%.12g,%.12g,%.12g\n", 1e3 * (samples[i].time + clock), c * a, c * b, s * b, s * a);
      for (std::size_t k = i + 1; k < i + 11 && k < samples.size(); ++k) heading += 0.01 * samples[k].gyro[2];
    }
    write(name, text);
  };
  writeTruth("truth.csv", 0, 0);
  nlohmann::json truth = resultOf("imu log.csv --truth truth.csv")["truth"];
  EXPECT_EQ(truth["samples"], 991);
  EXPECT_LT(truth["attitude"]["max_deg"], 0.46);  // the turn from one sample to the next
  EXPECT_LT(truth["gravity"]["max_deg"], 0.01);
  writeTruth("tilted.csv", 5, 0.1);
  truth = resultOf("imu log.csv --truth tilted.csv")["truth"];
  EXPECT_EQ(truth["samples"], 500);
  EXPECT_NEAR(truth["gravity"]["rms_deg"], 0.1 * 180 / CV_PI, 0.01);
  writeTruth("later.csv", 100, 0);
  write("scaled.csv", "t,qx,qy,qz,qw\n0,0,0,0,1\n1,0,0,0,2\n");
  expectRefused("imu log.csv --truth", {{"later.csv", "times within"},
                                        {"scaled.csv", "scaled.csv:3: a quaternion"},
                                        {"log.csv", "no column for quaternion x"}});
}

}  // namespace
