/// Smoothing of a series by fitted polynomials.
#pragma once

#include <MirelAlgorithms/Export.h>

#include <vector>

namespace MirelAlgorithms {

/// Smooths evenly spaced samples: each value becomes that of the quadratic or cubic polynomial fitted to the window
/// around it (Savitzky and Golay, Analytical Chemistry 36 (1964) 1627). At both ends the series is mirrored about its
/// first and last sample.
///
///     out[i] = sum over j, ascending, of padded[i + j] * weight[j] * (1 / N)
///
/// Polynomials up to the third degree are kept, away from the ends and to rounding. The window of 25 uses a table
/// whose weights sum to 5177 / 5175: it raises a constant by that factor. A sample that is infinite or not a number
/// spoils only the windows that contain it.
///
/// @param in      at least window / 2 + 2 samples (integer quotient); not written, unless it is `out`
/// @param out     as many values; may be `in`; its memory is used again where it is enough
/// @param window  5, 7, 9, ... 25
/// @return        false for another window or a series too short for it, with `out` as it was
///
/// Any number of threads on their own outputs. Time grows with samples times window; memory beside `out` with the
/// window, or with the samples when `in` is `out`.
MIREL_API bool sgCubicSmoother(std::vector<double>& in, std::vector<double>& out, int window);

}  // namespace MirelAlgorithms
