/// Wide text.
#pragma once

#include <VoskBase/Export.h>

#include <string>

namespace VoskBase {

/// A text of wide characters. Copies are independent.
class HOST_API String {
 public:
  /// The empty text.
  String() = default;

  String(const wchar_t* text);  ///< copies the text; a null pointer gives the empty text

  /// Below, at or above 0 when this text sorts before, with or after `text`, by character code.
  int compare(const wchar_t* text) const;

  /// The text in 8-bit characters, encoded as UTF-8.
  std::string stringAnsi() const;

  /// The characters, zero-terminated; valid until the text changes or goes.
  const wchar_t* c_str() const noexcept { return text_.c_str(); }

  friend bool operator==(const String&, const String&) = default;

 private:
  std::wstring text_;
};

}  // namespace VoskBase
