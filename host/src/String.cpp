#include <VoskBase/String.h>

#include <cstdint>
#include <type_traits>

namespace VoskBase {
namespace {

using Unit = std::make_unsigned_t<wchar_t>;

constexpr std::uint32_t replacement = 0xfffd;  // what stands for a character that is none

bool isSurrogate(std::uint32_t c) { return c >= 0xd800 && c < 0xe000; }

// RFC 3629: the first byte tells the length, each further byte carries six bits.
void appendUtf8(std::string& out, std::uint32_t c) {
  if (c > 0x10ffff || isSurrogate(c)) c = replacement;
  const auto tail = [&](int shift) { out += static_cast<char>(0x80 | ((c >> shift) & 0x3f)); };
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xc0 | (c >> 6));
    tail(0);
  } else if (c < 0x10000) {
    out += static_cast<char>(0xe0 | (c >> 12));
    tail(6);
    tail(0);
  } else {
    out += static_cast<char>(0xf0 | (c >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

}  // namespace

String::String(const wchar_t* text) : text_(text ? text : L"") {}

int String::compare(const wchar_t* text) const { return text_.compare(text ? text : L""); }

std::string String::stringAnsi() const {
  std::string out;
  out.reserve(text_.size());
  for (std::size_t i = 0; i < text_.size(); ++i) {
    auto c = static_cast<std::uint32_t>(static_cast<Unit>(text_[i]));
    // Where wide characters have 16 bits, two of them make one character beyond 0xffff.
    if (sizeof(wchar_t) == 2 && c >= 0xd800 && c < 0xdc00 && i + 1 < text_.size()) {
      const auto low = static_cast<std::uint32_t>(static_cast<Unit>(text_[i + 1]));
      if (low >= 0xdc00 && low < 0xe000) {
        c = 0x10000 + ((c - 0xd800) << 10) + (low - 0xdc00);
        ++i;
      }
    }
    appendUtf8(out, c);
  }
  return out;
}

}  // namespace VoskBase
