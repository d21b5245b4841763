/// The tool's readers of records: poses, settings, recorded runs, and OBJ files that are made ready for the library's
/// loader, which must never be given a face that it waits for. Everything but a message for the user is a fault.
#include <MirelAlgorithms/mesh/MeshSimplification.h>
#include <mesh/ObjFile.h>
#include <unistd.h>

#include <cmath>
#include <set>
#include <string>

#include "Check.h"
#include "Errors.h"
#include "meshes/ObjInput.h"
#include "options/Replay.h"
#include "options/SettingsOption.h"
#include "views/PoseFile.h"

namespace {

using namespace mirel;

void poses(const std::string& text) {
  const std::vector<NamedPose> poses = readPoses("poses.json", text);
  MIREL_CHECK(!poses.empty());
  std::set<int> numbers;
  for (const NamedPose& entry : poses) {
    MIREL_CHECK(numbers.insert(entry.number).second && !entry.name.empty());
    const VoskBase::Mat4d& m = entry.pose;
    for (int i = 0; i < 3; ++i) {
      const double length = std::hypot(m[4 * i], m[4 * i + 1], m[4 * i + 2]);
      MIREL_CHECK(std::abs(length - 1) < 0.01 && std::abs(m[12 + i]) <= farthest);
      MIREL_CHECK(rowsInMemory(m).data()[4 * i + 3] == m[12 + i]);
    }
    MIREL_CHECK(toWorld(m, {0, 0, 0}) == entry.position());
  }
}

void settings(const std::string& text) {
  std::vector<std::string> assignments(1);
  for (const char c : text) c == '\n' ? assignments.push_back({}) : assignments.back().push_back(c);
  const Settings settings(assignments);
  settings.container();
  std::set<std::string> keys;
  for (const auto& row : settings.inForce("")) keys.insert(row["key"]);
  for (const std::string& assignment : assignments) {
    const std::string key = assignment.substr(0, assignment.find('='));
    MIREL_CHECK(settings.isSet(key) && keys.count(key) == 1);
  }
  MIREL_CHECK(settings.unread("").empty());
}

void runRecord(const std::string& text) {
  const ObjFile file(text);
  const nlohmann::json record = readRunRecord(file.name());
  CLI::App app("a run", "track");
  std::vector<std::string> inputs, assignments;
  int count = 1;
  double ratio = 0;
  bool flag = false;
  app.add_option("inputs", inputs);
  app.add_option("--set", assignments);
  app.add_option("--count", count)->check(CLI::Range(1, 100));
  app.add_option("--ratio", ratio);
  app.add_flag("--picture", flag);
  replayOptions(app, record, file.name());
  MIREL_CHECK(record["command"] == "track" && count >= 1 && count <= 100);
  const nlohmann::json again = recordedOptions(app);
  for (const auto& [name, values] : again.items()) MIREL_CHECK(record["options"][name] == values);
}

void objFile(const std::string& text) {
  const ObjFile file(text);
  ObjInput input(file.name(), text);
  input.warnings();
  const std::string scratch = "/dev/shm/fuzz-" + std::to_string(getpid());
  const MirelAlgorithms::MeshSimplification mesh = input.load(scratch);
  MIREL_CHECK(access(scratch.c_str(), F_OK) != 0 && !mesh.triangles.empty());
  for (const MirelAlgorithms::Triangle& triangle : mesh.triangles)
    for (const int number : triangle.v) MIREL_CHECK(number >= 0 && number < static_cast<int>(mesh.vertices.size()));
  for (const MirelAlgorithms::Vertex& vertex : mesh.vertices)
    MIREL_CHECK(std::isfinite(vertex.p.x) && std::isfinite(vertex.p.y) && std::isfinite(vertex.p.z));
}

}  // namespace

void feed(FuzzedDataProvider& data) {
  const std::string input = data.ConsumeRemainingBytesAsString();
  if (input.empty()) return;
  constexpr void (*readers[])(const std::string&) = {poses, settings, runRecord, objFile};
  refused<UsageError>([&] { readers[static_cast<unsigned char>(input[0]) % 4](input.substr(1)); });
}
