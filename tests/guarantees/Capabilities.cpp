#include "Capabilities.h"

#include <ostream>

namespace MirelAlgorithms {

const std::vector<Capability>& capabilities() {
  static const std::vector<Capability> all = [] {
    std::vector<Capability> joined;
    for (const auto& ofSubsystem :
         {frameCapabilities(), featuresCapabilities(), matchingCapabilities(), filtersCapabilities(),
          geometryCapabilities(), smoothingCapabilities(), textureCapabilities(), meshCapabilities()})
      joined.insert(joined.end(), ofSubsystem.begin(), ofSubsystem.end());
    return joined;
  }();
  return all;
}

std::ostream& operator<<(std::ostream& stream, const Capability& capability) { return stream << capability.name; }

}  // namespace MirelAlgorithms
