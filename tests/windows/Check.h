/// Checks of a program without a test framework.
#pragma once

#include <cstdio>

inline int failures = 0;

inline void check(bool holds, const char* condition, const char* file, int line) {
  if (holds) return;
  ++failures;
  std::printf("%s:%d: does not hold: %s\n", file, line, condition);
}

#define CHECK(condition) check((condition), #condition, __FILE__, __LINE__)
