// Mean and standard deviation of numbers that come by one after the other.
//
// Welford's recurrence ("Note on a method for calculating corrected sums of squares and products",
// Technometrics 4, 1962) over the differences from the first number, in units of a power of two
// that follows the numbers: they keep their digits however far from zero they are, and squares
// neither overflow nor vanish.
#pragma once

namespace PredSelect {

class Moments {
 public:
  // REQUIRES: a finite number.
  void Add(double value) {
    ++fN;
    if (fN == 1.0) fFirst = value;
    double from = value * fScale - fFirst;
    if (IsOutside(from)) [[unlikely]] {
      Rescale(value);
      from = value * fScale - fFirst;
    }
    const double fromMean = from - fMean;
    fMean += fromMean / fN;
    fSquares += fromMean * (from - fMean);
  }

  // REQUIRES: there was a number.
  double Mean() const;
  // Of a sample. REQUIRES: there were two.
  double Deviation() const;

 private:
  // Whether the square of the difference, or of a tenth of it, might be no number.
  bool IsOutside(double from) const {
    constexpr double kMost = 0x1p400;
    const double size = from < 0.0 ? -from : from;
    return !(size < kMost) || (size < 1.0 / kMost && size > 0.0 && fSquares == 0.0);
  }

  void Rescale(double value);

  double fN = 0.0;
  double fScale = 1.0;    // a power of two
  double fFirst = 0.0;    // the first number, scaled
  double fMean = 0.0;     // of the scaled differences
  double fSquares = 0.0;  // of them from their mean, summed
};

}  // namespace PredSelect
