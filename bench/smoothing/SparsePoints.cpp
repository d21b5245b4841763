// Smoothing of point lists beside bare searches, nanoflann and the filters of the Point Cloud Library.
#include <MirelAlgorithms/smoothing/SparsePoints.h>
#include <benchmark/benchmark.h>

#include <cmath>
#include <opencv2/flann.hpp>
#include <string>
#if MIREL_BENCH_NANOFLANN
#include <nanoflann.hpp>
#endif
#if MIREL_BENCH_PCL
#include <pcl/filters/radius_outlier_removal.h>
#include <pcl/filters/statistical_outlier_removal.h>
#include <pcl/filters/voxel_grid.h>
#endif

#include "OneThread.h"
#include "smoothing/Inputs.h"

namespace {

using namespace MirelAlgorithms;

constexpr int mostNeighbours = 10, fewestNeighbours = 6;
constexpr float squaredRadius = 0.1f;
constexpr int rowsPerCell = 20;

void smoothed(benchmark::State& state, int rows, int mode) {
  const SmartPtr<AttrContainer> settings(new AttrContainer());
  settings->set(L"smoothSparseMode", mode);
  settings->set(L"smoothSparseMaxPts", rows / rowsPerCell);
  const cv::Mat points = bench::pointList(rows);
  cv::Mat out;
  for (auto _ : state) smoothSparse3D(points, out, settings);
  state.counters["kept"] = out.rows;
}

// Builds the trees and searches them with the same parameters, and no more.
void bareSearches(benchmark::State& state, int rows) {
  using Distance = cvflann::L2<float>;
  cv::Mat positions = bench::pointList(rows).colRange(2, 4).clone();
  for (auto _ : state) {
    cv::theRNG() = cv::RNG(0x12345678);
    const cvflann::Matrix<float> all(positions.ptr<float>(), static_cast<std::size_t>(rows), 2);
    cvflann::KDTreeIndex<Distance> index(all, cvflann::KDTreeIndexParams(4));
    index.buildIndex();
    const cvflann::SearchParams search(32, 0.0f, true);
    int found[mostNeighbours], sum = 0;
    float distances[mostNeighbours];
    cvflann::Matrix<int> neighbours(found, 1, mostNeighbours);
    cvflann::Matrix<float> squares(distances, 1, mostNeighbours);
    for (int i = 0; i < rows; ++i)
      sum += index.radiusSearch(cvflann::Matrix<float>(positions.ptr<float>(i), 1, 2), neighbours, squares,
                                squaredRadius, search);
    benchmark::DoNotOptimize(sum);
  }
}

#if MIREL_BENCH_NANOFLANN
struct Positions {
  cv::Mat columns;
  std::size_t kdtree_get_point_count() const { return static_cast<std::size_t>(columns.rows); }
  float kdtree_get_pt(std::size_t row, std::size_t column) const {
    return columns.ptr<float>(static_cast<int>(row))[column];
  }
  template <class Box>
  bool kdtree_get_bbox(Box&) const {
    return false;
  }
};

// The ten nearest, exactly, of which those within the radius count.
void nanoflannSearches(benchmark::State& state, int rows) {
  using Tree = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<float, Positions>, Positions, 2>;
  const Positions positions{bench::pointList(rows).colRange(2, 4).clone()};
  for (auto _ : state) {
    Tree tree(2, positions, nanoflann::KDTreeSingleIndexAdaptorParams(10));
    unsigned found[mostNeighbours];
    float distances[mostNeighbours];
    int sum = 0;
    for (int i = 0; i < rows; ++i) {
      const auto count = tree.knnSearch(positions.columns.ptr<float>(i), mostNeighbours, found, distances);
      for (std::size_t k = 0; k < count; ++k) sum += distances[k] <= squaredRadius;
    }
    benchmark::DoNotOptimize(sum);
  }
}
#endif

#if MIREL_BENCH_PCL
using Cloud = pcl::PointCloud<pcl::PointXYZ>;

Cloud::Ptr cloudOf(const cv::Mat& points, int x, int y) {
  const Cloud::Ptr cloud(new Cloud);
  for (int i = 0; i < points.rows; ++i) cloud->emplace_back(points.at<float>(i, x), points.at<float>(i, y), 0.0f);
  return cloud;
}

template <class Filter>
void filtered(benchmark::State& state, Filter& filter, const Cloud::Ptr& cloud) {
  filter.setInputCloud(cloud);
  Cloud out;
  for (auto _ : state) filter.filter(out);
  state.counters["kept"] = static_cast<double>(out.size());
}

void radiusOutliers(benchmark::State& state, int rows) {
  pcl::RadiusOutlierRemoval<pcl::PointXYZ> filter;
  filter.setRadiusSearch(std::sqrt(squaredRadius));
  filter.setMinNeighborsInRadius(fewestNeighbours - 1);
  filtered(state, filter, cloudOf(bench::pointList(rows), 2, 3));
}

void statisticalOutliers(benchmark::State& state, int rows) {
  pcl::StatisticalOutlierRemoval<pcl::PointXYZ> filter;
  filter.setMeanK(mostNeighbours);
  filtered(state, filter, cloudOf(bench::pointList(rows), 2, 3));
}

// Square cells, as many as the grid modes are asked for.
void voxelGrid(benchmark::State& state, int rows) {
  pcl::VoxelGrid<pcl::PointXYZ> filter;
  const float side = std::sqrt(6.0f * 4.0f / static_cast<float>(rows / rowsPerCell));
  filter.setLeafSize(side, side, 1.0f);
  filtered(state, filter, cloudOf(bench::pointList(rows), 0, 1));
}
#endif

struct Size {
  const char* name;
  int rows;
  bool once;  ///< searches take too long to be repeated
};

template <class... Arguments>
void add(const char* name, const Size& size, bool once, Arguments... arguments) {
  auto* added = benchmark::RegisterBenchmark((std::string(name) + size.name).c_str(), arguments...);
  added->Unit(benchmark::kMillisecond);
  if (once) added->Repetitions(1);
}

[[maybe_unused]] const bool registered = [] {
  for (const Size& size : {Size{"1e4", 10000, false}, {"1e5", 100000, false}, {"1e6", 1000000, true}}) {
    add("points_median/", size, size.once, smoothed, size.rows, 0x2000);
    add("points_bare_searches/", size, size.once, bareSearches, size.rows);
    add("points_grid/", size, false, smoothed, size.rows, 0x3000);
    add("points_grid_second/", size, false, smoothed, size.rows, 0x4000);
#if MIREL_BENCH_NANOFLANN
    add("points_nanoflann/", size, size.once, nanoflannSearches, size.rows);
#endif
#if MIREL_BENCH_PCL
    add("pcl_radius_outliers/", size, size.once, radiusOutliers, size.rows);
    add("pcl_statistical_outliers/", size, size.once, statisticalOutliers, size.rows);
    add("pcl_voxel_grid/", size, false, voxelGrid, size.rows);
#endif
  }
  return true;
}();

}  // namespace
