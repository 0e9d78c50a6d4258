// A running sum with Neumaier's compensation: the error stays at one rounding of the result however
// many terms there are, so that, with rare exceptions, their order does not show in the total.
#pragma once

#include <cmath>

namespace MCCommon {

class CompensatedSum {
 public:
  CompensatedSum() = default;
  // A sum that was kept elsewhere, by its two parts.
  CompensatedSum(double sum, double lost) : fSum(sum), fLost(lost) {}

  void Add(double term) {
    const double sum = fSum + term;
    fLost += std::abs(fSum) >= std::abs(term) ? (fSum - sum) + term : (term - sum) + fSum;
    fSum = sum;
  }
  void Add(const CompensatedSum& other) {
    Add(other.fSum);
    fLost += other.fLost;
  }
  double Sum() const { return fSum; }
  double Lost() const { return fLost; }
  double Total() const { return fSum + fLost; }

 private:
  double fSum = 0.0;
  double fLost = 0.0;
};

}  // namespace MCCommon
