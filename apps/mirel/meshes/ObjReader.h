/// Wavefront OBJ text, statement by statement.
#pragma once

#include "Errors.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mirel {

/// Indices of a face's corner, from 1 on; relative ones have been resolved.
struct ObjCorner {
  std::int64_t vertex = 0;
  std::int64_t texture = 0;  ///< 0: none
};

struct ObjStatement {
  enum Kind { other, vertex, texture, face, library, material };

  Kind kind = other;
  std::size_t line = 0;           ///< the first of its lines, from 1 on
  std::string_view shown;         ///< that line, for messages
  const char* irregular = "";     ///< why the library's loader would read something else here; empty: it would not
  std::array<double, 3> numbers;  ///< of a vertex, or two texture coordinates
  std::vector<ObjCorner> corners;
  std::string name;  ///< of a material, or of a library
};

/// Reads the statements that matter for a mesh of triangles, and says of each whether the library's loader reads the
/// same from its line as it stands. Lines end with a line feed, a carriage return or both; a backslash before that
/// joins the next one. Works in one pass, in proportion to the text.
class ObjReader {
 public:
  /// @param name  of the file, for messages
  /// @param text  outlives the reader
  ///
  /// Throws `UsageError` for what is no text.
  ObjReader(std::string name, std::string_view text);

  /// The next statement, of kind `other` for all that do not matter; false at the end.
  ///
  /// Throws `UsageError` for coordinates that are no finite numbers, for faces with fewer than three corners and for
  /// indices that are 0 or lead to before the start of the file.
  bool next(ObjStatement& statement);

  std::int64_t vertices() const { return vertices_; }
  std::int64_t textures() const { return textures_; }

  /// An error: file, line, text, what is wrong with it.
  UsageError errorAt(const ObjStatement& statement, const std::string& problem) const;

 private:
  std::string_view physicalLine(bool& regularEnd);
  std::string_view logicalLine(ObjStatement& statement);
  void readNumbers(ObjStatement& statement, std::string_view values, std::size_t least, std::size_t most) const;
  void readFace(ObjStatement& statement, std::string_view line);
  std::int64_t resolve(const ObjStatement& statement, std::int64_t index, std::int64_t count, const char* what) const;

  std::string name_;
  std::string_view text_;
  std::size_t at_ = 0, lineFeed_ = 0, line_ = 0;
  std::int64_t vertices_ = 0, textures_ = 0;
  std::string joined_, terminated_;
};

}  // namespace mirel
