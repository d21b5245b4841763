#include <MirelAlgorithms/mesh/internal/LinePieces.h>
#include <MirelAlgorithms/mesh/internal/NumberCursor.h>
#include <MirelAlgorithms/mesh/internal/ObjLines.h>

#include <cstdio>
#include <cstring>

namespace MirelAlgorithms::obj {
namespace {

// A piece as the C library wants it; a zero byte in it ends the text.
class Text {
 public:
  explicit Text(std::string_view piece) {
    std::memcpy(characters_, piece.data(), piece.size());
    characters_[piece.size()] = '\0';
  }
  operator const char*() const { return characters_; }

 private:
  char characters_[LinePieces::longest + 1];
};

// The end of a complete line stops a cursor; other pieces may run into what follows.
bool isLine(std::string_view piece) { return piece.back() == '\n'; }

template <class... Reals>
bool reals(NumberCursor cursor, Reals&... values) {
  return (... && (cursor.skipBlanks(), cursor.real(values)));
}

// Of one corner: a, a//n or a/t/n.
enum class Form { vertex, withNormal, withBoth };

bool corner(NumberCursor& cursor, Form form, int& vertex, int& coordinate) {
  int normal;
  if (!cursor.integer(vertex)) return false;
  if (form == Form::vertex) return cursor.atEndOfWord();
  if (!cursor.skip('/')) return false;
  if (form == Form::withBoth && !cursor.integer(coordinate)) return false;
  return cursor.skip('/') && cursor.integer(normal) && cursor.atEndOfWord();
}

Form formOf(NumberCursor cursor) {
  int number;
  cursor.integer(number);
  if (!cursor.skip('/')) return Form::vertex;
  return cursor.skip('/') ? Form::withNormal : Form::withBoth;
}

bool readUsualFace(std::string_view piece, Face& face) {
  NumberCursor cursor(piece.data() + 1);
  cursor.skipBlanks();
  const Form form = formOf(cursor);
  face.hasCoordinates = form == Form::withBoth;
  for (std::size_t i = 0; i < 3; ++i) {
    cursor.skipBlanks();
    if (!corner(cursor, form, face.vertices[i], face.coordinates[i])) return false;
  }
  return true;
}

}  // namespace

bool scanVertex(std::string_view piece, vec3f& position) {
  return std::sscanf(Text(piece), "v %lf %lf %lf", &position.x, &position.y, &position.z) == 3;
}

bool scanCoordinate(std::string_view piece, vec3f& coordinate) {
  coordinate.z = 0;
  return std::sscanf(Text(piece), "vt %lf %lf", &coordinate.x, &coordinate.y) == 2;
}

bool scanFace(std::string_view piece, Face& face) {
  const Text line(piece);
  auto& [v, t, both] = face;
  int n[3];
  both = false;
  if (std::sscanf(line, "f %d %d %d", &v[0], &v[1], &v[2]) == 3 ||
      std::sscanf(line, "f %d// %d// %d//", &v[0], &v[1], &v[2]) == 3 ||
      std::sscanf(line, "f %d//%d %d//%d %d//%d", &v[0], &n[0], &v[1], &n[1], &v[2], &n[2]) == 6)
    return true;
  both = true;
  return std::sscanf(line, "f %d/%d/%d %d/%d/%d %d/%d/%d", &v[0], &t[0], &n[0], &v[1], &t[1], &n[1], &v[2], &t[2],
                     &n[2]) == 9;
}

bool readVertex(std::string_view piece, vec3f& position) {
  return (isLine(piece) && reals(NumberCursor(piece.data() + 2), position.x, position.y, position.z)) ||
         scanVertex(piece, position);
}

bool readCoordinate(std::string_view piece, vec3f& coordinate) {
  coordinate.z = 0;
  return (isLine(piece) && reals(NumberCursor(piece.data() + 3), coordinate.x, coordinate.y)) ||
         scanCoordinate(piece, coordinate);
}

bool readFace(std::string_view piece, Face& face) {
  return (isLine(piece) && readUsualFace(piece, face)) || scanFace(piece, face);
}

}  // namespace MirelAlgorithms::obj
