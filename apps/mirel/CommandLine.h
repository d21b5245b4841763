/// The command line as a whole: from the arguments to the exit status.
#pragma once

#include <string>
#include <vector>

namespace mirel {

/// Runs what the arguments (without the program's name) ask for. Every failure is one line on standard error.
int runCommandLine(std::vector<std::string> arguments);

}  // namespace mirel
