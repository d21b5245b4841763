/// What tests of detection and of description share.
#pragma once

#include <support/SettingsOf.h>

#if __has_include(<opencv2/xfeatures2d.hpp>)
#include <opencv2/xfeatures2d.hpp>
#define WITH_XFEATURES2D 1
#else
#define WITH_XFEATURES2D 0
#endif
