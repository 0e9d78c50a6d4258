// Weight, means, squared deviations and cross deviations of two variables, x and y.
#pragma once

#include "feature/accumulators/FSMoments.h"

struct FSPairStats {
  double fWeight = 0.0;
  FSMean fMeanX;
  FSMean fMeanY;
  double fSxx = 0.0;
  double fSyy = 0.0;
  double fSxy = 0.0;

  // Takes in another part of the cases; one case of weight w is {w, {x}, {y}}. REQUIRES: a weight
  // above 0.
  void Take(const FSPairStats& part) {
    if (fWeight == 0.0) {
      fMeanX = part.fMeanX;
      fMeanY = part.fMeanY;
    } else {
      const double dx = fMeanX.DistanceTo(part.fMeanX);
      const double dy = fMeanY.DistanceTo(part.fMeanY);
      const double share = part.fWeight / (fWeight + part.fWeight);
      fSxx += dx * (fWeight * (dx * share));
      fSyy += dy * (fWeight * (dy * share));
      fSxy += dx * (fWeight * (dy * share));
      fMeanX.Move(dx * share);
      fMeanY.Move(dy * share);
    }
    fWeight += part.fWeight;
    fSxx += part.fSxx;
    fSyy += part.fSyy;
    fSxy += part.fSxy;
  }

  // Turns the moments into those of x divided by 2^byX and y divided by 2^byY.
  void Coarsen(int byX, int byY) {
    fMeanX.Coarsen(byX);
    fMeanY.Coarsen(byY);
    fSxx = std::ldexp(fSxx, -2 * byX);
    fSyy = std::ldexp(fSyy, -2 * byY);
    fSxy = std::ldexp(fSxy, -byX - byY);
  }
};
