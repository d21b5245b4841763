/// ORB descriptors (Rublee, Rabaud, Konolige, Bradski: ORB: an efficient alternative to SIFT or SURF, ICCV 2011) whose
/// sampling pattern is turned and stretched by the key point: the caller chooses the scale, there is no image pyramid.
///
///     MirelAlgorithms::MirelScalingORB orb(image);
///     const cv::Mat descriptors = orb.getDescriptors(keyPoints);
#pragma once

#include <MirelAlgorithms/Export.h>

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

/// 256-bit descriptors of key points of one grey image.
///
/// A descriptor is 256 comparisons of two pixels each, at the point pairs that OpenCV's ORB uses for patches of 31 x 31
/// pixels. Comparison 8j + k is bit k (value 2^k) of byte j: 1 when the first pixel is darker than the second.
class MIREL_API MirelScalingORB {
 public:
  /// Takes the image to describe.
  ///
  /// @param image  8-bit grey. Its pixels are shared, not copied: descriptors see what is in them by then. An empty
  ///               matrix is taken, but describes no key points
  ///
  /// `std::invalid_argument`: an image of another kind.
  explicit MirelScalingORB(cv::Mat image);

  /// Describes key points. With c and s the cosine and sine of -angle, a = c * size and b = s * size, the pattern point
  /// (x, y) is sampled at
  ///
  ///     column rint(key point x) + rint(a * x - b * y)
  ///     row    rint(key point y) + rint(a * y + b * x)
  ///
  /// in single precision, ties to even. c and s are the double-precision functions rounded to single. The angle is used
  /// as it is stored: `cv::KeyPoint::angle` of OpenCV's detectors is in degrees and has to be turned into radians by
  /// the caller, and its sense too, as the pattern turns by -angle. A key point of size 1 samples a patch of 31 x 31
  /// pixels.
  ///
  /// Samples outside the image read the nearest pixel of its border: column and row are clamped one by one. Sizes of
  /// more than 1e30 or less than -1e30 count as those.
  ///
  /// @param keyPoints  position, size and angle are read. A negative size turns the pattern by half a turn
  /// @return           key points x 32, CV_8UC1, row i for key point i; 0 x 32 without key points
  ///
  /// `std::invalid_argument`: key points on an empty image; a position, size or angle that is not finite, with the
  /// index of the key point. Any number of threads, on the same object too.
  cv::Mat getDescriptors(const std::vector<cv::KeyPoint>& keyPoints) const;

  /// First bytes of the descriptor of a patch that is normalised already: the pattern is neither turned nor stretched,
  /// and its origin is the element at linear index rows * cols / 2, the middle of a patch with odd sides. With an even
  /// number of rows that element begins a row, and the columns left of it are the end of the row above.
  ///
  /// @param patch       8-bit grey, at least 31 x 31; may be a view of a larger image, of which nothing else is read
  /// @param descriptor  receives nBytes bytes
  /// @param nBytes      0 to 32
  ///
  /// `std::invalid_argument`, before anything is written: another kind of patch, null, another length. Any number of
  /// threads.
  static void getNormalizedPatchDescriptor(cv::Mat patch, unsigned char* descriptor, int nBytes);

 private:
  cv::Mat image_;
};

}  // namespace MirelAlgorithms
