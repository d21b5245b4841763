#include <MirelAlgorithms/matching/internal/ForwardPass.h>
#include <MirelAlgorithms/matching/internal/TracedLoop.h>

#include <tbb/enumerable_thread_specific.h>

namespace MirelAlgorithms {

ForwardPass::ForwardPass(const cv::Mat& descriptors1, const FeatureBlocks& features2, std::uint16_t maxDistance)
    : descriptors1_(descriptors1),
      features2_(features2),
      maxDistance_(maxDistance),
      best_(static_cast<std::size_t>(descriptors1.rows)),
      columns_(features2.blocks()) {}

void ForwardPass::measure(const std::vector<FBPrediction>& circles) {
  measured_ = circles;
  run(nullptr);
}

void ForwardPass::searchAgain(const std::vector<FBPrediction>& circles) { run(&circles); }

// One loop for both stages, so that its threads are logged once.
void ForwardPass::run(const std::vector<FBPrediction>* again) {
  tbb::enumerable_thread_specific<ColumnMinima> columns(features2_.blocks());
  tracedLoop("MirelAlgorithms::matchForward", best_.size(), [&](const FeatureRange& range) {
    CircleSearch candidates(descriptors1_, features2_, maxDistance_);
    ColumnMinima* own = again ? nullptr : &columns.local();
    for (std::size_t i = range.begin(); i != range.end(); ++i)
      best_[i] =
          again ? candidates.searchAgain(i, (*again)[i], measured_[i]) : candidates.measure(i, measured_[i], *own);
  });
  for (const ColumnMinima& part : columns) columns_.merge(part);
}

}  // namespace MirelAlgorithms
