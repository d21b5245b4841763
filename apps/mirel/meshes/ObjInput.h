/// OBJ files made ready for the library's loader.
#pragma once

#include <MirelAlgorithms/mesh/MeshSimplification.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace mirel {

class ObjReader;
struct ObjStatement;

/// An OBJ file that has been looked at from its first line to its last. The library's loader waits for ever on some of
/// the lines that are legal in such files, and takes others for something else; a file with such lines is written anew,
/// in forms that the loader reads, before it is loaded (docs/obj-files.md).
class ObjInput {
 public:
  /// @param name  of the file, for messages; "-" for standard input
  /// @param text  the whole file
  ///
  /// Throws `UsageError` with the number of the line for what cannot be read, and when there is no triangle.
  ObjInput(std::string name, std::string text);

  /// What had to be written anew; empty when the loader reads the file as it is.
  const std::set<std::string>& rewritten() const { return rewritten_; }

  /// What the user should know about the result, a sentence each.
  std::vector<std::string> warnings() const;

  /// Loads the mesh; the text is given up. `scratch` is the name for a file that may be written, and is removed.
  MirelAlgorithms::MeshSimplification load(const std::string& scratch);

 private:
  /// The first statement that has the largest index.
  struct Largest {
    std::int64_t index = 0;
    std::size_t line = 0;
    std::string_view shown;
  };

  void check();
  void checkSizes(const ObjReader& reader, const ObjStatement& statement) const;
  void checkIndices(const ObjReader& reader) const;
  void countFace(const ObjStatement& face);
  bool isTextured() const { return texturedFaces_ > 0; }
  void write(const std::string& file) const;

  std::string name_, text_;
  std::set<std::string> rewritten_;
  std::int64_t triangles_ = 0, faces_ = 0, texturedFaces_ = 0, textures_ = 0, libraries_ = 0;
  Largest vertex_, texture_;
};

}  // namespace mirel
