/// Corners by a minimum-eigenvalue pipeline whose every stage repeats the integer arithmetic of a hardware detector.
///
///     auto settings = SmartPtr<AttrContainer>(new AttrContainer());
///     settings->set(L"FBMFpgaQuantized", true);
///     cv::Mat features;
///     retrieveFeaturesFPGA(image, features, settings, nullptr);
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <memory>
#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

/// Corners of a grey image, strongest first, spread over a grid of image cells.
///
/// The image is enhanced, and turned into a response map: the smaller eigenvalue of the sums of gradient products over
/// blocks of FBMBlockSize pixels (Shi and Tomasi, Good Features to Track, 1994), divided by its maximum. It is computed
/// in floating point (`cv::cornerMinEigenVal`) or, with FBMFpgaQuantized, in fixed point with the bit widths of the
/// settings. Isolated maxima of the map become candidates, refined by a quadratic fit to 5x5 values. Of these each of
/// FBMnCells x FBMnCells cells gets at most FBMnFeatures / FBMnCells / FBMnCells (integer divisions), strongest first.
///
/// @param image       8-bit, one channel, any size; a view of a larger image is fine. Nothing is found within 8 pixels
///                    of the edges.
/// @param features    released; then N x 1, CV_32FC(5): x, y in pixels (column, row; centre of the first pixel: 0),
///                    size (15), angle (curvature of the fit along x, scaled so that the largest magnitude of all
///                    candidates is 180), response (largest of all candidates: 1). Empty when nothing is found.
/// @param settings    keys and defaults: `settingsCatalogue`, operation "retrieveFeaturesFPGA"; null: all defaults
/// @param eigenImage  null, or a matrix that becomes the divided response map: CV_32FC1, size of the image. All zeros
///                    for a flat image.
/// @return            true, also when nothing is found
///
/// Exceptions, before anything is written: `std::invalid_argument` for another kind of image, cells or bit widths below
/// 1 (FBMEigenValWidthIn: 2) or beyond what can be computed, blocks outside 1 to 255 pixels, apertures that OpenCV does
/// not have; `std::runtime_error` for an aperture other than 3 and 5 with FBMFpgaQuantized. `std::runtime_error` as
/// well when a dump file cannot be opened. `features` changes only on success.
///
/// Equal responses are ordered by y, then x. Bands of rows run on oneTBB; the result does not depend on the number of
/// threads or the instruction set. Any number of threads, each with its own outputs; each keeps the memory of one
/// response map (4 bytes a pixel) for its next call.
MIREL_API bool retrieveFeaturesFPGA(const cv::Mat& image, cv::Mat& features, SmartPtr<AttrContainer> settings,
                                    std::shared_ptr<cv::Mat> eigenImage);

}  // namespace MirelAlgorithms
