#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/matching/internal/CircleSearch.h>
#include <MirelAlgorithms/matching/internal/CircleSearchLoops.h>

namespace MirelAlgorithms {
namespace {

CircleSearchLoop loopFor(std::size_t words) {
  switch (cpuVariant()) {
    case CpuVariant::avx512:
      return circleSearchAvx512(words);
    case CpuVariant::avx2:
      return circleSearchAvx2(words);
    default:
      return circleSearchBaseline(words);
  }
}

}  // namespace

CircleSearch::CircleSearch(const cv::Mat& descriptors, const FeatureBlocks& features, std::uint16_t maxDistance)
    : descriptors_(descriptors),
      features_(features),
      maxDistance_(maxDistance),
      search_(loopFor(features.words)),
      list_(features.boxes.size() * blockSize),
      distances_(features.blocks()) {}

BestTwo CircleSearch::measure(std::size_t i, const FBPrediction& circle, ColumnMinima& columns) {
  return search(i, circle, nullptr, &columns);
}

BestTwo CircleSearch::searchAgain(std::size_t i, const FBPrediction& circle, const FBPrediction& measured) {
  return search(i, circle, &measured, nullptr);
}

BestTwo CircleSearch::search(std::size_t i, const FBPrediction& circle, const FBPrediction* measured,
                             ColumnMinima* columns) {
  if (features_.words == 0) return {};  // nothing can be measured
  const unsigned char* descriptor = descriptors_.ptr(static_cast<int>(i));
  return search_({features_, descriptor, circle, measured, columns, maxDistance_, list_.data(), distances_.data()});
}

}  // namespace MirelAlgorithms
