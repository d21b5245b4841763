/// What keeps the bits of code in public headers independent of the flags that a caller compiles with.
#pragma once

namespace MirelAlgorithms::detail {

/// a * b, rounded to single precision also where the caller's compiler would fuse it with a sum that follows.
inline float roundedProduct(float a, float b) {
  float product = a * b;
#if defined(__GNUC__) && defined(__x86_64__)
  __asm__("" : "+x"(product));  // no instruction; the compiler no longer knows that it is a product
#endif
  return product;
}

}  // namespace MirelAlgorithms::detail
