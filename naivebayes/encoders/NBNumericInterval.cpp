#include "naivebayes/encoders/NBNumericInterval.h"

#include <ostream>

NBNumericInterval::NBNumericInterval(double x, bool lowerHalf) { (lowerHalf ? fRight : fLeft) = x; }

bool NBNumericInterval::SetLeftEnd(double x) {
  fLeft = x;
  return fLeft <= fRight;
}

bool NBNumericInterval::SetRightEnd(double x) {
  fRight = x;
  return fLeft <= fRight;
}

void NBNumericInterval::Display(std::ostream& os) const {
  os << "[" << fLeft << ", " << fRight << "]";
}
