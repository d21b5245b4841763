#include <MirelAlgorithms/features/FixedPointCorners.h>
#include <MirelAlgorithms/features/internal/CandidateSearch.h>
#include <MirelAlgorithms/features/internal/CellSelection.h>
#include <MirelAlgorithms/features/internal/Enhancement.h>
#include <MirelAlgorithms/features/internal/FeatureMatrix.h>
#include <MirelAlgorithms/features/internal/FixedPointResponse.h>
#include <MirelAlgorithms/features/internal/MatrixDump.h>
#include <MirelAlgorithms/features/internal/RowBands.h>
#include <MirelAlgorithms/frame/internal/Require.h>

#include <algorithm>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <string>
#include <utility>

namespace MirelAlgorithms {
namespace {

constexpr const char* function = "retrieveFeaturesFPGA";
constexpr int largestBlock = 255;
constexpr int largestAperture = 31;

/// All settings of a run.
struct CornerSettings {
  ResponseSettings response;
  std::optional<FixedPointStages> stages;  ///< on the fixed-point path only
  DumpSettings dump;
  SearchSettings search;
};

/// Matrix that keeps its memory from call to call of one thread. On loan during a call: a thread that waits for other
/// threads inside it may be given another call.
class KeptMatrix {
 public:
  KeptMatrix() : matrix(std::exchange(kept_, cv::Mat())) {}
  ~KeptMatrix() { kept_ = matrix; }
  KeptMatrix(const KeptMatrix&) = delete;
  KeptMatrix& operator=(const KeptMatrix&) = delete;

  cv::Mat matrix;

 private:
  static thread_local cv::Mat kept_;
};
thread_local cv::Mat KeptMatrix::kept_;

/// Apertures of OpenCV's derivative filters: odd ones, and the Scharr operator for 0 and below.
void requireAperture(int aperture) {
  if (aperture > 0 && (aperture % 2 == 0 || aperture > largestAperture))
    refuse(function, "FBMSobelSize", std::to_string(aperture), "odd number up to 31");
}

CornerSettings readUsableSettings(const SmartPtr<AttrContainer>& container) {
  CornerSettings settings;
  settings.response = readSettings<ResponseSettings>(container);
  requireRange(function, "FBMBlockSize", settings.response.blockSize, 1, largestBlock);
  if (settings.response.fixedPoint) {
    settings.stages = fixedPointStages(settings.response, readSettings<StageSettings>(container));
    settings.dump = settings.stages->width.dump;
  } else {
    requireAperture(settings.response.sobelSize);
    settings.dump = readSettings<DumpSettings>(container);
  }
  settings.search = readSettings<SearchSettings>(container);
  requireRange(function, "FBMnCells", settings.search.cells, 1, (std::numeric_limits<int>::max)());
  return settings;
}

cv::Mat workImage(const cv::Mat& image, const ResponseSettings& settings) {
  cv::Mat result = enhanced(image, settings.enhancement);
  requireGrey8(function, "enhanced image", result);
  if (result.isSubmatrix()) result = result.clone();  // filters must not see what lies around it
  if (!settings.median) return result;
  cv::Mat filtered;  // the host may share the memory of what it returned
  cv::medianBlur(result, filtered, 3);
  return filtered;
}

float largestElement(const cv::Mat& map) {
  std::vector<float> columns(map.cols, -std::numeric_limits<float>::infinity());
  for (int y = 0; y < map.rows; ++y) {
    const float* row = map.ptr<float>(y);
    for (int x = 0; x < map.cols; ++x) columns[x] = row[x] > columns[x] ? row[x] : columns[x];
  }
  return *std::max_element(columns.begin(), columns.end());
}

/// Response map as it comes out of its last stage, CV_32FC1 or CV_32SC1; returns its largest value.
double makeResponse(const cv::Mat& image, const CornerSettings& settings, cv::Mat& map) {
  if (settings.stages) return cornerMinEigenValFpga(image, *settings.stages, map);
  cv::cornerMinEigenVal(image, map, settings.response.blockSize, settings.response.sobelSize, cv::BORDER_REFLECT_101);
  return largestElement(map);
}

void dump(const cv::Mat& map, const CornerSettings& settings) {
  cv::Mat values;
  map.convertTo(values, CV_32F);
  const char* name = settings.stages ? "eigenVals_q.txt" : "eigenVals_f.txt";
  cvMatToTxt(values, settings.dump.prefix.stringAnsi() + name);
}

/// The map times a factor, CV_32FC1 in memory of its own.
cv::Mat scaled(const cv::Mat& map, double factor) {
  cv::Mat result(map.size(), CV_32FC1);
  RowBands(0, map.rows).forEach([&](int, int begin, int end) {
    for (int y = begin; y < end; ++y)
      if (map.depth() == CV_32F)
        scaleRow(map.ptr<float>(y), result.ptr<float>(y), map.cols, factor);
      else
        scaleRow(map.ptr<int>(y), result.ptr<float>(y), map.cols, factor);
  });
  return result;
}

cv::Mat select(const std::vector<cv::KeyPoint>& candidates, const cv::Size& image, const SearchSettings& settings) {
  const CellGrid grid{settings.cells, image.height, image.width};
  const std::int64_t budget = settings.budget;
  const double threshold = settings.autoThreshold ? automaticThreshold(candidates, grid, 8 * budget) : 0.0;
  return toFeatureMatrix(selectPerCell(candidates, grid, budget, threshold));
}

/// Features of a response map times a factor; that product is handed out where `normalised` is not null.
cv::Mat featuresOf(const cv::Mat& response, double factor, const SearchSettings& settings, cv::Mat* normalised) {
  const MaximumTest test = maximumTest(settings.maximumTest);
  if (!normalised && response.depth() == CV_32F && factor > 0.0)  // the search scales what it needs
    return select(findCandidates(response, factor, test), response.size(), settings);
  const cv::Mat map = scaled(response, factor);
  if (normalised) *normalised = map;
  return select(findCandidates(map, 1.0, test), map.size(), settings);
}

}  // namespace

bool retrieveFeaturesFPGA(const cv::Mat& image, cv::Mat& features, SmartPtr<AttrContainer> settings,
                          std::shared_ptr<cv::Mat> eigenImage) {
  requireGrey8(function, "image", image);
  const CornerSettings corner = readUsableSettings(settings);

  const cv::Mat work = workImage(image, corner.response);
  KeptMatrix response;
  const double largest = makeResponse(work, corner, response.matrix);
  if (corner.search.dumpResponse) dump(response.matrix, corner);

  cv::Mat found, map;
  if (largest != 0.0)
    found = featuresOf(response.matrix, 1.0 / largest, corner.search, eigenImage ? &map : nullptr);
  else if (eigenImage)  // a flat image has no maximum to divide by, and no corners
    map = cv::Mat::zeros(work.size(), CV_32FC1);

  features = found;
  if (eigenImage) *eigenImage = map;
  return true;
}

}  // namespace MirelAlgorithms
