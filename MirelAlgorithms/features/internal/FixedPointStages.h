/// Bit widths of the fixed-point response map: what each stage takes, shifts away and hands on.
///
/// Every stage is an exact integer operation followed by one right shift, chosen from the worst case of its input so
/// that the result fits the stage's width. With the default widths (s = sign bit):
///
///     luma            [12]         8-bit grey << 4
///     Sobel 3x3      s[14]         worst case 4095 * 4 < 2^14              >> 0
///     products       s[16]         worst case 2^14 * 2^14 = 2^28           >> 12
///     5x5 sums       s[13]         worst case 25 * 2^16 > 2^20             >> 8
///     eigenvalue       [12]        input shifted to s[11] pixel by pixel, output shifted back and saturated
#pragma once

#include <MirelAlgorithms/features/internal/CornerSettings.h>

namespace MirelAlgorithms {

/// Stages of one response map; the settings they come from are usable.
struct FixedPointStages {
  int aperture;         ///< of the Sobel operator: 3 or 5
  int block;            ///< side of a block sum
  StageSettings width;  ///< widths and dumps as set
  int lumaWidth;        ///< bits of the widened luma
  int sobelShift;       ///< right shifts of the stages, bits
  int productShift;
  int blockShift;
};

/// Largest gradient of a luma of 1, over both signs: 4 for aperture 3, 48 for aperture 5.
/// Other apertures: `std::runtime_error`.
double sobelGain(int aperture);

/// Shift that brings values up to `largest` into a signed `width`: ceil(log2(largest / 2^(width - 1))), at least 0.
int rightShift(double largest, int width);

/// Refuses apertures and widths that the stages cannot have, with the exception of the stage concerned.
FixedPointStages fixedPointStages(const ResponseSettings& response, const StageSettings& width);

/// One diagnostic line for each stage.
void logStages(const FixedPointStages& stages);

}  // namespace MirelAlgorithms
