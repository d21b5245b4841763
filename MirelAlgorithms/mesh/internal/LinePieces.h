/// A file as lines of limited length.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

namespace MirelAlgorithms {

/// Hands out a file's lines, each with its line feed. Longer ones come in pieces.
class LinePieces {
 public:
  static constexpr std::size_t longest = 999;  ///< characters of a piece, with the line feed

  explicit LinePieces(const char* filename);

  bool isOpen() const { return file_ != nullptr; }

  /// The next piece, empty at the end of the file. It holds until the next call.
  std::string_view next();

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void refill();

  std::unique_ptr<std::FILE, Closer> file_;
  std::vector<char> block_;
  const char *begin_ = nullptr, *end_ = nullptr;  // what has been read and not yet handed out
  bool more_ = true;                              // the file may have more
};

}  // namespace MirelAlgorithms
