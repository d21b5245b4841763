/// Settings by name.
#pragma once

#include <VoskBase/Export.h>
#include <VoskBase/SmartPtr.h>
#include <VoskBase/String.h>

#include <map>
#include <string>
#include <variant>

namespace Brel {

/// Settings of a host: values of four types by case-sensitive key, held by `VoskBase::SmartPtr<AttrContainer>`.
/// Any number of threads may read while none writes.
class HOST_API AttrContainer : public VoskBase::WeakHandle {
 public:
  /// A value; the alternative that is held is its type.
  using Value = std::variant<bool, int, double, VoskBase::String>;

  /// Stores a value under a key; an earlier value goes, whatever its type was. @{
  void set(const VoskBase::String& key, bool value);
  void set(const VoskBase::String& key, int value);
  void set(const VoskBase::String& key, double value);
  void set(const VoskBase::String& key, const wchar_t* value);
  /// @}

  /// The value under a key, null when there is none.
  const Value* find(const VoskBase::String& key) const;

 private:
  std::map<std::wstring, Value> values_;
};

}  // namespace Brel
