/// Thinning and cleaning of measured points.
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

/// Keeps those rows of a list of points that agree with their surroundings, or a part of the rows.
///
/// Columns 0 and 1 are plane coordinates that a grid is laid over, columns 2 and 3 those by which neighbours are found,
/// column 4 is the value that is judged. The method is in bits 12 to 15 of `smoothSparseMode`:
///
///     0x2000  neighbourhood median
///     0x3000  grid
///     0x4000  grid, every second row
///     0x5000  every k-th row, with the smallest k from 1 to 20 for which rows / k is at most 2 `smoothSparseMaxPts`
///     0x6000  every k-th row, with the smallest k from 4 to 20 for which rows / k is at most `smoothSparseMaxPts`
///     others  all rows
///
/// k is 20 where no k is large enough.
///
/// The neighbourhood median keeps the rows whose value is less than 0.1 from the median of their neighbours: at most
/// ten, at least six, the row itself among them, within a squared distance of 0.1; in order of input.
///
/// The grid has `smoothSparseMaxPts` cells. Of each cell with at least six rows, spreads of at most 0.2 in columns 2, 3
/// and 4, and spreads in columns 2 and 3 that differ by at most 0.1, it keeps the rows at or below the cell's mean
/// value, all or the second, fourth ... of each cell; by cell, in x before y, and in order of input within a cell.
///
/// A cell is (ex c / ey) wide and (ey c / ex) high, with extents ex and ey of the points and c = sqrt(ex ey / cells),
/// in single precision. When all points have one x or one y, or cells are 0 or fewer, that is no number, and every row
/// is a cell of its own.
///
/// @param in     one point a row, CV_32FC1, at least five columns; may be a view; not written. The bytes of elements of
///               another type are taken for floats
/// @param out    the rows that are kept, with all their columns; may be `in`. Empty when the input is refused
/// @param attrs  `smoothSparseMode` (0x4000), `smoothSparseMaxPts` (15000), `smoothSparseMinPts` (100); null: defaults
/// @return       whether at least `smoothSparseMinPts` rows were kept. False also for an empty list, fewer columns than
///               five and fewer rows than `smoothSparseMinPts`
///
/// `std::invalid_argument`, with `out` as it was: rows of fewer than 20 bytes. The same input gives the same
/// rows on every call: the random trees of the search are seeded, and the caller's generator goes on undisturbed.
/// (Lists shorter than the default of `smoothSparseMinPts` can be an exception in the neighbourhood mode: OpenCV's
/// search forgets fewer of its branches once the thread has searched a longer list.) Any number of threads on their own
/// outputs.
MIREL_API bool smoothSparse3D(const cv::Mat& in, cv::Mat& out, SmartPtr<AttrContainer> attrs);

}  // namespace MirelAlgorithms
