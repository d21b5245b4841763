/// What the library's filters make of a recording.
#pragma once

#include "inertial/ImuRecording.h"

#include <opencv2/core/matx.hpp>
#include <vector>

namespace mirel {

struct ImuFilterOptions {
  float standstill = 0.04f;     ///< rad/s
  double low = 0.5, high = 40;  ///< of the band of acceleration, Hz
};

/// The band that fits a recording: the upper end is lowered to 0.45 times the rate where it is above. Throws
/// `UsageError` when nothing is left of it.
ImuFilterOptions fitBand(ImuFilterOptions options, double rate);

/// One entry per sample.
struct ImuEstimate {
  std::vector<cv::Vec4f> attitude;  ///< x, y, z, w; from the sensor to the world
  std::vector<cv::Vec3f> angles;    ///< of the attitude, Rx(a) Ry(b) Rz(c), rad
  std::vector<cv::Vec3f> gravity;   ///< the world's upward direction in the sensor's frame
  std::vector<char> standstill;     ///< turns slower than the threshold; the attitude is frozen
  std::vector<char> rest;           ///< part of a standstill of a quarter of a second, weighing what it should
  std::vector<cv::Vec3f> filtered;  ///< band of the acceleration in the sensor's frame, m/s2; 0 for 500 samples
  std::vector<cv::Vec3f> speed;     ///< in the world, m/s; 0 at rest
  std::vector<cv::Vec3f> position;  ///< in the world, m
  double weight;                    ///< magnitude of gravity: mean at rest, or else the standard one, m/s2
};

/// Runs MayhonyAHRS, ButterworthBandpass and AccelIntegrator over a recording.
///
/// The attitude takes the gyroscope's rate as motion, except that the first sample with any acceleration is always
/// taken, so that the attitude is aligned from there on. At rest the integrator starts anew from where it is; else it
/// gets the acceleration in the world's frame less `weight` upward.
ImuEstimate estimate(const ImuRecording& recording, const ImuFilterOptions& options);

}  // namespace mirel
