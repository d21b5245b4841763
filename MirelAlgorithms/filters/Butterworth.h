/// Second-order Butterworth filters for streams of samples.
///
///     Butterworth lowpass(5.0f, 100, Butterworth::Lowpass, 1.4142f);
///     for (float sample : recording) {
///       lowpass.update(sample);
///       use(lowpass.value());  // 0 up to the 500th sample
///     }
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/filters/RoundedProduct.h>

#include <span>

namespace MirelAlgorithms {

/// One biquad section, low-pass or high-pass, in single precision.
///
/// With r the resonance, f the cut-off and R the sample rate, by the bilinear transform (see for example Oppenheim and
/// Schafer, "Discrete-Time Signal Processing", chapter 7):
///
///     low-pass:   c = 1 / tan(f pi / R)    a1 = 1 / (1 + r c + c^2)   a2 =  2 a1   b1 = 2 (1 - c^2) a1
///     high-pass:  c = tan(f pi / R)        a1 = 1 / (1 + r c + c^2)   a2 = -2 a1   b1 = 2 (c^2 - 1) a1
///     both:       a3 = a1                  b2 = (1 - r c + c^2) a1
///     y[n] = a1 x[n] + a2 x[n-1] + a3 x[n-2] - b1 y[n-1] - b2 y[n-2]
///
/// The first 500 outputs are withheld, so that nobody sees the filter settle.
///
/// Nothing is checked. A rate of 0 and cut-offs that are not above 0 and below half the rate give filters whose output
/// may grow without bound or be no number. A sample that is infinite or not a number makes every later output not a
/// number, until `reset`. For finite samples and a sensible cut-off outputs are finite, unless samples come near the
/// largest float.
///
/// A plain value; one thread at a time. The bits do not depend on the flags that a caller compiles with, except
/// -ffast-math and its like.
class MIREL_API Butterworth {
 public:
  /// Which side of the cut-off passes.
  enum PassType : int { Highpass = 0, Lowpass = 1 };

  /// Samples whose outputs are withheld.
  static constexpr unsigned long long m_minUpdates = 500;

  /// A filter that has seen no sample.
  ///
  /// @param frequency   cut-off, in the unit of the sample rate (Hz)
  /// @param sampleRate  samples per second
  /// @param passType    any other number makes a filter that must not be used: all its coefficients are 0
  /// @param resonance   damping; the square root of 2 is that of an ideal Butterworth section
  Butterworth(float frequency, int sampleRate, PassType passType, float resonance);

  /// High-pass of 0.5 Hz at 100 samples per second, resonance 1.14.
  Butterworth();

  /// Feeds one sample.
  void update(float sample) {
    using detail::roundedProduct;
    ++updates_;
    const float forward = roundedProduct(sample, a1_) + roundedProduct(in1_, a2_) + roundedProduct(a3_, in2_);
    const float out = forward - roundedProduct(b1_, out0_) - roundedProduct(b2_, out1_);
    in2_ = in1_;
    in1_ = sample;
    out2_ = out1_;
    out1_ = out0_;
    out0_ = out;
  }

  /// Output for the last sample; exactly 0 until more than `m_minUpdates` samples were fed.
  float value() const { return updates_ > m_minUpdates ? out0_ : 0.0f; }

  /// Samples fed since construction or `reset`.
  unsigned long long updates() const { return updates_; }

  /// Forgets all samples; the coefficients stay.
  void reset();

  /// Feeds many samples: `values[i]` becomes what `value` gives after `update(samples[i])`, to the bit.
  ///
  /// @param samples  may be the same memory as `values`
  /// @param values   as many; `std::invalid_argument` otherwise
  void process(std::span<const float> samples, std::span<float> values);

  /// Feeds many samples of several channels, each through its own filter, to the same bits as `process` on each.
  ///
  /// @param filters  one per channel
  /// @param samples  channel after channel for the first moment, then for the second, and so on; may be the same memory
  ///                 as `values`
  /// @param values   as many; `std::invalid_argument` otherwise, or when that is no multiple of the channels
  static void process(std::span<Butterworth> filters, std::span<const float> samples, std::span<float> values);

 private:
  friend class ButterworthLanes;

  float frequency_;
  int sampleRate_;
  PassType passType_;
  float resonance_;
  unsigned long long updates_;
  float c_;                   // warped frequency
  float a1_, a2_, a3_;        // feed forward
  float b1_, b2_;             // feed back
  float in1_, in2_;           // inputs before the current one
  float out0_, out1_, out2_;  // current output and the ones before it
};

/// A high-pass section followed by a low-pass section.
///
/// The low-pass is fed what the high-pass lets out, so it sees 500 zeros first; both let out from the 501st sample on.
/// What `Butterworth` says of bad parameters and samples holds for both sections; an infinite sample among the first
/// 500 stays inside the high-pass until its output opens.
class MIREL_API ButterworthBandpass {
 public:
  /// A filter that has seen no sample.
  ///
  /// @param lowCutoff, highCutoff  ends of the band, in the unit of the sample rate (Hz)
  /// @param sampleRate             samples per second
  /// @param resonance              damping of both sections
  ButterworthBandpass(float lowCutoff, float highCutoff, int sampleRate, float resonance);

  /// 0.5 to 40 Hz at 100 samples per second, resonance 1.14.
  ButterworthBandpass();

  /// Feeds one sample.
  void update(float sample) {
    highpass_.update(sample);
    lowpass_.update(highpass_.value());
  }

  /// Output for the last sample; exactly 0 until more than 500 samples were fed.
  float value() const { return lowpass_.value(); }

  /// Samples fed since construction or `reset`.
  unsigned long long updates() const { return lowpass_.updates(); }

  /// Forgets all samples; the coefficients stay.
  void reset();

  /// Feeds many samples; see `Butterworth::process`.
  void process(std::span<const float> samples, std::span<float> values);

  /// Feeds many samples of several channels; see `Butterworth::process`.
  static void process(std::span<ButterworthBandpass> filters, std::span<const float> samples, std::span<float> values);

 private:
  Butterworth lowpass_;
  Butterworth highpass_;
};

}  // namespace MirelAlgorithms
