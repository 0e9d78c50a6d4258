#include "naivebayes/model/NBNumerics.h"

#include <cmath>
#include <numbers>

void NBLogSum::Add(double x, int exponent, double weight) {
  constexpr double kLow = 0x1p-200, kHigh = 0x1p200, kLeast = 0x1p-600;
  // However a value was split, it is taken whole, or else as a fraction of 1 and its exponent.
  const double whole = exponent == 0 ? x : std::ldexp(x, exponent);
  if (whole >= kLeast) {
    x = whole;
    exponent = 0;
  } else {
    int shift;
    x = std::frexp(x, &shift);
    exponent += shift;
  }
  if (weight == 1.0) {
    fProduct *= x;
    if (!(fProduct > kLow && fProduct < kHigh)) Flush();
    fExponents += exponent;
  } else {
    fSum.Add(weight * std::log(x));
    if (exponent != 0) fSum.Add(weight * (exponent * std::numbers::ln2));
  }
}

void NBLogSum::Flush() {
  fSum.Add(std::log(fProduct));
  fProduct = 1;
}

double NBLogSum::Total() const {
  NBLogSum flushed = *this;
  flushed.Flush();
  flushed.fSum.Add(static_cast<double>(fExponents) * std::numbers::ln2);
  return flushed.fSum.Total();
}
