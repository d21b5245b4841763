/// How an operation reads its settings, and how the catalogue lists them: each key is written once.
///
/// An operation keeps its settings in a plain record with one function that names every key, in reading order:
///
///     struct SmootherSettings {
///       int radius;
///       template <class Key>
///       void keys(Key& key) {
///         key(L"smoothRadius", radius, 5, "window side, pixels");
///       }
///     };
///     const auto settings = readSettings<SmootherSettings>(container);
#pragma once

#include <MirelAlgorithms/Host.h>
#include <MirelAlgorithms/SettingsCatalogue.h>

namespace MirelAlgorithms {

/// Fills the fields of a record from a settings container; a null container gives the defaults.
class SettingsReader {
 public:
  explicit SettingsReader(const SmartPtr<AttrContainer>& container) : container_(container) {}

  template <class T>
  void operator()(const wchar_t* key, T& value, const T& fallback, const char* /*meaning*/) {
    value = MirelCore::get(container_, String(key), fallback);
  }
  void operator()(const wchar_t* key, String& value, const wchar_t* fallback, const char* /*meaning*/) {
    value = MirelCore::get(container_, String(key), fallback);
  }

 private:
  const SmartPtr<AttrContainer>& container_;
};

/// Appends the keys of a record to a list.
class SettingsLister {
 public:
  SettingsLister(std::vector<SettingInfo>& list, const char* readBy) : list_(list), readBy_(readBy) {}

  template <class T>
  void operator()(const wchar_t* key, T& /*value*/, const T& fallback, const char* meaning) {
    list_.push_back({key, fallback, meaning, readBy_});
  }
  void operator()(const wchar_t* key, String& /*value*/, const wchar_t* fallback, const char* meaning) {
    list_.push_back({key, std::wstring(fallback), meaning, readBy_});
  }

 private:
  std::vector<SettingInfo>& list_;
  const char* readBy_;
};

/// The record as the container has it, read key by key in the order of its `keys`.
template <class Record>
Record readSettings(const SmartPtr<AttrContainer>& container) {
  Record record;
  SettingsReader reader(container);
  record.keys(reader);
  return record;
}

/// Appends the record's keys to `list`, marked as read by `operation`.
template <class Record>
void listSettings(std::vector<SettingInfo>& list, const char* operation) {
  Record record;
  SettingsLister lister(list, operation);
  record.keys(lister);
}

}  // namespace MirelAlgorithms
