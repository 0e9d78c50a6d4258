// Weighted means and sums of squared deviations of parts, put together (T. F. Chan, G. H. Golub,
// R. J. LeVeque, Updating formulae and a pairwise algorithm for computing sample variances,
// Stanford University STAN-CS-79-773 (1979)). A part may be a single case.
#pragma once

#include <cmath>

// A mean to more digits than a double has: means of groups far from 0 differ by less than it can
// tell.
struct FSMean {
  double fValue = 0.0;
  double fRest = 0.0;  // what is to be added to fValue, less than half a unit in its last place

  // How far another mean is from this one.
  double DistanceTo(const FSMean& other) const {
    return (other.fValue - fValue) + (other.fRest - fRest);
  }
  // Both parts of the sum are kept (D. E. Knuth, The Art of Computer Programming 2, 4.2.2).
  void Move(double by) {
    const double sum = fValue + by;
    const double part = sum - fValue;
    const double lost = (fValue - (sum - part)) + (by - part) + fRest;
    fValue = sum + lost;
    fRest = lost - (fValue - sum);
  }
  void Coarsen(int by) {
    fValue = std::ldexp(fValue, -by);
    fRest = std::ldexp(fRest, -by);
  }
};

// Divides squared deviations by weight - 1; `otherwise` where the weight is not above 1.
inline double FSVariance(double squaredDeviations, double weight, double otherwise) {
  return weight - 1.0 > 0.0 ? squaredDeviations / (weight - 1.0) : otherwise;
}
