/// Every key that the library reads from a settings container.
#pragma once

#include <MirelAlgorithms/Export.h>

#include <string>
#include <variant>
#include <vector>

namespace MirelAlgorithms {

/// Value of a setting; the alternative that is held is the setting's type.
using SettingValue = std::variant<bool, int, double, std::wstring>;

/// One key as one operation reads it. Several operations may read the same key, each with a default of its own.
struct SettingInfo {
  std::wstring key;       ///< as it is written in the container, case-sensitive
  SettingValue fallback;  ///< value when the container has no such key of exactly this type
  std::string meaning;    ///< one line
  std::string readBy;     ///< the operation that reads it
};

/// All settings, operation by operation, each operation's keys in the order in which it reads them.
/// Built on each call. Any number of threads.
MIREL_API std::vector<SettingInfo> settingsCatalogue();

}  // namespace MirelAlgorithms
