/// What tests of detection and of description share.
#pragma once

#include <support/SettingsOf.h>
#include <support/Xfeatures2d.h>
