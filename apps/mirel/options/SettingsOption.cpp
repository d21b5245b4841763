#include "options/SettingsOption.h"

#include "Errors.h"
#include "options/NearestName.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <filesystem>

namespace mirel {

using MirelAlgorithms::SettingInfo;
using MirelAlgorithms::settingsCatalogue;
using MirelAlgorithms::SettingValue;

namespace {

template <class Number>
bool parseNumber(const std::string& text, Number& value) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end;
}

bool parse(const std::string& text, bool& value) {
  if (text != "true" && text != "false") return false;
  value = text == "true";
  return true;
}

bool parse(const std::string& text, int& value) {
  if (!text.starts_with("0x")) return parseNumber(text, value);
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data() + 2, end, value, 16);
  return error == std::errc() && stop == end && text[2] != '-';
}

bool parse(const std::string& text, double& value) { return parseNumber(text, value) && std::isfinite(value); }

bool parse(const std::string& text, std::wstring& value) {
  try {
    value = std::filesystem::path(std::u8string(text.begin(), text.end())).wstring();
    return true;
  } catch (const std::exception&) {  // not UTF-8
    return false;
  }
}

const char* expectation(const SettingValue& value) {
  constexpr const char* texts[] = {"true or false", "a whole number of 32 bits", "a number", "text in UTF-8"};
  return texts[value.index()];
}

/// The value that `text` stands for, of the same type as `fallback`.
SettingValue parseValue(const std::string& key, const std::string& text, SettingValue fallback) {
  const bool fits = std::visit([&](auto& value) { return parse(text, value); }, fallback);
  if (!fits) throw UsageError(fmt::format("--set {}: '{}' given, {} expected", key, text, expectation(fallback)));
  return fallback;
}

using MirelAlgorithms::AttrContainer;
using MirelAlgorithms::String;

void store(AttrContainer& container, const String& key, const std::wstring& value) {
  container.set(key, value.c_str());
}
void store(AttrContainer& container, const String& key, auto value) { container.set(key, value); }

std::vector<std::string> allKeys(const std::vector<SettingInfo>& catalogue) {
  std::vector<std::string> keys;
  keys.reserve(catalogue.size());
  for (const SettingInfo& info : catalogue) keys.push_back(narrow(info.key));
  return keys;
}

}  // namespace

std::string narrow(const std::wstring& text) { return MirelAlgorithms::String(text.c_str()).stringAnsi(); }

std::string typeName(const SettingValue& value) {
  constexpr const char* names[] = {"bool", "int", "double", "text"};
  return names[value.index()];
}

std::string valueText(const SettingValue& value) {
  struct Text {
    std::string operator()(bool v) const { return v ? "true" : "false"; }
    std::string operator()(int v) const { return fmt::format("{}", v); }
    std::string operator()(double v) const { return fmt::format("{}", v); }
    std::string operator()(const std::wstring& v) const { return narrow(v); }
  };
  return std::visit(Text{}, value);
}

nlohmann::json valueJson(const SettingValue& value) {
  struct Json {
    nlohmann::json operator()(bool v) const { return v; }
    nlohmann::json operator()(int v) const { return v; }
    nlohmann::json operator()(double v) const { return v; }
    nlohmann::json operator()(const std::wstring& v) const { return narrow(v); }
  };
  return std::visit(Json{}, value);
}

Settings::Settings(const std::vector<std::string>& assignments) {
  const std::vector<SettingInfo> catalogue = settingsCatalogue();
  for (const std::string& assignment : assignments) {
    const std::size_t equals = assignment.find('=');
    if (equals == std::string::npos) throw UsageError("--set: '" + assignment + "' given, KEY=VALUE expected");
    const std::string key = assignment.substr(0, equals);
    const auto info = std::find_if(catalogue.begin(), catalogue.end(),
                                   [&](const SettingInfo& candidate) { return narrow(candidate.key) == key; });
    if (info == catalogue.end()) {
      const std::string hint = didYouMean(key, allKeys(catalogue));
      throw UsageError("--set: unknown key '" + key + "'" + (hint.empty() ? "; see: mirel settings" : hint));
    }
    changed_[key] = parseValue(key, assignment.substr(equals + 1), info->fallback);
  }
}

MirelAlgorithms::SmartPtr<MirelAlgorithms::AttrContainer> Settings::container() const {
  MirelAlgorithms::SmartPtr<MirelAlgorithms::AttrContainer> container(new MirelAlgorithms::AttrContainer());
  for (const SettingInfo& info : settingsCatalogue()) {
    const auto entry = changed_.find(narrow(info.key));
    if (entry == changed_.end()) continue;
    const String key(info.key.c_str());
    std::visit([&](const auto& value) { store(*container, key, value); }, entry->second);
  }
  return container;
}

int Settings::integer(const std::string& key, const std::string& operation) const {
  return std::get<int>(value(key, operation));
}

double Settings::number(const std::string& key, const std::string& operation) const {
  return std::get<double>(value(key, operation));
}

SettingValue Settings::value(const std::string& key, const std::string& operation) const {
  if (const auto entry = changed_.find(key); entry != changed_.end()) return entry->second;
  for (const SettingInfo& info : settingsCatalogue()) {
    if (narrow(info.key) == key && info.readBy == operation) return info.fallback;
  }
  throw std::logic_error("no setting " + key + " of " + operation);
}

nlohmann::json Settings::inForce(const std::string& operations) const {
  nlohmann::json list = nlohmann::json::array();
  for (const SettingInfo& info : settingsCatalogue()) {
    if (!info.readBy.starts_with(operations)) continue;
    const std::string key = narrow(info.key);
    const auto entry = changed_.find(key);
    const SettingValue& value = entry == changed_.end() ? info.fallback : entry->second;
    list.push_back({{"key", key},
                    {"type", typeName(value)},
                    {"value", valueJson(value)},
                    {"default", valueJson(info.fallback)},
                    {"changed", value != info.fallback},
                    {"meaning", info.meaning},
                    {"read_by", info.readBy}});
  }
  return list;
}

std::vector<std::string> Settings::unread(const std::string& operations) const {
  std::vector<std::string> keys;
  const nlohmann::json list = inForce(operations);
  for (const auto& [key, value] : changed_) {
    const bool read =
        std::any_of(list.begin(), list.end(), [&key = key](const auto& row) { return row["key"] == key; });
    if (!read) keys.push_back(key);
  }
  return keys;
}

}  // namespace mirel
