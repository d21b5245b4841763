/// Whether a picture can be shown.
#pragma once

namespace MirelAlgorithms {

/// Whether windows can be opened. OpenCV's windows by Qt end the process where there is no display, so it has to be
/// asked before. Always true on systems other than Linux.
bool hasDisplay();

}  // namespace MirelAlgorithms
