/// Single lines of OBJ files: reading ends, quick reading gives what the C library does, and the line test that callers
/// rely on agrees with it.
#include <MirelAlgorithms/mesh/MeshSimplification.h>
#include <MirelAlgorithms/mesh/internal/LinePieces.h>
#include <MirelAlgorithms/mesh/internal/ObjLines.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "Check.h"

namespace {

using namespace MirelAlgorithms;

// In a block of exactly its size, so that a step past the end is seen.
struct ExactCopy {
  explicit ExactCopy(std::string_view text) : block(new char[text.size()]), view(block.get(), text.size()) {
    std::copy(text.begin(), text.end(), block.get());
  }
  std::unique_ptr<char[]> block;
  std::string_view view;
};

template <class Record, class Quick, class Scan>
bool agree(const std::string& line, const Quick& quick, const Scan& scan) {
  const ExactCopy piece(line);
  Record found{}, wanted{};
  const bool readable = scan(piece.view, wanted);
  MIREL_CHECK(quick(piece.view, found) == readable);
  MIREL_CHECK(!readable || std::memcmp(&found, &wanted, sizeof found) == 0);
  MIREL_CHECK(piece.view == line);
  return readable;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  std::string line(reinterpret_cast<const char*>(bytes), std::min(size, LinePieces::longest));
  line.resize(std::min(line.size(), line.find('\n')));
  if (line.size() < LinePieces::longest) line += '\n';
  if (line.starts_with("v ")) agree<vec3f>(line, obj::readVertex, obj::scanVertex);
  if (line.starts_with("vt ")) agree<vec3f>(line, obj::readCoordinate, obj::scanCoordinate);
  if (line[0] != 'f') {
    MIREL_CHECK(!isReadableFace(line.c_str()));
    return 0;
  }
  const bool readable = agree<obj::Face>(line, obj::readFace, obj::scanFace);
  MIREL_CHECK(isReadableFace(line.c_str()) == readable);
  if (line.back() == '\n') line.pop_back();  // as a caller may hand it over
  MIREL_CHECK(isReadableFace(line.c_str()) == readable);
  return 0;
}
