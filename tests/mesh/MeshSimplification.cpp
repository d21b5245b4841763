#include <gtest/gtest.h>
#include <mesh/LiteralMesh.h>
#include <mesh/MeshBits.h>

#include <algorithm>
#include <random>

namespace MirelAlgorithms {
namespace {

enum Kind { grid, closed, soup, fan };

// A height field; rows around an axis; triangles at random, with edges of many triangles and corners that coincide; the
// same with one vertex in all of them.
MeshSimplification randomMesh(Kind kind, bool textured, bool hostile, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> unit(0, 1);
  const int width = 5 + static_cast<int>(random() % 12), height = 4 + static_cast<int>(random() % 10);
  const double noise = seed % 3 ? 0.02 * unit(random) : 0;
  MeshSimplification mesh;
  for (int i = 0; i < width * height; ++i) {
    const double x = i % width, y = i / width, angle = 6.2831853 * x / width, z = 3 * y / (height - 1);
    const double radius = (1 + noise * unit(random)) * std::sin(z);
    mesh.vertices.emplace_back().p = kind == grid ? vec3f{x, y, noise * unit(random)}
                                     : kind == closed
                                         ? vec3f{radius * std::cos(angle), radius * std::sin(angle), std::cos(z)}
                                         : vec3f{unit(random), unit(random), unit(random)};
  }
  const auto anyOf = [&](auto& records) -> auto& { return records[random() % records.size()]; };
  const int columns = kind == grid ? width - 1 : width;
  for (int i = 0; i < 2 * columns * (height - 1); ++i) {
    const int x = i / 2 % columns, y = i / 2 / columns, a = y * width + x, b = y * width + (x + 1) % width;
    Triangle& t = mesh.triangles.emplace_back();
    for (int j = 0; j < 3; ++j) {
      const int lower[] = {a, b, a + width}, upper[] = {b, b + width, a + width};
      const bool anywhere = kind == soup || (kind == fan && j > 0);
      t.v[j] = anywhere      ? static_cast<int>(random() % mesh.vertices.size())
               : kind == fan ? 0
                             : (i % 2 ? upper : lower)[j];
      t.uvs[j] = {unit(random), unit(random), 0};
    }
    t.attr = textured && random() % 4 ? Triangle::hasTexture : 0;
    t.material = static_cast<int>(random() % 3) - 1;
  }
  if (!hostile) return mesh;
  for (const double value : {std::nan(""), HUGE_VAL, 1e300, 1e-300}) anyOf(mesh.vertices).p.y = value;
  for (int i = 0; i < 9; ++i)
    anyOf(mesh.triangles).deleted = anyOf(mesh.triangles).dirty = anyOf(mesh.vertices).border = 1;
  mesh.triangles.push_back(mesh.triangles.front());
  return mesh;
}

literal::Mesh literalOf(const MeshSimplification& mesh) { return {mesh.triangles, mesh.vertices, mesh.refs}; }

template <class Call>
std::string printed(const Call& call) {
  testing::internal::CaptureStdout();
  call();
  return testing::internal::GetCapturedStdout();
}

// Each mesh is simplified twice: the second time meets what the first has left in border flags and references.
TEST(MeshSimplification, wholeMeshesAsByTheLiteralForm) {
  const double aggressivenesses[] = {7, 4, 9, 0, 1e9, std::nan("")};
  for (const Kind kind : {grid, closed, soup, fan})
    for (unsigned seed = 0; seed < 48; ++seed) {
      MeshSimplification mesh = randomMesh(kind, seed & 1, seed & 2, seed);
      literal::Mesh wanted = literalOf(mesh);
      for (const unsigned step : {0U, 1U}) {
        const bool lossless = (seed >> 2 & 1) == step;
        const double aggressiveness = aggressivenesses[seed % 3 ? 0 : seed / 3 % 6];
        const int target = static_cast<int>(mesh.triangles.size()) * static_cast<int>(seed % 6) / 4 - 1;
        const auto simplify = [&] {
          lossless ? mesh.simplify_mesh_lossless(true) : mesh.simplify_mesh(target, aggressiveness, true);
        };
        const auto simplifyWanted = [&] {
          lossless ? wanted.simplifyLossless() : wanted.simplify(target, aggressiveness);
        };
        EXPECT_EQ(printed(simplify), printed(simplifyWanted));
        ASSERT_TRUE(bits(mesh) == bits(wanted)) << "kind " << kind << " seed " << seed << " step " << step;
      }
    }
}

TEST(MeshSimplification, stepsAsByTheLiteralForm) {
  int kept = 0, count = 0, wantedCount = 0;
  for (unsigned seed = 0; seed < 12; ++seed) {
    MeshSimplification mesh = randomMesh(static_cast<Kind>(seed % 3), true, seed & 1, seed);
    literal::Mesh wanted = literalOf(mesh);
    for (const int iteration : {0, 3, -1}) {
      mesh.update_mesh(iteration);
      wanted.update(iteration);
      ASSERT_TRUE(bits(mesh) == bits(wanted));
    }
    for (std::size_t t = 0; t < mesh.triangles.size(); t += 3) {
      const int i0 = mesh.triangles[t].v[0], i1 = mesh.triangles[t].v[1];
      vec3f& p = mesh.triangles[t].n;  // any place that is compared in the end
      Vertex &a = mesh.vertices[i0], &b = mesh.vertices[i1];
      mesh.triangles[t].err[3] = mesh.calculate_error(i0, i1, p);
      wanted.triangles[t].err[3] = wanted.error(i0, i1, wanted.triangles[t].n);
      std::vector<int> marks(a.tcount, 7), wantedMarks = marks;
      const bool flipped = mesh.flipped(p, i0, i1, a, b, marks);
      ASSERT_EQ(flipped, wanted.flipped(p, i1, a, wantedMarks));
      if (flipped) continue;
      ++kept;
      ASSERT_EQ(marks, wantedMarks);
      mesh.update_uvs(i0, a, p, marks);
      wanted.updateUvs(a, p, marks);
      mesh.update_triangles(i0, a, marks, count);
      wanted.updateTriangles(i0, a, marks, wantedCount);
    }
    ASSERT_TRUE(bits(mesh) == bits(wanted)) << seed;
  }
  EXPECT_EQ(count, wantedCount);
  EXPECT_GT(kept, 100);
}

TEST(MeshSimplification, sumsByHand) {
  MeshSimplification mesh;
  EXPECT_EQ(mesh.vertex_error({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 1, 2, 3), 1 + 8 + 18 + 8 + 20 + 72 + 28 + 72 + 54 + 10);
  EXPECT_EQ(SymetricMatrix(2, 1, 1, 0, 3, 1, 0, 4, 0, 0).det(0, 1, 2, 1, 4, 5, 2, 5, 7), 17);
  const vec3f a, b{1, 0, 0}, c{0, 1, 0}, p{0.25, 0.5, 9}, values[3] = {{8, 0, 0}, {0, 4, 0}, {0, 0, 2}};
  const vec3f weights = mesh.barycentric(p, a, b, c), blend = mesh.interpolate(p, a, b, c, values);
  EXPECT_TRUE(weights.x == 0.25 && weights.y == 0.25 && weights.z == 0.5);
  EXPECT_TRUE(blend.x == 2 && blend.y == 1 && blend.z == 1);
  EXPECT_EQ(mesh.min(2, 1), 1);
}

// The position may be that of one of the ends: of equal errors the last still wins.
TEST(MeshSimplification, errorIntoAVertexOfItsOwn) {
  for (const int end : {0, 1}) {
    MeshSimplification mesh;
    mesh.vertices.resize(2);
    mesh.vertices[1].p.x = 2;
    mesh.vertices[0].q = {-1, 0, 0, 1, 0, 0, 0, 0, 0, -1};  // -(x - 1)^2
    EXPECT_EQ(mesh.calculate_error(0, 1, mesh.vertices[end].p), -1);
    EXPECT_EQ(mesh.vertices[end].p.x, 2);
  }
}

}  // namespace
}  // namespace MirelAlgorithms
