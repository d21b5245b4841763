/// Numbers as text with six significant digits.
#pragma once

namespace MirelAlgorithms {

inline constexpr int longestShortNumber = 16;  ///< characters that `writeShortNumber` may write

/// Writes what `printf("%g")` writes in the C locale, without a terminator. Returns the end.
char* writeShortNumber(char* out, double value);

}  // namespace MirelAlgorithms
