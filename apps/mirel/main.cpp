/// The command line tool.
#include "CommandLine.h"
#include "output/Interrupt.h"
#include "output/StandardStreams.h"

#include <opencv2/core/utils/logger.hpp>

int main(int argc, char** argv) {
  mirel::keepStandardStreams();
  mirel::watchInterrupts();
  cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
  return mirel::runCommandLine({argv + 1, argv + argc});
}
