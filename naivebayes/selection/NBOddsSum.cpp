#include "naivebayes/selection/NBOddsSum.h"

#include <cmath>
#include <numbers>

void NBOddsSum::AddScaled(double odds, int exponent, double weight) {
  const double whole = std::ldexp(odds, exponent);
  if (whole <= kMostOdds) return AddPlain(whole, weight);
  // 1 is nothing beside such odds.
  fSum.Add(weight * std::log(odds));
  fSum.Add(weight * (exponent * std::numbers::ln2));
}

void NBOddsSum::AddAlone(double odds, double weight) { fSum.Add(weight * std::log1p(odds)); }

void NBOddsSum::Flush() {
  for (double& product : fProducts) {
    fSum.Add(std::log1p(product));
    product = 0;
  }
  fNCases = 0;
}

double NBOddsSum::Total() const {
  NBOddsSum flushed = *this;
  flushed.Flush();
  return flushed.fSum.Total();
}
