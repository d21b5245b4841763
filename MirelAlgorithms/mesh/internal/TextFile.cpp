#include <MirelAlgorithms/mesh/internal/TextFile.h>

#include <algorithm>

namespace MirelAlgorithms {
namespace {

constexpr std::size_t blockSize = std::size_t{1} << 17;

}  // namespace

TextFile::TextFile(const char* filename)
    : file_(filename ? std::fopen(filename, "w") : nullptr), block_(blockSize), at_(block_.data()) {
  if (file_) std::setvbuf(file_.get(), nullptr, _IONBF, 0);
}

void TextFile::write(std::string_view text) {
  while (!text.empty()) {
    const std::size_t count = std::min(text.size(), room);
    advance(std::copy_n(text.data(), count, at_));
    text.remove_prefix(count);
  }
}

void TextFile::flush() {
  if (at_ != block_.data()) std::fwrite(block_.data(), 1, static_cast<std::size_t>(at_ - block_.data()), file_.get());
  at_ = block_.data();
}

}  // namespace MirelAlgorithms
