#include <Brel/AttrContainer.h>
#include <MirelCore/Settings.h>

namespace Brel {

void AttrContainer::set(const VoskBase::String& key, bool value) { values_[key.c_str()] = value; }
void AttrContainer::set(const VoskBase::String& key, int value) { values_[key.c_str()] = value; }
void AttrContainer::set(const VoskBase::String& key, double value) { values_[key.c_str()] = value; }
void AttrContainer::set(const VoskBase::String& key, const wchar_t* value) {
  values_[key.c_str()] = VoskBase::String(value);
}

const AttrContainer::Value* AttrContainer::find(const VoskBase::String& key) const {
  const auto found = values_.find(key.c_str());
  return found == values_.end() ? nullptr : &found->second;
}

}  // namespace Brel

namespace MirelCore {
namespace {

using Settings = VoskBase::SmartPtr<Brel::AttrContainer>;

template <class T>
T valueOr(const Settings& settings, const VoskBase::String& key, const T& fallback) {
  const Brel::AttrContainer::Value* value = settings ? settings->find(key) : nullptr;
  const T* typed = value ? std::get_if<T>(value) : nullptr;
  return typed ? *typed : fallback;
}

}  // namespace

bool get(Settings settings, const VoskBase::String& key, const bool& fallback) {
  return valueOr(settings, key, fallback);
}
int get(Settings settings, const VoskBase::String& key, const int& fallback) {
  return valueOr(settings, key, fallback);
}
double get(Settings settings, const VoskBase::String& key, const double& fallback) {
  return valueOr(settings, key, fallback);
}
VoskBase::String get(Settings settings, const VoskBase::String& key, const wchar_t* fallback) {
  return valueOr(settings, key, VoskBase::String(fallback));
}

}  // namespace MirelCore
