#include <MirelAlgorithms/SettingsCatalogue.h>
#include <MirelAlgorithms/frame/internal/Settings.h>

namespace MirelAlgorithms {

std::vector<SettingInfo> settingsCatalogue() {
  std::vector<SettingInfo> list;
  return list;
}

}  // namespace MirelAlgorithms
