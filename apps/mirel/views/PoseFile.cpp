#include "views/PoseFile.h"

#include "Errors.h"
#include "inertial/Rotation.h"
#include "input/JsonDepth.h"

#include <fmt/format.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>

namespace mirel {

namespace {

using nlohmann::json;
using VoskBase::Mat4d;

constexpr double tolerance = 1e-3;  // of lengths and angles: files round

std::string kindOf(const json& value) { return value.is_array() ? "a list" : value.type_name(); }

/// What the parser says, without its own codes.
std::string reason(const json::exception& error) {
  const std::string text = error.what();
  const std::size_t dash = text.find(" - "), bracket = text.find("] ");
  if (dash != std::string::npos) return text.substr(dash + 3);
  return bracket != std::string::npos ? text.substr(bracket + 2) : text;
}

json parse(const std::string& file, const std::string& text) {
  try {
    return json::parse(text, refuseDeepNesting(file + ": no file of poses: nested too deeply"));
  } catch (const json::parse_error& error) {
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(error.byte, text.size()));
    const auto line = 1 + std::count(text.begin(), end, '\n');
    throw UsageError(fmt::format("{}:{}: no valid JSON: {}", file, line, reason(error)));
  } catch (const json::exception& error) {
    throw UsageError(fmt::format("{}: no valid JSON: {}", file, reason(error)));
  }
}

std::vector<double> numbers(const std::string& place, const json& list, std::size_t count) {
  if (!list.is_array()) {
    throw UsageError(fmt::format("{}: {} given, a list of {} numbers expected", place, kindOf(list), count));
  }
  if (list.size() != count) {
    throw UsageError(fmt::format("{}: {} numbers given, {} expected", place, list.size(), count));
  }
  std::vector<double> values;
  for (const json& value : list) {
    if (!value.is_number()) {
      throw UsageError(fmt::format("{}[{}]: {} given, a finite number expected", place, values.size(), kindOf(value)));
    }
    values.push_back(value.get<double>());
    if (!(std::abs(values.back()) <= farthest)) {
      throw UsageError(fmt::format("{}[{}]: {:g} given, a number from {:g} to {:g} expected", place, values.size() - 1,
                                   values.back(), -farthest, farthest));
    }
  }
  return values;
}

cv::Vec3d axisOf(const Mat4d& pose, int i) { return {pose[4 * i], pose[4 * i + 1], pose[4 * i + 2]}; }

void checkRigid(const std::string& place, const Mat4d& m) {
  const bool affine = std::abs(m[3]) <= tolerance && std::abs(m[7]) <= tolerance && std::abs(m[11]) <= tolerance &&
                      std::abs(m[15] - 1) <= tolerance;
  if (!affine) {
    throw UsageError(
        fmt::format("{}: elements 3, 7, 11, 15 are {:.4g}, {:.4g}, {:.4g}, {:.4g}; 0, 0, 0, 1 expected, and the "
                    "position at 12, 13, 14",
                    place, m[3], m[7], m[11], m[15]));
  }
  const cv::Vec3d x = axisOf(m, 0), y = axisOf(m, 1), z = axisOf(m, 2);
  const cv::Vec3d lengths(cv::norm(x), cv::norm(y), cv::norm(z)), cosines(x.dot(y), y.dot(z), z.dot(x));
  for (int i = 0; i < 3; ++i) {
    if (std::abs(lengths[i] - 1) <= tolerance && std::abs(cosines[i]) <= tolerance) continue;
    throw UsageError(
        fmt::format("{}: axes of lengths {:.4g}, {:.4g}, {:.4g} with products {:.3g}, {:.3g}, {:.3g}; a rotation "
                    "expected",
                    place, lengths[0], lengths[1], lengths[2], cosines[0], cosines[1], cosines[2]));
  }
  if (x.cross(y).dot(z) < 0) throw UsageError(place + ": a mirrored pose, a rotation expected");
}

Mat4d fromMatrix(const std::string& place, const json& list) {
  const std::vector<double> elements = numbers(place, list, 16);
  Mat4d pose;
  for (int i = 0; i < 16; ++i) pose[i] = elements[static_cast<std::size_t>(i)];
  checkRigid(place, pose);
  return pose;
}

Mat4d fromQuaternion(const std::string& place, const json& entry) {
  const std::vector<double> p = numbers(place + ".position", entry["position"], 3);
  const std::vector<double> q = numbers(place + ".quaternion_xyzw", entry["quaternion_xyzw"], 4);
  const cv::Vec4d given(q[0], q[1], q[2], q[3]);
  const double length = cv::norm(given);
  if (!(std::abs(length - 1) <= tolerance)) {
    throw UsageError(
        fmt::format("{}.quaternion_xyzw: a quaternion of length {:.4g}, length 1 expected", place, length));
  }
  Mat4d pose;
  for (int axis = 0; axis < 3; ++axis) {
    cv::Vec3d unit;
    unit[axis] = 1;
    const cv::Vec3d turned = rotate(given / length, unit);
    for (int i = 0; i < 3; ++i) pose[4 * axis + i] = turned[i];
  }
  for (int i = 0; i < 3; ++i) pose[12 + i] = p[static_cast<std::size_t>(i)];
  return pose;
}

Mat4d readPose(const std::string& place, const json& entry) {
  const bool quaternion = entry.contains("position") || entry.contains("quaternion_xyzw");
  if (entry.contains("matrix") && quaternion) {
    throw UsageError(place + ": both matrix and position or quaternion_xyzw given, one of them expected");
  }
  if (entry.contains("matrix")) return fromMatrix(place + ".matrix", entry["matrix"]);
  for (const char* field : {"position", "quaternion_xyzw"}) {
    if (entry.contains(field)) continue;
    throw UsageError(quaternion ? fmt::format("{}: no {}", place, field)
                                : place + ": no pose; matrix, or position and quaternion_xyzw, expected");
  }
  return fromQuaternion(place, entry);
}

int readNumber(const std::string& place, const json& entry, std::size_t index) {
  const json value = entry.value("number", json(index));
  const bool fits = value.is_number_integer() && value.get<double>() >= INT_MIN && value.get<double>() <= INT_MAX;
  if (!fits) {
    throw UsageError(fmt::format("{}.number: {} given, a whole number of 32 bits expected", place,
                                 value.is_number() ? value.dump() : kindOf(value)));
  }
  return value.get<int>();
}

std::string readName(const std::string& place, const json& entry, int number) {
  const json value = entry.value("name", json(std::to_string(number)));
  std::string name = value.is_string() ? value.get<std::string>() : "";
  const bool printable = std::none_of(name.begin(), name.end(), [](unsigned char c) { return c < 32 || c == 127; });
  if (name.empty() || !printable) {
    throw UsageError(place + ".name: a text that is not empty and without control characters expected");
  }
  return name;
}

const json& listOfPoses(const std::string& file, const json& content) {
  if (!content.is_object() || !content.contains("schema") || content["schema"] != 1) {
    throw UsageError(file + ": no file of poses, an object with \"schema\": 1 and \"poses\" expected");
  }
  if (!content.contains("poses") || !content["poses"].is_array() || content["poses"].empty()) {
    throw UsageError(file + ": poses: a list of at least one pose expected");
  }
  return content["poses"];
}

}  // namespace

std::vector<NamedPose> readPoses(const std::string& file, const std::string& text) {
  const json content = parse(file, text);
  std::vector<NamedPose> poses;
  std::map<int, std::size_t> indexOf;
  for (const json& entry : listOfPoses(file, content)) {
    const std::string place = fmt::format("{}: poses[{}]", file, poses.size());
    if (!entry.is_object()) throw UsageError(fmt::format("{}: {} given, an object expected", place, kindOf(entry)));
    const int number = readNumber(place, entry, poses.size());
    const auto [earlier, isNew] = indexOf.emplace(number, poses.size());
    if (!isNew) {
      throw UsageError(fmt::format("{}: number {} is that of poses[{}], too", place, number, earlier->second));
    }
    poses.push_back({readName(place, entry, number), number, readPose(place, entry)});
  }
  return poses;
}

Eigen::Matrix4d rowsInMemory(const Mat4d& pose) {
  Eigen::Matrix4d rows;
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column) rows.data()[4 * row + column] = pose[4 * column + row];
  }
  return rows;
}

cv::Point3d toWorld(const Mat4d& pose, const cv::Point3d& p) {
  const auto coordinate = [&](int i) { return pose[i] * p.x + pose[4 + i] * p.y + pose[8 + i] * p.z + pose[12 + i]; };
  return {coordinate(0), coordinate(1), coordinate(2)};
}

}  // namespace mirel
