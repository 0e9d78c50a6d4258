#include "naivebayes/selection/NBOddsSum.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "naivebayes/NBLoops.h"

void NBOddsSum::AddScaled(double odds, int exponent, double weight) {
  const double whole = std::ldexp(odds, exponent);
  if (whole <= kMostOdds) return AddPlain(whole, weight);
  // 1 is nothing beside such odds.
  fSum.Add(weight * std::log(odds));
  fSum.Add(weight * (exponent * std::numbers::ln2));
}

void NBOddsSum::AddAlone(double odds, double weight) { fSum.Add(weight * std::log1p(odds)); }

void NBOddsSum::AddRun(std::size_t n, const double* odds) {
  for (std::size_t i = 0; i < n;) {
    const std::size_t whole = std::min((n - i) / kPlaces * kPlaces, kRound - fNCases % kRound);
    if (fNCases % kPlaces != 0 || whole == 0) {
      AddPlain(odds[i++], 1.0);
      continue;
    }
    NBLoops::InUse().fMultiplyUp(whole, odds + i, fProducts.data());
    i += whole;
    fNCases += whole;
    if (fNCases % kRound == 0) EndRound();
  }
}

void NBOddsSum::EndRound() {
  if (*std::max_element(fProducts.begin(), fProducts.end()) > kMostProduct) Flush();
}

void NBOddsSum::Flush() {
  for (double& product : fProducts) {
    fSum.Add(std::log1p(product));
    product = 0;
  }
}

double NBOddsSum::Total() const {
  NBOddsSum flushed = *this;
  flushed.Flush();
  return flushed.fSum.Total();
}
