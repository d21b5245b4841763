#include "inertial/ColumnHead.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <utility>
#include <vector>

namespace mirel {

namespace {

using Spelling = std::pair<std::string_view, std::string_view>;

// Letters and digits only, in lower case.
constexpr std::array timeUnits = {Spelling{"s", "s"},
                                  Spelling{"sec", "s"},
                                  Spelling{"secs", "s"},
                                  Spelling{"second", "s"},
                                  Spelling{"seconds", "s"},
                                  Spelling{"ms", "ms"},
                                  Spelling{"msec", "ms"},
                                  Spelling{"millis", "ms"},
                                  Spelling{"milliseconds", "ms"},
                                  Spelling{"us", "us"},
                                  Spelling{"usec", "us"},
                                  Spelling{"micros", "us"},
                                  Spelling{"microseconds", "us"},
                                  Spelling{"ns", "ns"},
                                  Spelling{"nsec", "ns"},
                                  Spelling{"nanos", "ns"},
                                  Spelling{"nanosec", "ns"},
                                  Spelling{"nanoseconds", "ns"}};
constexpr std::array gyroUnits = {
    Spelling{"rads", "rad/s"},   Spelling{"radsec", "rad/s"},   Spelling{"radps", "rad/s"},
    Spelling{"rads1", "rad/s"},  Spelling{"radianss", "rad/s"}, Spelling{"degs", "deg/s"},
    Spelling{"degsec", "deg/s"}, Spelling{"degps", "deg/s"},    Spelling{"dps", "deg/s"},
    Spelling{"degs1", "deg/s"},  Spelling{"degreess", "deg/s"}};
constexpr std::array accelUnits = {Spelling{"ms2", "m/s2"}, Spelling{"msec2", "m/s2"}, Spelling{"mps2", "m/s2"},
                                   Spelling{"mss", "m/s2"}, Spelling{"g", "g"},        Spelling{"gs", "g"}};

// Square, degree, micro, Greek mu.
constexpr std::array utf8 = {Spelling{"\xC2\xB2", "2"}, Spelling{"\xC2\xB0", "deg"}, Spelling{"\xC2\xB5", "u"},
                             Spelling{"\xCE\xBC", "u"}};

constexpr std::array<std::string_view, 8> timeNames = {"t",  "time",    "timestamp",   "timestamps",
                                                       "ts", "elapsed", "elapsedtime", "stamp"};
constexpr std::array<std::string_view, 11> gyroNames = {
    "g", "gyr", "gyro", "gyroscope", "w", "omega", "wrss", "angularvelocity", "angularrate", "angvel", "rotationrate"};
constexpr std::array<std::string_view, 7> accelNames = {"a",    "acc",           "accel",        "acceleration",
                                                        "arss", "accelerometer", "specificforce"};
constexpr std::array<std::string_view, 5> attitudeNames = {"q", "quat", "quaternion", "orientation", "qrs"};

template <class Names>
bool contains(const Names& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

template <class Units>
std::string_view unitIn(const Units& units, std::string_view spelling) {
  const auto unit = std::find_if(units.begin(), units.end(), [&](const Spelling& u) { return u.first == spelling; });
  return unit == units.end() ? std::string_view() : unit->second;
}

std::string_view unitOf(Quantity quantity, std::string_view spelling) {
  if (quantity == Quantity::time) return unitIn(timeUnits, spelling);
  if (quantity == Quantity::gyro) return unitIn(gyroUnits, spelling);
  return quantity == Quantity::accel ? unitIn(accelUnits, spelling) : std::string_view();
}

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
}

/// Words in lower case: "angularVelocity.x" has three.
std::vector<std::string> wordsOf(std::string_view text) {
  std::vector<std::string> words;
  bool inside = false, small = false;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool letter = byte < 128 && std::isalnum(byte) != 0;
    if (letter && (!inside || (small && std::isupper(byte) != 0))) words.emplace_back();
    if (letter) words.back() += static_cast<char>(std::tolower(byte));
    inside = letter;
    small = letter && std::islower(byte) != 0;
  }
  return words;
}

std::string joined(const std::vector<std::string>& words, std::size_t begin, std::size_t end) {
  std::string text;
  for (std::size_t i = begin; i < end; ++i) text += words[i];
  return text;
}

/// Quantity and axis of a name such as "gyrox".
bool readQuantity(const std::string& name, ColumnHead& head) {
  const std::string stem = name.substr(0, name.size() - 1);
  const char axis = name.back();
  const bool spatial = axis >= 'x' && axis <= 'z';
  if (contains(timeNames, name)) {
    head.quantity = Quantity::time;
    return true;
  }
  if (spatial && contains(gyroNames, stem)) {
    head.quantity = Quantity::gyro;
  } else if (spatial && contains(accelNames, stem)) {
    head.quantity = Quantity::accel;
  } else if ((spatial || axis == 'w') && contains(attitudeNames, stem)) {
    head.quantity = Quantity::attitude;
  } else {
    return false;
  }
  head.axis = axis;
  return true;
}

/// What the first `end` words name, or the last ones of them: "imu gyro x" is "gyro x".
bool readName(const std::vector<std::string>& words, std::size_t end, ColumnHead& head) {
  head = {};
  if (contains(words, "user")) return false;  // acceleration without gravity
  for (std::size_t begin = 0; begin < end; ++begin) {
    if (readQuantity(joined(words, begin, end), head)) return true;
  }
  return false;
}

}  // namespace

bool readHead(const std::string& text, ColumnHead& head) {
  std::string plain = text;
  for (const auto& [from, to] : utf8) {
    replaceAll(plain, from, to);
  }
  const std::size_t open = plain.find_first_of("([");
  const std::vector<std::string> words = wordsOf(plain.substr(0, open));
  if (open != std::string::npos) {
    if (!readName(words, words.size(), head)) return false;
    const std::vector<std::string> inside = wordsOf(plain.substr(open));
    head.unit = unitOf(head.quantity, joined(inside, 0, inside.size()));
    if (head.unit.empty() && !inside.empty()) head.unknown = plain.substr(open);
    return true;
  }
  for (std::size_t end = 1; end <= words.size(); ++end) {
    if (!readName(words, end, head)) continue;
    head.unit = unitOf(head.quantity, joined(words, end, words.size()));
    if (end == words.size() || !head.unit.empty()) return true;
  }
  return false;
}

}  // namespace mirel
