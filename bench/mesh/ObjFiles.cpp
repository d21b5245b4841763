// Reading and writing OBJ files of 200,000 triangles beside tinyobjloader, assimp and the C library's functions.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "mesh/BumpySphere.h"
#if MIREL_BENCH_ASSIMP
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <assimp/Exporter.hpp>
#include <assimp/Importer.hpp>
#endif
#if MIREL_BENCH_TINYOBJ
#include <tiny_obj_loader.h>
#endif

namespace {

using bench::MeshSimplification;
using bench::Triangle;
using bench::vec3f;
using bench::Vertex;

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

const MeshSimplification& scan() {
  static const MeshSimplification mesh = bench::bumpySphere(158);
  return mesh;
}

// A file that goes with the program.
class ScratchFile {
 public:
  explicit ScratchFile(const char* name)
      : path_(std::filesystem::temp_directory_path() / (std::to_string(getpid()) + name)) {}
  ~ScratchFile() { std::filesystem::remove(path_); }
  std::string path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

enum class Form { short6, long17, textured };

void writePlainly(const std::string& path, Form form) {
  const File file(std::fopen(path.c_str(), "w"), &std::fclose);
  const char* const vertexForm = form == Form::long17 ? "v %.17g %.17g %.17g\n" : "v %g %g %g\n";
  for (const Vertex& vertex : scan().vertices) std::fprintf(file.get(), vertexForm, vertex.p.x, vertex.p.y, vertex.p.z);
  if (form == Form::textured)
    for (const Vertex& vertex : scan().vertices) {
      const vec3f n = vertex.p.normalized();
      std::fprintf(file.get(), "vt %g %g\nvn %g %g %g\n", n.x * 0.5 + 0.5, n.y * 0.5 + 0.5, n.x, n.y, n.z);
    }
  for (const Triangle& triangle : scan().triangles) {
    const int a = triangle.v[0] + 1, b = triangle.v[1] + 1, c = triangle.v[2] + 1;
    if (form == Form::textured)
      std::fprintf(file.get(), "f %d/%d/%d %d/%d/%d %d/%d/%d\n", a, a, a, b, b, b, c, c, c);
    else
      std::fprintf(file.get(), "f %d %d %d\n", a, b, c);
  }
}

template <Form form>
std::string fileOf() {
  static const ScratchFile file(form == Form::short6 ? "-6.obj" : form == Form::long17 ? "-17.obj" : "-textured.obj");
  static const bool written = (writePlainly(file.path(), form), true);
  (void)written;
  return file.path();
}

void countBytes(benchmark::State& state, const std::string& path) {
  state.SetBytesProcessed(state.iterations() * static_cast<long>(std::filesystem::file_size(path)));
}

template <Form form>
void readObj(benchmark::State& state) {
  const std::string path = fileOf<form>();
  for (auto _ : state) {
    MeshSimplification mesh;
    mesh.load_obj(path.c_str(), true);
    benchmark::DoNotOptimize(mesh.triangles.data());
  }
  countBytes(state, path);
}

// What one writes in a minute, into small records.
template <Form form>
void readSscanf(benchmark::State& state) {
  const std::string path = fileOf<form>();
  for (auto _ : state) {
    std::vector<vec3f> positions, coordinates;
    std::vector<int> corners;
    const File file(std::fopen(path.c_str(), "rb"), &std::fclose);
    char line[1000];
    while (std::fgets(line, sizeof line, file.get())) {
      vec3f p;
      int v[9];
      if (line[0] == 'v' && line[1] == ' ' && std::sscanf(line, "v %lf %lf %lf", &p.x, &p.y, &p.z) == 3)
        positions.push_back(p);
      else if (line[0] == 'v' && line[1] == 't' && std::sscanf(line, "vt %lf %lf", &p.x, &p.y) == 2)
        coordinates.push_back(p);
      else if (line[0] == 'f' && std::sscanf(line, "f %d %d %d", &v[0], &v[1], &v[2]) == 3)
        corners.insert(corners.end(), v, v + 3);
      else if (line[0] == 'f' && std::sscanf(line, "f %d/%d/%d %d/%d/%d %d/%d/%d", &v[0], &v[1], &v[2], &v[3], &v[4],
                                             &v[5], &v[6], &v[7], &v[8]) == 9)
        corners.insert(corners.end(), v, v + 9);
    }
    benchmark::DoNotOptimize(corners.data());
  }
  countBytes(state, path);
}

#if MIREL_BENCH_TINYOBJ
template <Form form>
void readTinyObj(benchmark::State& state) {
  const std::string path = fileOf<form>();
  for (auto _ : state) {
    tinyobj::attrib_t attributes;
    std::vector<tinyobj::shape_t> shapes;
    std::vector<tinyobj::material_t> materials;
    std::string warnings, errors;
    if (!tinyobj::LoadObj(&attributes, &shapes, &materials, &warnings, &errors, path.c_str()))
      state.SkipWithError("tinyobjloader cannot read it");
  }
  countBytes(state, path);
}
#endif

#if MIREL_BENCH_ASSIMP
template <Form form>
void readAssimp(benchmark::State& state) {
  const std::string path = fileOf<form>();
  for (auto _ : state) {
    Assimp::Importer importer;
    if (!importer.ReadFile(path, 0)) state.SkipWithError("assimp cannot read it");
  }
  countBytes(state, path);
}

void writeAssimp(benchmark::State& state) {
  const ScratchFile file("-written.obj");
  Assimp::Importer importer;
  const aiScene* const scene = importer.ReadFile(fileOf<Form::short6>(), aiProcess_JoinIdenticalVertices);
  for (auto _ : state) Assimp::Exporter().Export(scene, "objnomtl", file.path());
  countBytes(state, file.path());
}
#endif

void writeObj(benchmark::State& state) {
  const ScratchFile file("-written.obj");
  MeshSimplification mesh = scan();
  for (auto _ : state) mesh.write_obj(file.path().c_str());
  countBytes(state, file.path());
}

void writeFprintf(benchmark::State& state) {
  const ScratchFile file("-written.obj");
  for (auto _ : state) writePlainly(file.path(), Form::short6);
  countBytes(state, file.path());
}

#define MIREL_READ(function, name)                                                           \
  BENCHMARK(function<Form::short6>)->Name(name "/6_digits")->Unit(benchmark::kMillisecond);  \
  BENCHMARK(function<Form::long17>)->Name(name "/17_digits")->Unit(benchmark::kMillisecond); \
  BENCHMARK(function<Form::textured>)->Name(name "/textured")->Unit(benchmark::kMillisecond)

MIREL_READ(readObj, "read_obj");
MIREL_READ(readSscanf, "read_obj_sscanf");
BENCHMARK(writeObj)->Name("write_obj")->Unit(benchmark::kMillisecond);
BENCHMARK(writeFprintf)->Name("write_obj_fprintf")->Unit(benchmark::kMillisecond);
#if MIREL_BENCH_TINYOBJ
MIREL_READ(readTinyObj, "read_obj_tinyobjloader");
#endif
#if MIREL_BENCH_ASSIMP
MIREL_READ(readAssimp, "read_obj_assimp");
BENCHMARK(writeAssimp)->Name("write_obj_assimp")->Unit(benchmark::kMillisecond);
#endif

}  // namespace
