/// Up to four biquad sections side by side in one vector register.
///
/// A section must wait for its own last output, so one channel cannot use the width of a register; several can.
#pragma once

#include <MirelAlgorithms/filters/Butterworth.h>
#include <emmintrin.h>
#include <xmmintrin.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace MirelAlgorithms {

class ButterworthLanes {
 public:
  static constexpr std::size_t width = 4;
  using Sections = std::array<Butterworth*, width>;  ///< null for a lane that is not used

  explicit ButterworthLanes(const Sections& sections)
      : sections_(sections),
        a1_(load(&Butterworth::a1_)),
        a2_(load(&Butterworth::a2_)),
        a3_(load(&Butterworth::a3_)),
        b1_(load(&Butterworth::b1_)),
        b2_(load(&Butterworth::b2_)),
        in1_(load(&Butterworth::in1_)),
        in2_(load(&Butterworth::in2_)),
        out0_(load(&Butterworth::out0_)),
        out1_(load(&Butterworth::out1_)),
        out2_(load(&Butterworth::out2_)) {
    std::array<int, width> withheld{};
    for (std::size_t lane = 0; lane < width; ++lane)
      if (sections_[lane])
        withheld[lane] = static_cast<int>(Butterworth::m_minUpdates -
                                          std::min(sections_[lane]->updates_, Butterworth::m_minUpdates));
    withheld_ = _mm_loadu_si128(reinterpret_cast<const __m128i*>(withheld.data()));
  }

  /// One sample for each section; gives what `Butterworth::value` gives after it.
  __m128 step(__m128 sample) {
    const __m128 forward =
        _mm_add_ps(_mm_add_ps(_mm_mul_ps(sample, a1_), _mm_mul_ps(in1_, a2_)), _mm_mul_ps(a3_, in2_));
    const __m128 out = _mm_sub_ps(_mm_sub_ps(forward, _mm_mul_ps(b1_, out0_)), _mm_mul_ps(b2_, out1_));
    in2_ = in1_;
    in1_ = sample;
    out2_ = out1_;
    out1_ = out0_;
    out0_ = out;
    ++steps_;
    const __m128i closed = _mm_cmpgt_epi32(withheld_, _mm_setzero_si128());  // -1 where true
    withheld_ = _mm_add_epi32(withheld_, closed);
    return _mm_andnot_ps(_mm_castsi128_ps(closed), out);
  }

  /// Gives the sections the state that they would have reached sample by sample.
  void store() const {
    store(in1_, &Butterworth::in1_);
    store(in2_, &Butterworth::in2_);
    store(out0_, &Butterworth::out0_);
    store(out1_, &Butterworth::out1_);
    store(out2_, &Butterworth::out2_);
    for (Butterworth* section : sections_)
      if (section) section->updates_ += steps_;
  }

 private:
  using Member = float Butterworth::*;

  __m128 load(Member member) const {
    std::array<float, width> values{};
    for (std::size_t lane = 0; lane < width; ++lane)
      if (sections_[lane]) values[lane] = sections_[lane]->*member;
    return _mm_loadu_ps(values.data());
  }

  void store(__m128 vector, Member member) const {
    std::array<float, width> values;
    _mm_storeu_ps(values.data(), vector);
    for (std::size_t lane = 0; lane < width; ++lane)
      if (sections_[lane]) sections_[lane]->*member = values[lane];
  }

  Sections sections_;
  __m128 a1_, a2_, a3_, b1_, b2_, in1_, in2_, out0_, out1_, out2_;
  __m128i withheld_;  // outputs still to be withheld
  unsigned long long steps_ = 0;
};

}  // namespace MirelAlgorithms
