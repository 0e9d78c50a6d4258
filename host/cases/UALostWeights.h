// What rounding takes away from fractional frequency weights.
//
// The engines round the weight of a case to a whole number, and a case whose weight becomes 0 is
// left out. This looks at the weights before that, to be able to say so.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

class UALostWeights {
 public:
  // Takes in the weights of so many more cases; missing ones, and those not above 0, do not count.
  void Observe(const double* weights, std::size_t n);

  // Takes in what was met elsewhere.
  void Add(const UALostWeights& others);

  // In saved state: cases, lost cases, weight, lost weight, least weight.
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self) {
    archive.Long(self.fNCases);
    archive.Long(self.fNLost);
    archive.AnyDouble(self.fWeight);
    archive.AnyDouble(self.fLostWeight);
    archive.AnyDouble(self.fLeast);
    archive.Check(self.fNCases >= self.fNLost && self.fNLost >= 0);
  }

  // Cases with a weight above 0, and their weights as they stand.
  std::int64_t GetNCases() const { return fNCases; }
  double GetWeight() const { return fWeight; }

  // Those of them that are left out.
  std::int64_t GetNLost() const { return fNLost; }
  double GetLostWeight() const { return fLostWeight; }

  // The least power of ten that, multiplied with every weight, makes each at least 1.
  // REQUIRES: a case.
  double GetFactor() const;

 private:
  std::int64_t fNCases = 0;
  double fWeight = 0.0;
  std::int64_t fNLost = 0;
  double fLostWeight = 0.0;
  double fLeast = std::numeric_limits<double>::infinity();
};
