// The power of two by which a variable's values are divided, so that squares of their deviations
// neither overflow nor underflow. Dividing by it changes no digit; for ordinary values it is 1.
//
// Whoever sums asks FitFor() of every value first, and coarsens the sums when told to. What is lost
// by that is beside the new value as nothing.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

class FSScale {
 public:
  FSScale() = default;
  // The scale of sums made earlier; `any` says whether a value other than 0 was among them.
  FSScale(int exponent, bool any) {
    if (any) Set(exponent);
  }

  // Makes the scale serve for a value. Returns by how many powers of two it became coarser, so that
  // sums of values have to be divided by 2^result: 0, but for the rare value.
  int FitFor(double value) { return std::abs(value) <= fMost ? 0 : GrowFor(std::abs(value)); }

  // Makes the scale serve for all values that another one serves for; returns as FitFor.
  int FitFor(const FSScale& other) { return other.fMost <= fMost ? 0 : Grow(other.fExponent); }

  // Makes a scale that has served for nothing but 0 the one that FitFor makes it for the first of n
  // other values, if that is ordinary. valueAt(k) is 0 for a value that does not count.
  template <class ValueAt>
  void FitFirst(std::size_t n, ValueAt valueAt) {
    for (std::size_t k = 0; k < n && fMost == 0.0; ++k) {
      const double value = valueAt(k);
      if (value == 0.0) continue;
      if (IsOrdinary(value)) FitFor(value);
      return;
    }
  }

  // A value in units of the scale. REQUIRES: the scale fits it.
  double operator()(double value) const {
    return fExponent == 0 ? value : std::ldexp(value, -fExponent);
  }
  // A sum of values, of squares of them, that was made in units of the scale.
  double Back(double sum) const { return std::ldexp(sum, fExponent); }
  double BackSquared(double sum) const { return std::ldexp(sum, 2 * fExponent); }

  // Values up to 2^kSpan and down to 2^-kSpan are ordinary: a difference of two is 0 or at least
  // 2^-(kSpan + 53), and its square is as far from the least normal number as 2^31 squares are from
  // the greatest one.
  static constexpr int kSpan = 400;
  static constexpr double kLeast = 0x1p-400;
  static constexpr double kMost = 0x1p400;
  // Whether a value is ordinary: one that needs no scale, neither now nor beside others.
  static bool IsOrdinary(double value) {
    return value == 0.0 || (std::abs(value) >= kLeast && std::abs(value) <= kMost);
  }

  int GetExponent() const { return fExponent; }
  // Whether values up to 2^kSpan need no more looks at the scale.
  bool IsOrdinary() const { return fExponent == 0 && fMost > 0.0; }

 private:
  void Set(int exponent) {
    fExponent = exponent;
    fMost = exponent + kSpan < std::numeric_limits<double>::max_exponent
                ? std::ldexp(1.0, exponent + kSpan)
                : std::numeric_limits<double>::max();
  }

  int Grow(int exponent) {
    const bool isFirst = fMost == 0.0;
    const int by = exponent - fExponent;
    Set(exponent);
    return isFirst ? 0 : by;
  }

  int GrowFor(double size) {
    constexpr int kLargest = 1000;  // so that the power is a double, and its inverse
    if (size > std::numeric_limits<double>::max()) return 0;
    const int exponent = std::clamp(std::ilogb(size), -kLargest, kLargest);
    return Grow(std::abs(exponent) <= kSpan ? 0 : exponent);
  }

  int fExponent = 0;
  double fMost = 0.0;  // the scale fits values up to this size
};
