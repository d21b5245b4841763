#include "../Capabilities.h"

namespace MirelAlgorithms {
namespace {

MeshSimplification loaded(const Inputs& in) {
  MeshSimplification mesh;
  mesh.load_obj(in.obj.name(), true);
  return mesh;
}

std::uint64_t objReading(const Inputs& in) {
  char name[] = "  stone \n";
  return Digest()(loaded(in))(isReadableFace("f 1/2 3/4"))(isReadableFace("f 1//2 3//4 5//6"))(
      std::string(MeshSimplification().trimwhitespace(name)));
}

std::uint64_t objWriting(const Inputs& in) {
  const ObjFile file("");
  loaded(in).write_obj(file.name());
  return Digest()(file.read());
}

std::uint64_t simplified(const Inputs& in) {
  MeshSimplification mesh = loaded(in);
  mesh.simplify_mesh(in.side, 7.0, false);
  return Digest()(mesh);
}

std::uint64_t simplifiedLossless(const Inputs& in) {
  MeshSimplification mesh = loaded(in);
  for (Vertex& vertex : mesh.vertices) vertex.p.z = 0.25 * vertex.p.x;
  mesh.simplify_mesh_lossless(false);
  return Digest()(mesh);
}

std::uint64_t meshSteps(const Inputs& in) {
  MeshSimplification mesh = loaded(in);
  mesh.update_mesh(0);
  Digest digest;
  vec3f p;
  int removed = 0;
  for (int i = 0; i + 1 < static_cast<int>(mesh.vertices.size()); i += 7) {
    Vertex &a = mesh.vertices[static_cast<std::size_t>(i)], &b = mesh.vertices[static_cast<std::size_t>(i) + 1];
    std::vector<int> deleted(static_cast<std::size_t>(a.tcount));
    digest(mesh.calculate_error(i, i + 1, p))(p)(mesh.vertex_error(a.q, p.x, p.y, p.z));
    digest(mesh.flipped(p, i, i + 1, a, b, deleted))(deleted);
    mesh.update_uvs(i, a, p, deleted);
    digest(mesh.barycentric(p, a.p, b.p, {0, 0, 9}))(mesh.interpolate(p, a.p, b.p, {0, 0, 9}, mesh.triangles[0].uvs));
    mesh.update_triangles(i, a, deleted, removed);
    digest(a.p.dot(b.p))(a.p.cross(b.p))(a.p.normalized())(a.q.det(0, 1, 2, 1, 4, 5, 2, 5, 7));
  }
  mesh.compact_mesh();
  return digest(removed)(mesh)((mesh.min)(2, 1));
}

}  // namespace

std::vector<Capability> meshCapabilities() {
  return {
      {"mesh_reading", objReading},          {"mesh_writing", objWriting}, {"mesh_simplified", simplified},
      {"mesh_lossless", simplifiedLossless}, {"mesh_steps", meshSteps},
  };
}

}  // namespace MirelAlgorithms
