// All public headers after the macros that <windows.h> brings, which come to others' headers too late to break them.
#include <Eigen/Dense>
#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <opencv2/core.hpp>
#include <opencv2/features2d.hpp>
#include <random>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

#define near
#define far
#define min(a, b) (((a) < (b)) ? (a) : (b))
#define max(a, b) (((a) > (b)) ? (a) : (b))

#include <MirelAlgorithms/MirelAlgorithms.h>

#if !defined(near) || !defined(far)
#error "a header has taken near or far away"
#endif
static_assert(min(1, 2) == 1 && max(1, 2) == 2, "the macros are as they were");
