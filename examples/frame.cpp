// Settings by name, what a call logs, and how long it takes.
#include <MirelAlgorithms/MirelAlgorithms.h>
#include <MirelCore/MirelCore.h>

#include <cstdio>
#include <opencv2/core.hpp>

using namespace MirelAlgorithms;

int main() {
  const BuildInfo build = buildInfo();
  std::printf("version %s, OpenCV %s, %s\n", build.version, build.openCV, build.instructions);

  // Every key with its default and the operation that reads it.
  for (const SettingInfo& setting : settingsCatalogue())
    if (setting.readBy == "smoothDenseZ16") std::printf("%ls: %s\n", setting.key.c_str(), setting.meaning.c_str());

  // The library is silent unless a level is set. 1 is urgent, 1000 is chatty.
  MirelCore::setLogLevel(1000);
  int lines = 0;
  MirelCore::setLogSink([&lines](const MirelCore::LogRecord& record) {
    ++lines;
    std::printf("log, level %d, %s: %ls\n", record.level, record.function, record.message.c_str());
  });

  const SmartPtr<AttrContainer> settings(new AttrContainer());
  settings->set(L"FBMFpgaQuantized", true);
  settings->set(L"FBMnFeatures", 400);  // an int; 400.0 would be another type, and the default would be taken

  cv::Mat image(480, 640, CV_8UC1), features;
  cv::RNG(1).fill(image, cv::RNG::UNIFORM, 0, 256);
  const double start = timestamp();
  retrieveFeaturesFPGA(image, features, settings, nullptr);
  std::printf("%d features in %.1f ms\n", features.rows, 1000.0 * (timestamp() - start));

  MirelCore::setLogSink({});
  try {
    retrieveFeaturesFPGA(cv::Mat(), features, settings, nullptr);
  } catch (const std::invalid_argument& error) {
    std::printf("refused: %s\n", error.what());
  }
  return features.rows > 0 && lines > 0 ? 0 : 1;
}
