#include <MirelAlgorithms/mesh/internal/LinePieces.h>

#include <algorithm>
#include <cstring>

namespace MirelAlgorithms {
namespace {

constexpr std::size_t blockSize = std::size_t{1} << 17;

}  // namespace

LinePieces::LinePieces(const char* filename) : file_(std::fopen(filename, "rb")) {
  if (!file_) return;
  std::setvbuf(file_.get(), nullptr, _IONBF, 0);
  block_.resize(blockSize);
}

std::string_view LinePieces::next() {
  if (more_ && static_cast<std::size_t>(end_ - begin_) < longest) refill();
  const std::size_t most = std::min(longest, static_cast<std::size_t>(end_ - begin_));
  if (most == 0) return {};
  const char* const piece = begin_;
  const void* const lineFeed = std::memchr(piece, '\n', most);
  begin_ = lineFeed ? static_cast<const char*>(lineFeed) + 1 : piece + most;
  return {piece, static_cast<std::size_t>(begin_ - piece)};
}

// Moves the rest to the front of the block and fills it up.
void LinePieces::refill() {
  const auto rest = static_cast<std::size_t>(end_ - begin_);
  if (rest != 0) std::memmove(block_.data(), begin_, rest);
  const std::size_t count = std::fread(block_.data() + rest, 1, blockSize - rest, file_.get());
  more_ = count == blockSize - rest;
  begin_ = block_.data();
  end_ = begin_ + rest + count;
}

}  // namespace MirelAlgorithms
