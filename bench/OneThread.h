/// One thread for the library and for OpenCV, as long as the object lives.
#pragma once

#include <tbb/global_control.h>

#include <opencv2/core/utility.hpp>

namespace bench {

class OneThread {
 public:
  OneThread() : limit_(tbb::global_control::max_allowed_parallelism, 1) { cv::setNumThreads(1); }

 private:
  tbb::global_control limit_;
};

}  // namespace bench
