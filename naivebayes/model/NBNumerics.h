// Sums and products that keep their digits: building blocks of the model's likelihoods.
#pragma once

#include <cstdint>

#include "common/CompensatedSum.h"

using NBSum = MCCommon::CompensatedSum;

// A weighted sum of logarithms. Terms of weight 1 are multiplied up and their logarithm taken once
// per few hundred binary places, which is faster and rounds less than a logarithm each. The result
// depends on the terms and their order only, not on how each is split into x and exponent.
class NBLogSum {
 public:
  // Adds weight * log(x * 2^exponent). REQUIRES: x > 0.
  void Add(double x, int exponent, double weight);
  double Total() const;

 private:
  void Flush();

  double fProduct = 1;
  std::int64_t fExponents = 0;  // of 2, for terms of weight 1
  NBSum fSum;
};
