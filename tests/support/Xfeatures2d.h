/// Whether OpenCV's xfeatures2d module is there (LATCH, FREAK).
#pragma once

#if __has_include(<opencv2/xfeatures2d.hpp>)
#include <opencv2/xfeatures2d.hpp>
#define WITH_XFEATURES2D 1
#else
#define WITH_XFEATURES2D 0
#endif
