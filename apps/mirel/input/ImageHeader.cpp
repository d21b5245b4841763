#include "input/ImageHeader.h"

namespace mirel {

namespace {

/// Big-endian number of `count` bytes at `at`; the bytes are there.
std::uint64_t number(std::string_view bytes, std::size_t at, int count) {
  std::uint64_t value = 0;
  for (int i = 0; i < count; ++i) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  return value;
}

std::optional<ImageHeader> readPng(std::string_view bytes) {
  constexpr std::size_t headLength = 24;  // signature 8, chunk length 4, "IHDR" 4, width 4, height 4
  if (bytes.size() < headLength || bytes.substr(12, 4) != "IHDR") return std::nullopt;
  return ImageHeader{number(bytes, 16, 4), number(bytes, 20, 4), bytes.rfind("IEND") != std::string_view::npos};
}

bool isFrameHeader(unsigned marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

std::optional<ImageHeader> readJpeg(std::string_view bytes) {
  constexpr unsigned startOfScan = 0xDA;
  ImageHeader header;
  // Segments: FF, marker, length of 2 bytes that counts itself, content. The thumbnail lies inside a segment.
  for (std::size_t at = 2; at + 4 <= bytes.size();) {
    if (number(bytes, at, 1) != 0xFF) return std::nullopt;
    const auto marker = static_cast<unsigned>(number(bytes, at + 1, 1));
    if (marker == 0xFF) {  // a fill byte
      ++at;
      continue;
    }
    if (isFrameHeader(marker) && at + 9 <= bytes.size()) {
      header.height = number(bytes, at + 5, 2);
      header.width = number(bytes, at + 7, 2);
    }
    at += 2 + number(bytes, at + 2, 2);
    if (marker == startOfScan) {
      header.complete = at < bytes.size() && bytes.find("\xFF\xD9", at) != std::string_view::npos;
      return header;
    }
  }
  header.complete = false;
  return header;
}

}  // namespace

std::optional<ImageHeader> readImageHeader(std::string_view bytes) {
  if (bytes.starts_with("\x89PNG\r\n\x1A\n")) return readPng(bytes);
  if (bytes.starts_with("\xFF\xD8\xFF")) return readJpeg(bytes);
  return std::nullopt;
}

}  // namespace mirel
