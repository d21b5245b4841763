#include <MirelAlgorithms/mesh/MeshSimplification.h>
#include <mesh/MeshBits.h>
#include <mesh/ObjFile.h>
#include <support/BadInput.h>

#include <climits>
#include <cmath>

namespace MirelAlgorithms {
namespace {

using Mesh = MeshSimplification;
using Marks = std::vector<int>;

Mesh tetrahedron() {
  Mesh mesh;
  for (const vec3f& p : {vec3f{0, 0, 0}, vec3f{1, 0, 0}, vec3f{0, 1, 0}, vec3f{0, 0, 1}})
    mesh.vertices.emplace_back().p = p;
  const int corners[4][3] = {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}};
  for (const auto& v : corners) std::copy_n(v, 3, mesh.triangles.emplace_back().v);
  return mesh;
}

/// For pairs to keep.
auto bitsOf(const Mesh& mesh) {
  return [&mesh] { return bits(mesh); };
}

std::string sizes(const Mesh& mesh) {
  return std::to_string(mesh.vertices.size()) + " vertices, " + std::to_string(mesh.triangles.size()) + " triangles";
}

TEST(BadInput, MeshOperations) {
  struct Operation {
    std::string name, function;
    void (*call)(Mesh&);
    bool alsoOfDeleted;
  };
  const Operation operations[] = {
      {"simplify_mesh", "simplify_mesh", [](Mesh& m) { m.simplify_mesh(0, 7, false); }, true},
      {"simplify_mesh, target above the count", "simplify_mesh", [](Mesh& m) { m.simplify_mesh(99, 7, false); }, true},
      {"simplify_mesh_lossless", "simplify_mesh_lossless", [](Mesh& m) { m.simplify_mesh_lossless(false); }, true},
      {"update_mesh(0)", "update_mesh", [](Mesh& m) { m.update_mesh(0); }, true},
      {"update_mesh(-1)", "update_mesh", [](Mesh& m) { m.update_mesh(-1); }, true},
      {"update_mesh(1)", "update_mesh", [](Mesh& m) { m.update_mesh(1); }, false},
      {"compact_mesh", "compact_mesh", [](Mesh& m) { m.compact_mesh(); }, false},
  };
  BadInput pairs("MeshSimplification");
  for (const Operation& operation : operations) {
    for (const int number : {-1, 4})
      for (const int deleted : {0, 1}) {
        Mesh mesh = tetrahedron();
        mesh.vertices[0].tcount = mesh.triangles[1].deleted = 1;
        mesh.triangles[3].v[2] = number;
        mesh.triangles[3].deleted = deleted;
        const std::string n = std::to_string(number), defect = operation.name + ", vertex " + n;
        if (deleted && !operation.alsoOfDeleted)
          pairs.expect(defect + ", deleted", "done", [&] { operation.call(mesh); });
        else
          pairs.expect(
              defect + (deleted ? ", deleted" : ""),
              refused + operation.function + ": vertex number of a triangle: " + n + " given, 0 to 3 expected",
              [&] { operation.call(mesh); }, bitsOf(mesh));
      }
    pairs.expect(operation.name + ", empty mesh", "0 vertices, 0 triangles", [&] {
      Mesh none;
      operation.call(none);
      return sizes(none);
    });
  }
  struct Target {
    const char* defect;
    int count;
    double aggressiveness;
    const char* left;
  };
  for (const Target& row : {Target{"least target", INT_MIN, 7, "0 vertices, 0 triangles"},
                            Target{"largest target", INT_MAX, 7, "3 vertices, 1 triangles"},
                            Target{"aggressiveness not a number", 0, std::nan(""), "3 vertices, 1 triangles"},
                            Target{"aggressiveness without end", 0, HUGE_VAL, "0 vertices, 0 triangles"}})
    pairs.expect(row.defect, row.left, [&] {
      Mesh flat = tetrahedron();
      flat.triangles.resize(1);
      flat.simplify_mesh(row.count, row.aggressiveness, false);
      return sizes(flat);
    });
}

TEST(BadInput, MeshSteps) {
  struct Step {
    std::string name, owner;
    void (*call)(Mesh&, Marks&);
  };
  const Step steps[] = {
      {"flipped", "va", [](Mesh& m, Marks& marks) { m.flipped({}, 0, 1, m.vertices[0], m.vertices[1], marks); }},
      {"update_triangles", "v",
       [](Mesh& m, Marks& marks) {
         int count = 0;
         m.update_triangles(0, m.vertices[0], marks, count);
       }},
      {"update_uvs", "v", [](Mesh& m, Marks& marks) { m.update_uvs(0, m.vertices[0], {}, marks); }},
  };
  struct Fault {
    std::string text;  // after the owner of `tstart`, if it begins with a dot
    void (*spoil)(Mesh&, Marks&);
  };
  const Fault faults[] = {
      {".tstart: -1 given, 0 to 9", [](Mesh& m, Marks&) { m.vertices[0].tstart = -1; }},
      {".tstart: 10 given, 0 to 9", [](Mesh& m, Marks&) { m.vertices[0].tstart = 10; }},
      {".tstart: 0 given, 0 to -2147483635", [](Mesh& m, Marks&) { m.vertices[0].tcount = INT_MAX; }},
      {"elements of deleted: 2 given, at least 3", [](Mesh&, Marks& marks) { marks.pop_back(); }},
      {"triangle of a reference: 4 given, 0 to 3", [](Mesh& m, Marks&) { m.refs[1].tid = 4; }},
      {"triangle of a reference: -1 given, 0 to 3", [](Mesh& m, Marks&) { m.refs[2].tid = -1; }},
      {"corner of a reference: 3 given, 0 to 2", [](Mesh& m, Marks&) { m.refs[1].tvertex = 3; }},
      {"corner of a reference: -1 given, 0 to 2", [](Mesh& m, Marks&) { m.refs[0].tvertex = -1; }},
      {"vertex number of a triangle: 4 given, 0 to 3", [](Mesh& m, Marks&) { m.triangles[0].v[1] = 4; }},
  };
  Mesh whole = tetrahedron();
  whole.update_mesh(0);
  BadInput pairs("steps of MeshSimplification");
  for (const Step& step : steps)
    for (const Fault& fault : faults) {
      Mesh mesh = whole;
      Marks marks(3, 0);
      fault.spoil(mesh, marks);
      const std::string defect = step.name + ": " + (fault.text[0] == '.' ? step.owner : "") + fault.text;
      pairs.expect(
          defect, refused + defect + " expected", [&] { step.call(mesh, marks); }, bitsOf(mesh), marks);
    }
  Marks marks(3, 0);
  vec3f p{7, 8, 9};
  int count = 0;
  const auto unchanged = bitsOf(whole);
  pairs.keep(p, count, marks, unchanged);
  for (const int number : {-1, 4}) {
    const std::string found = ": " + std::to_string(number) + " given, 0 to 3 expected";
    pairs.expect("id_v1" + found, refused + "calculate_error: id_v1" + found,
                 [&] { return whole.calculate_error(number, 0, p); });
    pairs.expect("id_v2" + found, refused + "calculate_error: id_v2" + found,
                 [&] { return whole.calculate_error(0, number, p); });
    pairs.expect("i0" + found, refused + "update_triangles: i0" + found,
                 [&] { whole.update_triangles(number, whole.vertices[0], marks, count); });
  }
  pairs.expect("interpolate, null values", refused + "interpolate: attrs: null given, three values expected",
               [&] { whole.interpolate(p, p, p, p, nullptr); });
  pairs.expect("barycentric, triangle without area", "true",
               [&] { return !std::isfinite(whole.barycentric(p, p, p, p).x); });
  Vertex unused;
  unused.tstart = -1;
  pairs.expect("start without references", "done", [&] { whole.update_uvs(0, unused, p, marks); });
  pairs.expect("min, not a number", "true", [&] { return (whole.min)(std::nan(""), 2) == 2; });
  pairs.expect("trimwhitespace, null", "true", [&] { return whole.trimwhitespace(nullptr) == nullptr; });
}

TEST(BadInput, load_obj) {
  const std::string folder = std::filesystem::temp_directory_path().string(), missing = folder + "/no/such.obj";
  BadInput pairs("load_obj");
  const auto loaded = [](const char* name) {
    Mesh mesh = tetrahedron();
    mesh.materials = {"a"};
    mesh.mtllib = "m";
    testing::internal::CaptureStdout();
    mesh.load_obj(name, true);
    const std::string printed = testing::internal::GetCapturedStdout();
    return sizes(mesh) + (mesh.materials.size() == 1 && mesh.mtllib == "m" ? ", names kept" : "") +
           (printed.empty() ? "" : ": " + printed);
  };
  const std::string empty = "0 vertices, 0 triangles, names kept";
  for (const char* name : {static_cast<const char*>(nullptr), "", folder.c_str()})
    pairs.expect(name ? std::string("name '") + name + "'" : "null", empty, [&] { return loaded(name); });
  pairs.expect("no such file", empty + ": File " + missing + " not found!\n", [&] { return loaded(missing.c_str()); });
  struct File {
    const char* defect;
    std::string text;
    int vertices, triangles;
  };
  for (const File& file : {
           File{"empty file", "", 0, 0},
           File{"a zero byte alone", std::string(1, '\0'), 0, 0},
           File{"33 digits", "v 111111111111111111111111111111111 0.000000000000000000000000000000001 1\n", 1, 0},
           File{"vertices outside the list", "v 1 2 3\nf 0 -1 99\nf -2147483648 2147483647 7\n", 1, 2},
           File{"vertex numbers beyond int", "f 99999999999 4294967297 1\n", 0, 1},
           File{"face of 17 corners", "f 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17\n", 0, 1},
           File{"texture coordinates that are not there", "f 1/9/1 2/0/1 3/-1/1\n", 0, 1},
       }) {
    const ObjFile onDisk(file.text);
    pairs.expect(
        file.defect,
        std::to_string(file.vertices) + " vertices, " + std::to_string(file.triangles) + " triangles, names kept",
        [&] { return loaded(onDisk.name()); }, [&] { return onDisk.read(); });
  }
}

TEST(BadInput, isReadableFace) {
  const std::string late = "f 1 2 " + std::string(1000, ' ') + "3", name(5000, 'f');
  BadInput pairs("isReadableFace");
  const char* const lines[] = {nullptr,   "",         "f",          "f 1 2\n",   "f 1//2 3//4 5/",
                               "v 1 2 3", " f 1 2 3", late.c_str(), name.c_str()};
  for (const char* line : lines) pairs.expect(line ? line : "null", "false", [&] { return isReadableFace(line); });
}

}  // namespace
}  // namespace MirelAlgorithms
