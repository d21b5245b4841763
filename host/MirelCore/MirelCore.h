/// All services of the host: settings, log, timing, image operations.
#pragma once

#include <MirelCore/FunctionTimer.h>
#include <MirelCore/Image.h>
#include <MirelCore/Log.h>
#include <MirelCore/Settings.h>
