/// Standard input, output and error.
#pragma once

namespace mirel {

/// When the program was started with one of the three closed, the next file would take its place, and lines meant for
/// the terminal would go into that file. Puts something in the place that refuses every use.
void keepStandardStreams();

}  // namespace mirel
