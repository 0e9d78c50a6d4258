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
    if (exponent != 0) [[unlikely]]
      return AddScaled(odds, exponent, weight);
    AddPlain(odds, weight);
  }
  // Adds log(1 + odds) of cases of weight 1. REQUIRES: odds from 0 to kMostOdds.
  void AddRun(std::size_t n, const double* odds);
  double Total() const;

  static constexpr double kMostOdds = 0x1p60;

 private:
  // Cases of weight 1 are multiplied up, in turn in each of a few places, so that none waits for
  // the one before; a place holds the product of its 1 + odds, less 1. After every round the
  // logarithms are taken if one more might be too much for a double: 2^60 and 16 times 2^60.
  static constexpr std::size_t kPlaces = 8, kRound = 16 * kPlaces;
  static constexpr double kMostProduct = 0x1p60;

  void AddPlain(double odds, double weight) {
    if (!(odds <= kMostOdds && weight == 1.0)) [[unlikely]]
      return AddAlone(odds, weight);
    double& product = fProducts[fNCases % kPlaces];
    product += odds + product * odds;
    if (++fNCases % kRound == 0) EndRound();
  }
  void AddScaled(double odds, int exponent, double weight);
  void AddAlone(double odds, double weight);
  void EndRound();
  void Flush();

  std::array<double, kPlaces> fProducts{};
  std::size_t fNCases = 0;  // multiplied up
  NBSum fSum;
};
