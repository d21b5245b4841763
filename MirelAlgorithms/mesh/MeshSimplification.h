/// Triangle meshes: Wavefront OBJ files in and out, and fewer triangles for nearly the same surface.
///
///     MeshSimplification mesh;
///     mesh.load_obj("scan.obj", true);
///     mesh.simplify_mesh(100000, 7.0, false);
///     mesh.write_obj("light.obj");
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/mesh/MeshRecords.h>

#include <string>
#include <vector>

namespace MirelAlgorithms {

/// One triangle mesh, with texture coordinates and material names if it has them.
///
/// Simplification collapses edges: both ends become one vertex, at the point whose squared distances from the planes of
/// the triangles around them add up least (Garland and Heckbert, "Surface simplification using quadric error metrics",
/// SIGGRAPH 1997). Edges are not sorted by error; pass after pass collapses what lies below a rising threshold.
///
/// The members may be edited by the caller. Vertex numbers outside the list of vertices are loaded as they are; every
/// operation that would follow them throws `std::invalid_argument` before it changes anything. Coordinates may be
/// infinite or NaN: what touches them stays as it is. Messages go to standard output. An object is used by one thread
/// at a time. Copies are independent.
class MIREL_API MeshSimplification {
 public:
  std::vector<Triangle> triangles;     ///< those marked as deleted too, until `compact_mesh`
  std::vector<Vertex> vertices;        ///< counted from 0
  std::vector<Ref> refs;               ///< triangles of the vertices, those of one vertex beside each other
  std::string mtllib;                  ///< material library named by the OBJ file; empty: none
  std::vector<std::string> materials;  ///< names in order of first use

  /// Replaces vertices and triangles by those of a Wavefront OBJ file. `materials` is appended to, `mtllib` replaced
  /// when the file names one. Numbers are read as the C locale writes them, whatever locale is set.
  ///
  /// Read are the lines `v x y z`, `vt u v`, `mtllib NAME`, `usemtl NAME` and the faces `f 1 2 3`, `f 1//7 2//7 3//7`
  /// and `f 1/4/7 2/5/7 3/6/7`, of more corners the first three; texture coordinates only from the last form. Vertices
  /// that do not parse and all other lines are skipped. Lines of more than 999 characters are read in pieces of 999, as
  /// if each was a line.
  ///
  /// A null or empty name, a file that cannot be opened (with a message) and one that cannot be read leave an empty
  /// mesh. A face of another form, also `f 1/4 2/5 3/6` as `write_obj` writes it: a message, then the call waits for
  /// ever. `isReadableFace` tells before.
  ///
  /// @param filename    name of the file, as the C library opens it
  /// @param process_uv  whether to give triangles texture coordinates. Triangle i takes the i-th of the faces with
  ///                    texture coordinates, so a file should have them in all of its faces or in none
  ///
  /// Time in proportion to the file.
  void load_obj(const char* filename, bool process_uv);

  /// Writes the mesh as a Wavefront OBJ file: all vertices with six significant digits, and the triangles that are not
  /// deleted. Three texture coordinates are written for each triangle when the first of the mesh has any. A material
  /// number that has no name gets no line. Numbers are written in the C locale.
  ///
  /// When the file cannot be opened, also for a null name: a message, then the process ends with exit status 0.
  /// Failures of writing, for example on a full disk, are not reported.
  void write_obj(const char* filename);

  /// Skips white space at the start of a text and cuts it off at its end.
  ///
  /// @param str  zero-terminated; gets a new terminator in place
  /// @return     the first character in `str` that is not white space; null for null
  char* trimwhitespace(char* str);

  /// The smaller of two values; b when they do not compare. In parentheses, for there may be a macro of this name.
  double(min)(double a, double b) { return a < b ? a : b; }

  /// Collapses edges until at most `target_count` triangles are left, or for 100 passes: a mesh can stay above its
  /// target, and fall below it by the triangles of the last collapse. Then compacts the mesh.
  ///
  /// Pass i takes edges with an error below 1e-9 (i + 3)^aggressiveness; errors are squared distances, so the scale of
  /// the model counts. Edges between border and interior are kept, also those whose collapse would turn a triangle by
  /// 78 degrees or make it a sliver. Triangles marked as deleted come back first.
  ///
  /// @param target_count    triangles wanted
  /// @param aggressiveness  7 for ordinary meshes; smaller: more passes and a better surface; NaN: nothing collapses
  /// @param verbose         print a line every fifth pass
  ///
  /// Time about in proportion to the triangles. Memory beside the mesh and its references: about
  /// 80 bytes a triangle.
  void simplify_mesh(int target_count, double aggressiveness, bool verbose);

  /// Collapses edges as long as that changes the surface by practically nothing (an error below 2^-52), at most for
  /// 9999 passes. Then compacts the mesh. Triangles marked as deleted count for the first quadrics and borders.
  ///
  /// @param verbose  print a line for every pass
  void simplify_mesh_lossless(bool verbose);

  /// Finds the triangles of every vertex. At iteration 0 also normals, quadrics, errors and borders, in this order:
  /// errors see the borders from before. Above 0 removes deleted triangles first.
  ///
  /// A vertex is on the border when it is a corner of exactly one triangle of the fan around some vertex.
  void update_mesh(int iteration);

  /// Error of collapsing the edge between two vertices: sum of squared distances from the planes of both, at the best
  /// position, or at the best of both ends and the middle when both are on the border or there is no best position.
  ///
  /// @param id_v1, id_v2  numbers of the two vertices
  /// @param p_result      the position; stays as it is when no error can be compared (NaN)
  double calculate_error(int id_v1, int id_v2, vec3f& p_result);

  /// Sum of squared distances of a point from the planes in a quadric.
  double vertex_error(SymetricMatrix q, double x, double y, double z);

  /// Whether moving a vertex would turn a triangle around it by 78 degrees or more (n1 n2 < 0.2) or make it a sliver
  /// (cosine of its angle above 0.999).
  ///
  /// @param p        the new position
  /// @param i0       number of the vertex; not read
  /// @param i1       number of the other end of the edge; triangles with both are not looked at
  /// @param va       the vertex, with its references
  /// @param vb       the other end; not read
  /// @param deleted  at least `va.tcount` elements; the elements of the triangles looked at become 1 when they have
  ///                 both ends of the edge, else 0
  bool flipped(vec3f p, int i0, int i1, Vertex& va, Vertex& vb, std::vector<int>& deleted);

  /// Gives the triangles around a vertex to vertex `i0`, or deletes them; new references are appended to `refs`.
  ///
  /// @param i0                 number of the vertex that gets them
  /// @param v                  the vertex that has them
  /// @param deleted            at least `v.tcount` elements; triangles with an element other than 0 are deleted
  /// @param deleted_triangles  the number of those deleted is added
  void update_triangles(int i0, Vertex& v, std::vector<int>& deleted, int& deleted_triangles);

  /// Moves texture coordinates along with a vertex: the corners at `v` of the triangles around it get the coordinates
  /// at point `p` of the triangle's plane.
  ///
  /// @param i0       not read
  /// @param v        the vertex, with its references
  /// @param p        its new position
  /// @param deleted  at least `v.tcount` elements; triangles with an element other than 0 are left alone
  void update_uvs(int i0, const Vertex& v, const vec3f& p, std::vector<int>& deleted);

  /// Weights of the corners a, b, c that give p, or its projection on their plane. Not finite for a triangle without
  /// area.
  vec3f barycentric(const vec3f& p, const vec3f& a, const vec3f& b, const vec3f& c);

  /// Values at three corners, not null, blended for the point p of the triangle a, b, c.
  vec3f interpolate(const vec3f& p, const vec3f& a, const vec3f& b, const vec3f& c, const vec3f attrs[3]);

  /// Removes deleted triangles and the vertices that no triangle has, both keeping their order. Of a vertex only the
  /// position moves; afterwards `refs` is not valid until `update_mesh`.
  void compact_mesh();
};

/// Whether `MeshSimplification::load_obj` can read a line that starts with `f`: those it cannot make it wait for ever.
///
/// @param line  zero-terminated, at most 999 characters
MIREL_API bool isReadableFace(const char* line);

}  // namespace MirelAlgorithms
