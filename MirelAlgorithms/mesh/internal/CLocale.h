/// The C locale for scanning and printing numbers, whatever the process has set.
#pragma once

#include <clocale>
#if defined(_WIN32)
#include <string>
#else
#include <locale.h>
#endif

namespace MirelAlgorithms {

/// Sets the C locale for this thread, as long as the object lives.
class CLocale {
 public:
#if defined(_WIN32)
  CLocale() : mode_(_configthreadlocale(_ENABLE_PER_THREAD_LOCALE)), before_(std::setlocale(LC_ALL, nullptr)) {
    std::setlocale(LC_ALL, "C");
  }
  ~CLocale() {
    std::setlocale(LC_ALL, before_.c_str());
    _configthreadlocale(mode_);
  }
#else
  CLocale() : c_(newlocale(LC_ALL_MASK, "C", nullptr)), before_(uselocale(c_)) {}
  ~CLocale() {
    uselocale(before_);
    if (c_) freelocale(c_);
  }
#endif
  CLocale(const CLocale&) = delete;
  CLocale& operator=(const CLocale&) = delete;

 private:
#if defined(_WIN32)
  int mode_;
  std::string before_;
#else
  locale_t c_, before_;
#endif
};

}  // namespace MirelAlgorithms
