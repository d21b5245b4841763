/// A host that notes what a library asks of it while it is loaded and unloaded, and refuses on demand.
#pragma once

#include <VoskBase/Export.h>
#include <windows.h>

#include <string>
#include <vector>

namespace recording {

struct Host {
  bool moduleAccepts = true;
  bool frameworkAccepts = true;
  std::vector<std::string> calls;
  std::vector<HINSTANCE> instances;  ///< given with the calls that carry one
};

HOST_API Host& host();

}  // namespace recording
