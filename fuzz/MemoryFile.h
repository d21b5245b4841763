/// A file that lives in memory and has a name.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "Check.h"

/// Exists as long as the object.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view text = {}) : file_(memfd_create("fuzz", 0)) {
    MIREL_CHECK(file_ >= 0 && write(file_, text.data(), text.size()) == static_cast<ssize_t>(text.size()));
    name_ = "/proc/self/fd/" + std::to_string(file_);
  }
  ~MemoryFile() { close(file_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  const char* name() const { return name_.c_str(); }

  std::string read() const {
    std::string text(static_cast<std::size_t>(lseek(file_, 0, SEEK_END)), '\0');
    MIREL_CHECK(pread(file_, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
    return text;
  }

 private:
  int file_;
  std::string name_;
};
