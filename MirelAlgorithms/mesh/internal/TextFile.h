/// A text file that is written in large blocks.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

namespace MirelAlgorithms {

class TextFile {
 public:
  static constexpr std::size_t room = 256;  ///< characters that can be written at `at()`

  /// Replaces the file if it exists.
  explicit TextFile(const char* filename);
  ~TextFile() { flush(); }

  bool isOpen() const { return file_ != nullptr; }

  /// Where the next characters belong. Once they are there, `advance` to their end.
  char* at() { return at_; }
  void advance(char* end) {
    at_ = end;
    if (at_ > block_.data() + block_.size() - room) flush();
  }

  /// A text of any length.
  void write(std::string_view text);

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void flush();

  std::unique_ptr<std::FILE, Closer> file_;
  std::vector<char> block_;
  char* at_;
};

}  // namespace MirelAlgorithms
