/// Settings of the library as the command line gives them: `--set KEY=VALUE`.
#pragma once

#include <MirelAlgorithms/Host.h>
#include <MirelAlgorithms/SettingsCatalogue.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace mirel {

/// UTF-8 of a wide text.
std::string narrow(const std::wstring& text);

/// "bool", "int", "double" or "text".
std::string typeName(const MirelAlgorithms::SettingValue& value);

/// The value as `--set` takes it.
std::string valueText(const MirelAlgorithms::SettingValue& value);

nlohmann::json valueJson(const MirelAlgorithms::SettingValue& value);

/// The settings of one run: what was set by hand over the library's defaults.
class Settings {
 public:
  /// @param assignments  "KEY=VALUE" each; the last one of a key counts
  ///
  /// Throws `UsageError` for an unknown key (naming the nearest one) and for a value of another type.
  explicit Settings(const std::vector<std::string>& assignments);

  bool isSet(const std::string& key) const { return changed_.contains(key); }

  /// Sets a key as the tool wants it, without check.
  void set(const std::string& key, MirelAlgorithms::SettingValue value) { changed_[key] = std::move(value); }

  /// The container that the library's operations take.
  MirelAlgorithms::SmartPtr<MirelAlgorithms::AttrContainer> container() const;

  /// The integer that `operation` gets for a key of its own.
  int integer(const std::string& key, const std::string& operation) const;

  /// The same for a double.
  double number(const std::string& key, const std::string& operation) const;

  /// Every key that operations whose name starts with `operations` read, with type, value, default and `changed`.
  nlohmann::json inForce(const std::string& operations) const;

  /// Keys that were set although no such operation reads them.
  std::vector<std::string> unread(const std::string& operations) const;

 private:
  MirelAlgorithms::SettingValue value(const std::string& key, const std::string& operation) const;

  std::map<std::string, MirelAlgorithms::SettingValue> changed_;
};

}  // namespace mirel
