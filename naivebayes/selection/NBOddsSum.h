// The sum over cases of w * log(1 + odds), where the odds are those against a case's own category:
// minus the log-likelihood, case by case. No term is lost beside another, however sure the model
// is, and none is below zero.
//
// The order of the cases decides the order of the sums, and nothing else does.
#pragma once

#include <array>
#include <cstddef>

#include "naivebayes/model/NBNumerics.h"

class NBOddsSum {
 public:
  // Adds weight * log(1 + odds * 2^exponent). REQUIRES: odds >= 0.
  void Add(double odds, int exponent, double weight) {
    if (exponent != 0) [[unlikely]] return AddScaled(odds, exponent, weight);
    AddPlain(odds, weight);
  }
  double Total() const;

 private:
  // Cases of weight 1 are multiplied up, in turn in each of a few places, so that none waits for
  // the one before; a place holds the product of its 1 + odds, less 1.
  static constexpr std::size_t kPlaces = 4, kMostCases = 16 * kPlaces;
  static constexpr double kMostOdds = 0x1p60;  // 16 of them are still a double

  void AddPlain(double odds, double weight) {
    if (!(odds <= kMostOdds && weight == 1.0)) [[unlikely]] return AddAlone(odds, weight);
    double& product = fProducts[fNCases % kPlaces];
    product += odds + product * odds;
    if (++fNCases == kMostCases) Flush();
  }
  void AddScaled(double odds, int exponent, double weight);
  void AddAlone(double odds, double weight);
  void Flush();

  std::array<double, kPlaces> fProducts{};
  std::size_t fNCases = 0;  // in them
  NBSum fSum;
};
