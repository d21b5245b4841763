/// What the head of an image file promises, read without decoding anything.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace mirel {

struct ImageHeader {
  std::uint64_t width = 0;
  std::uint64_t height = 0;
  bool complete = true;  ///< whether the end of the picture is in the file
};

/// Of a PNG file (signature, then the IHDR chunk; ends with IEND) or a JPEG file (marker segments up to the frame
/// header; ends with EOI). Nothing for other formats and for heads that are not as the formats want them.
std::optional<ImageHeader> readImageHeader(std::string_view bytes);

}  // namespace mirel
