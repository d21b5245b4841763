#include "texture/TextureImage.h"

#include "Errors.h"
#include "input/NotedInput.h"

#include <MirelAlgorithms/texture/TextureFeatures.h>

namespace mirel {

TextureImage readTextureImage(const std::string& file, int number, std::vector<InputFile>& inputs) {
  const std::string bytes = readInput(file, imageFile, inputs);
  return {number, shownName(file), decodeImage(file, bytes), {}, {}};
}

void extractTexture(TextureImage& image, const Settings& settings) {
  try {
    MirelAlgorithms::textureExtract(image.grey, image.points, image.descriptors, settings.container());
  } catch (const std::exception& error) {
    throw UsageError(image.name + ": " + oneLine(error));
  }
}

}  // namespace mirel
