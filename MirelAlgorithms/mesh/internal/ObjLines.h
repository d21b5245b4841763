/// The numbers in lines of OBJ files. What counts is what `sscanf` makes of a line in the C locale; lines as programs
/// usually write them are read without it, several times faster, with the same result.
#pragma once

#include <MirelAlgorithms/mesh/MeshRecords.h>

#include <array>
#include <string_view>

namespace MirelAlgorithms::obj {

/// A face's first three corners, numbers as they stand in the file.
struct Face {
  std::array<int, 3> vertices, coordinates;
  bool hasCoordinates;  ///< the form vertex/texture coordinate/normal
};

/// A line of "v" with three numbers; `piece` must start with "v ".
bool readVertex(std::string_view piece, vec3f& position);

/// A line of "vt" with two numbers; `piece` must start with "vt ". The third becomes 0.
bool readCoordinate(std::string_view piece, vec3f& coordinate);

/// A line of "f" in one of the forms that are known; `piece` must start with "f".
bool readFace(std::string_view piece, Face& face);

/// The same by `sscanf` alone, for comparison.
bool scanVertex(std::string_view piece, vec3f& position);
bool scanCoordinate(std::string_view piece, vec3f& coordinate);
bool scanFace(std::string_view piece, Face& face);

}  // namespace MirelAlgorithms::obj
