/// The tool's readers of records: poses, settings, recorded runs, and OBJ files that are made ready for the library's
/// loader, which must never be given a face that it waits for.
#include <MirelAlgorithms/mesh/MeshSimplification.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>

#include "Errors.h"
#include "MemoryFile.h"
#include "meshes/ObjInput.h"
#include "options/Replay.h"
#include "options/SettingsOption.h"
#include "views/PoseFile.h"

namespace {

using namespace mirel;

// Whether a reader took its input. Everything but a message for the user is a fault.
template <class Reader>
bool accepted(const Reader& reader) {
  return !refused<UsageError>(reader);
}

void poses(const std::string& text) {
  std::vector<NamedPose> poses;
  if (!accepted([&] { poses = readPoses("poses.json", text); })) return;
  MIREL_CHECK(!poses.empty());
  std::set<int> numbers;
  for (const NamedPose& entry : poses) {
    MIREL_CHECK(numbers.insert(entry.number).second && !entry.name.empty());
    const VoskBase::Mat4d& m = entry.pose;
    for (int i = 0; i < 3; ++i) {
      const double length = std::hypot(m[4 * i], m[4 * i + 1], m[4 * i + 2]);
      MIREL_CHECK(std::abs(length - 1) < 0.01 && std::abs(m[12 + i]) <= farthest);
    }
    const Eigen::Matrix4d rows = rowsInMemory(m);
    const cv::Point3d origin = toWorld(m, {0, 0, 0});
    MIREL_CHECK(rows.data()[3] == m[12] && rows.data()[7] == m[13] && rows.data()[11] == m[14]);
    MIREL_CHECK(origin == entry.position());
  }
}

void settings(const std::string& text) {
  std::vector<std::string> assignments(1);
  for (const char c : text) c == '\n' ? assignments.push_back({}) : assignments.back().push_back(c);
  accepted([&] {
    const Settings settings(assignments);
    settings.container();
    const nlohmann::json list = settings.inForce("");
    for (const std::string& assignment : assignments) {
      const std::string key = assignment.substr(0, assignment.find('='));
      MIREL_CHECK(settings.isSet(key));
      MIREL_CHECK(std::any_of(list.begin(), list.end(), [&](const auto& row) { return row["key"] == key; }));
    }
    MIREL_CHECK(settings.unread("").empty());
  });
}

void runRecord(const std::string& text) {
  const MemoryFile file(text);
  accepted([&] {
    const nlohmann::json record = readRunRecord(file.name());
    CLI::App app("a run", "track");
    std::vector<std::string> inputs, assignments;
    int count = 0;
    double ratio = 0;
    bool flag = false;
    app.add_option("inputs", inputs);
    app.add_option("--set", assignments);
    app.add_option("--count", count)->check(CLI::Range(1, 100));
    app.add_option("--ratio", ratio);
    app.add_flag("--picture", flag);
    replayOptions(app, record, file.name());
    MIREL_CHECK(record["command"] == "track");
    MIREL_CHECK(app.count("--count") == 0 || (count >= 1 && count <= 100));
    const nlohmann::json again = recordedOptions(app);
    for (const auto& [name, values] : again.items()) MIREL_CHECK(record["options"][name] == values);
  });
}

void objFile(const std::string& text) {
  accepted([&] {
    const MemoryFile file(text);
    ObjInput input(file.name(), text);
    const bool asItIs = input.rewritten().empty();
    input.warnings();
    const std::string scratch = "/dev/shm/fuzz-" + std::to_string(getpid());
    const MirelAlgorithms::MeshSimplification mesh = input.load(scratch);
    MIREL_CHECK(access(scratch.c_str(), F_OK) != 0 && !mesh.triangles.empty());
    for (const MirelAlgorithms::Triangle& triangle : mesh.triangles)
      for (const int number : triangle.v) MIREL_CHECK(number >= 0 && number < static_cast<int>(mesh.vertices.size()));
    for (const MirelAlgorithms::Vertex& vertex : mesh.vertices)
      MIREL_CHECK(std::isfinite(vertex.p.x) && std::isfinite(vertex.p.y) && std::isfinite(vertex.p.z));
    if (!asItIs) return;
    MirelAlgorithms::MeshSimplification direct;
    direct.load_obj(file.name(), true);
    MIREL_CHECK(direct.vertices.size() == mesh.vertices.size() && direct.triangles.size() == mesh.triangles.size());
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(bytes) + 1, size - 1);
  constexpr void (*readers[])(const std::string&) = {poses, settings, runRecord, objFile};
  readers[bytes[0] % 4](text);
  return 0;
}
