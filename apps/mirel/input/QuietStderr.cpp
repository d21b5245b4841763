#include "input/QuietStderr.h"

#include <fcntl.h>
#include <cstdio>
#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace mirel {

namespace {

#ifdef _WIN32
constexpr const char* nowhere = "NUL";
int duplicate(int descriptor) { return _dup(descriptor); }
void replace(int descriptor, int by) { _dup2(by, descriptor); }
int openNowhere() { return _open(nowhere, _O_WRONLY); }
void closeDescriptor(int descriptor) { _close(descriptor); }
int descriptorOf(std::FILE* file) { return _fileno(file); }
#else
constexpr const char* nowhere = "/dev/null";
int duplicate(int descriptor) { return dup(descriptor); }
void replace(int descriptor, int by) { dup2(by, descriptor); }
int openNowhere() { return open(nowhere, O_WRONLY); }
void closeDescriptor(int descriptor) { close(descriptor); }
int descriptorOf(std::FILE* file) { return fileno(file); }
#endif

}  // namespace

QuietStderr::QuietStderr() {
  std::fflush(stderr);
  saved_ = duplicate(descriptorOf(stderr));
  const int sink = openNowhere();
  if (sink < 0) return;
  if (saved_ >= 0) replace(descriptorOf(stderr), sink);
  closeDescriptor(sink);
}

QuietStderr::~QuietStderr() {
  std::fflush(stderr);
  if (saved_ < 0) return;
  replace(descriptorOf(stderr), saved_);
  closeDescriptor(saved_);
}

}  // namespace mirel
