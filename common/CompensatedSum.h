// A running sum with Neumaier's compensation: the error stays at one rounding of the result however
// many terms there are, so that, with rare exceptions, their order does not show in the total.
#pragma once

#include <cmath>

namespace MCCommon {

class CompensatedSum {
 public:
  void Add(double term) {
    const double sum = fSum + term;
    fLost += std::abs(fSum) >= std::abs(term) ? (fSum - sum) + term : (term - sum) + fSum;
    fSum = sum;
  }
  double Total() const { return fSum + fLost; }

 private:
  double fSum = 0.0;
  double fLost = 0.0;
};

}  // namespace MCCommon
