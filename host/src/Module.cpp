#include <VoskBase/Module.h>

namespace VoskBase {

bool Module::internalInit(InstanceHandle /*instance*/) {
  initialised_ = true;
  return true;
}

void Module::internalTerm() { initialised_ = false; }

}  // namespace VoskBase
