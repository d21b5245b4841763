#include "meshes/ObjInput.h"

#include "Errors.h"
#include "meshes/ObjReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace mirel {

namespace {

constexpr std::int64_t mostElements = 20'000'000;  // of triangles, vertices or texture coordinates: some 8 GB in all

bool hasTexture(const ObjStatement& face) {
  return std::all_of(face.corners.begin(), face.corners.end(), [](const ObjCorner& c) { return c.texture != 0; });
}

bool hasSomeTexture(const ObjStatement& face) {
  return std::any_of(face.corners.begin(), face.corners.end(), [](const ObjCorner& c) { return c.texture != 0; });
}

/// Corners without texture coordinates get number `missing`; 0: no corner is given any.
void appendTriangles(fmt::memory_buffer& lines, const std::vector<ObjCorner>& corners, std::int64_t missing) {
  const auto out = std::back_inserter(lines);
  for (std::size_t i = 2; i < corners.size(); ++i) {
    fmt::format_to(out, "f");
    for (const ObjCorner& corner : {corners[0], corners[i - 1], corners[i]}) {
      fmt::format_to(out, " {}", corner.vertex);
      if (missing != 0) fmt::format_to(out, "/{}/1", corner.texture != 0 ? corner.texture : missing);
    }
    fmt::format_to(out, "\n");
  }
}

void appendStatement(fmt::memory_buffer& lines, const ObjStatement& statement, std::int64_t missing) {
  const auto& [a, b, c] = statement.numbers;
  const auto out = std::back_inserter(lines);
  switch (statement.kind) {
    case ObjStatement::vertex:
      fmt::format_to(out, "v {} {} {}\n", a, b, c);
      break;
    case ObjStatement::texture:
      fmt::format_to(out, "vt {} {}\n", a, b);
      break;
    case ObjStatement::face:
      appendTriangles(lines, statement.corners, missing);
      break;
    case ObjStatement::library:
      fmt::format_to(out, "mtllib {}\n", statement.name);
      break;
    case ObjStatement::material:
      fmt::format_to(out, "usemtl {}\n", statement.name);
      break;
    case ObjStatement::other:
      break;
  }
}

/// A file that is gone when this goes out of scope.
struct ScratchFile {
  std::string path;

  ~ScratchFile() {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
  }
};

void writeOrThrow(std::ofstream& stream, const std::string& file, const char* data, std::size_t size) {
  if (!stream.write(data, static_cast<std::streamsize>(size)).flush()) {
    throw UsageError(file + ": cannot be written: the disk does not take it");
  }
}

}  // namespace

ObjInput::ObjInput(std::string name, std::string text) : name_(std::move(name)), text_(std::move(text)) { check(); }

void ObjInput::check() {
  ObjReader reader(name_, text_);
  ObjStatement statement;
  std::string library;
  while (reader.next(statement)) {
    if (*statement.irregular != '\0') rewritten_.insert(statement.irregular);
    if (statement.kind == ObjStatement::face) countFace(statement);
    if (statement.kind == ObjStatement::library && statement.name != library) {
      library = statement.name;
      ++libraries_;
    }
    checkSizes(reader, statement);
  }
  if (triangles_ == 0) {
    throw UsageError(
        fmt::format("{}: no faces ({} vertices), an OBJ file with at least one expected", name_, reader.vertices()));
  }
  checkIndices(reader);
  textures_ = reader.textures();
  if (isTextured() && texturedFaces_ < faces_) rewritten_.insert("faces without texture coordinates");
}

void ObjInput::countFace(const ObjStatement& face) {
  ++faces_;
  triangles_ += static_cast<std::int64_t>(face.corners.size()) - 2;
  if (hasSomeTexture(face)) ++texturedFaces_;
  if (hasSomeTexture(face) && !hasTexture(face)) rewritten_.insert("faces without texture coordinates");
  for (const ObjCorner& corner : face.corners) {
    if (corner.vertex > vertex_.index) vertex_ = {corner.vertex, face.line, face.shown};
    if (corner.texture > texture_.index) texture_ = {corner.texture, face.line, face.shown};
  }
}

void ObjInput::checkSizes(const ObjReader& reader, const ObjStatement& statement) const {
  const std::int64_t most = std::max({triangles_, reader.vertices(), reader.textures()});
  if (most > mostElements) {
    throw reader.errorAt(statement,
                         fmt::format("more than {} million triangles, vertices or texture coordinates, fewer expected",
                                     mostElements / 1'000'000));
  }
}

void ObjInput::checkIndices(const ObjReader& reader) const {
  const auto require = [&](const Largest& largest, std::int64_t count, const char* what) {
    if (largest.index <= count) return;
    ObjStatement at;
    at.line = largest.line;
    at.shown = largest.shown;
    throw reader.errorAt(at, fmt::format("{} {} given, the file has {}", what, largest.index, count));
  };
  require(vertex_, reader.vertices(), "vertex");
  require(texture_, reader.textures(), "texture coordinate");
}

std::vector<std::string> ObjInput::warnings() const {
  std::vector<std::string> warnings;
  if (rewritten_.contains("faces without texture coordinates")) {
    warnings.push_back(name_ + ": corners without texture coordinates beside others that have them; they get (0, 0)");
  }
  if (libraries_ > 1) {
    warnings.push_back(fmt::format("{}: {} mtllib lines, the last one is kept", name_, libraries_));
  }
  return warnings;
}

MirelAlgorithms::MeshSimplification ObjInput::load(const std::string& scratch) {
  const ScratchFile file{scratch};
  const bool asItIs = rewritten_.empty() && name_ != "-";
  if (!asItIs) write(scratch);
  std::string().swap(text_);
  MirelAlgorithms::MeshSimplification mesh;
  mesh.load_obj((asItIs ? name_ : scratch).c_str(), true);
  if (static_cast<std::int64_t>(mesh.triangles.size()) != triangles_) {
    throw UsageError(name_ + ": changed while it was read");
  }
  return mesh;
}

void ObjInput::write(const std::string& file) const {
  std::ofstream stream(file, std::ios::binary);
  if (rewritten_.empty()) return writeOrThrow(stream, file, text_.data(), text_.size());
  constexpr std::size_t enough = 1 << 20;
  fmt::memory_buffer lines;
  ObjReader reader(name_, text_);
  ObjStatement statement;
  const std::int64_t missing = isTextured() ? textures_ + 1 : 0;
  while (reader.next(statement)) {
    appendStatement(lines, statement, missing);
    if (lines.size() < enough) continue;
    writeOrThrow(stream, file, lines.data(), lines.size());
    lines.clear();
  }
  if (missing != 0) fmt::format_to(std::back_inserter(lines), "vt 0 0\n");
  writeOrThrow(stream, file, lines.data(), lines.size());
}

}  // namespace mirel
