/// Digests and encodings of bytes.
#pragma once

#include <string>
#include <string_view>

namespace mirel {

/// SHA-256 in lower-case hexadecimal digits.
std::string sha256(std::string_view bytes);

/// The same of a whole file, block by block; throws `UsageError` when it cannot be read.
std::string sha256OfFile(const std::string& path);

/// Lower-case hexadecimal digits, two per byte.
std::string hexadecimal(std::string_view bytes);

/// Base64 with padding (RFC 4648).
std::string base64(std::string_view bytes);

}  // namespace mirel
