/// Single lines of OBJ files: reading ends, quick reading gives what the C library does, and the line test that callers
/// rely on agrees with it.
#include <MirelAlgorithms/mesh/MeshSimplification.h>
#include <MirelAlgorithms/mesh/internal/LinePieces.h>
#include <MirelAlgorithms/mesh/internal/ObjLines.h>

#include <string>

#include "Check.h"

namespace {

using namespace MirelAlgorithms;

template <class Record, class Quick, class Scan>
bool agree(const std::string& line, const Quick& quick, const Scan& scan) {
  const std::vector<char> block(line.begin(),
                                line.end());  // of exactly its size, so that a step past the end is seen
  const std::string_view piece(block.data(), block.size());
  Record found{}, wanted{};
  const bool readable = scan(piece, wanted);
  MIREL_CHECK(quick(piece, found) == readable);
  MIREL_CHECK(!readable || std::memcmp(&found, &wanted, sizeof found) == 0);
  return readable;
}

}  // namespace

void feed(FuzzedDataProvider& data) {
  std::string line = data.ConsumeBytesAsString(LinePieces::longest);
  line.resize(std::min(line.size(), line.find('\n')));
  if (line.size() < LinePieces::longest) line += '\n';
  if (line.starts_with("v ")) agree<vec3f>(line, obj::readVertex, obj::scanVertex);
  if (line.starts_with("vt ")) agree<vec3f>(line, obj::readCoordinate, obj::scanCoordinate);
  const bool readable = line[0] == 'f' && agree<obj::Face>(line, obj::readFace, obj::scanFace);
  MIREL_CHECK(isReadableFace(line.c_str()) == readable);
  if (line.back() == '\n') line.pop_back();  // as a caller may hand it over
  MIREL_CHECK(isReadableFace(line.c_str()) == readable);
}
