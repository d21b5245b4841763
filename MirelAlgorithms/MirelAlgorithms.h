/// Everything the library offers, and the host's headers with it.
#pragma once

#include <MirelAlgorithms/BuildInfo.h>
#include <MirelAlgorithms/Host.h>
#include <MirelAlgorithms/SettingsCatalogue.h>
#include <MirelAlgorithms/features/Descriptors.h>
#include <MirelAlgorithms/features/FeatureExtraction.h>
#include <MirelAlgorithms/features/FixedPointCorners.h>
#include <MirelAlgorithms/features/MirelScalingORB.h>
#include <MirelAlgorithms/filters/AccelIntegrator.h>
#include <MirelAlgorithms/filters/Butterworth.h>
#include <MirelAlgorithms/filters/MayhonyAHRS.h>
#include <MirelAlgorithms/filters/SavitzkyGolay.h>
#include <MirelAlgorithms/frame/Timestamp.h>
#include <MirelAlgorithms/geometry/Frustum.h>
#include <MirelAlgorithms/geometry/UnionFind.h>
#include <MirelAlgorithms/geometry/VisibilityCheck.h>
#include <MirelAlgorithms/matching/FeatureMatching.h>
#include <MirelAlgorithms/matching/FeaturePrediction.h>
#include <MirelAlgorithms/matching/Hamming.h>
#include <MirelAlgorithms/matching/LeastSquares.h>
#include <MirelAlgorithms/matching/MatchRecords.h>
#include <MirelAlgorithms/matching/MotionEstimate.h>
#include <MirelAlgorithms/matching/ValidationParams.h>
#include <MirelAlgorithms/smoothing/DenseDepth.h>
#include <MirelAlgorithms/smoothing/SparsePoints.h>
