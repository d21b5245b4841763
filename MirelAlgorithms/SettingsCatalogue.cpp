#include <MirelAlgorithms/SettingsCatalogue.h>
#include <MirelAlgorithms/features/internal/CellBalancedDetection.h>
#include <MirelAlgorithms/features/internal/CornerSettings.h>
#include <MirelAlgorithms/features/internal/DescriptorSettings.h>
#include <MirelAlgorithms/features/internal/ExtractionSettings.h>
#include <MirelAlgorithms/frame/internal/Settings.h>
#include <MirelAlgorithms/smoothing/internal/SmoothingSettings.h>
#include <MirelAlgorithms/texture/internal/TextureSettings.h>

namespace MirelAlgorithms {

std::vector<SettingInfo> settingsCatalogue() {
  std::vector<SettingInfo> list;
  listSettings<ExtractionSettings>(list, "retrieveFeatures");
  listSettings<DetectorChoice>(list, "retrieveFeatures");
  listSettings<DetectionSettings>(list, "retrieveFeatures, detection in cells");
  listSettings<LatchSettings>(list, "retrieveFeatures, key points");
  listSettings<ResponseSettings>(list, "retrieveFeaturesFPGA");
  listSettings<StageSettings>(list, "retrieveFeaturesFPGA");
  listSettings<SearchSettings>(list, "retrieveFeaturesFPGA");
  listSettings<DescriptorSettings>(list, "retrieveDescriptors");
  listSettings<DenseSettings>(list, "smoothDenseZ16");
  listSettings<SparseSettings>(list, "smoothSparse3D");
  listSettings<TextureOrbSettings>(list, "textureExtract, textureMatch");
  listSettings<TextureExtractionSettings>(list, "textureExtract");
  listSettings<TextureMatchSettings>(list, "textureMatch");
  listSettings<TextureDrawSettings>(list, "textureExtractAndMatch");
  listSettings<MultiMatchSettings>(list, "textureMultiMatch");
  return list;
}

}  // namespace MirelAlgorithms
