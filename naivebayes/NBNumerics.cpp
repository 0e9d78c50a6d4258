#include "naivebayes/NBNumerics.h"

#include <cmath>
#include <numbers>

void NBSum::Add(double term) {
  const double sum = fSum + term;
  fLost += std::abs(fSum) >= std::abs(term) ? (fSum - sum) + term : (term - sum) + fSum;
  fSum = sum;
}

void NBLogSum::Add(double x, int exponent, double weight) {
  constexpr double kLow = 0x1p-200, kHigh = 0x1p200;
  if (weight == 1.0) {
    fProduct *= x;
    if (!(fProduct > kLow && fProduct < kHigh)) Flush();
  } else {
    fSum.Add(weight * std::log(x));
  }
  if (exponent != 0) fSum.Add(weight * (exponent * std::numbers::ln2));
}

void NBLogSum::Flush() {
  fSum.Add(std::log(fProduct));
  fProduct = 1;
}

double NBLogSum::Total() const {
  NBLogSum flushed = *this;
  flushed.Flush();
  return flushed.fSum.Total();
}
