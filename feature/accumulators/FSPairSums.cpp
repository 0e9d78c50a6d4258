#include "feature/accumulators/FSPairSums.h"

#include <algorithm>
#include <array>

#include "common/MissingValue.h"

void FSPairSums::Add(double x, double y, double weight) {
  const int byX = fScaleX.FitFor(x), byY = fScaleY.FitFor(y);
  if (byX != 0 || byY != 0) {
    fMoments.Coarsen(byX, byY);
    fOpen.Coarsen(byX, byY);
  }
  if (!FSIsSmallWeight(weight)) {
    fMoments.Take({weight, {fScaleX(x)}, {fScaleY(y)}});
    return;
  }
  fOpen.Add(fScaleX(x), fScaleY(y), weight);
  ++fNSummed;
  CloseIfFull();
}

void FSPairSums::FitFirst(std::size_t n, const double* x, const double* y) {
  fScaleX.FitFirst(n, [=](std::size_t k) { return MCMV::IsMissing(x[k]) ? 0.0 : x[k]; });
  fScaleY.FitFirst(n, [=](std::size_t k) { return MCMV::IsMissing(x[k]) ? 0.0 : y[k]; });
}

std::size_t FSPairSums::AddOrdinaryRun(std::size_t n, const double* x, const double* y,
                                       const double* weights) {
  std::size_t taken = 0;
  while (IsOrdinary() && taken < n) {
    const std::size_t more = fOpen.AddRun(n - taken, x + taken, y + taken, weights + taken);
    if (more == 0) break;
    taken += more;
    CloseIfFull();
  }
  fNSummed += static_cast<std::int64_t>(taken);
  return taken;
}

std::size_t FSPairSums::AddRun(std::size_t n, const double* x, const double* y,
                               const double* weights) {
  std::array<double, 256> validX, validY, itsWeights;
  std::size_t missing = 0;
  for (std::size_t k = 0; k < n;) {
    std::size_t valid = 0;
    const std::size_t end = std::min(n, k + validX.size());
    missing += end - k;
    for (; k < end; ++k) {
      validX[valid] = x[k];
      validY[valid] = y[k];
      itsWeights[valid] = weights[k];
      valid += MCMV::IsMissing(x[k]) ? 0 : 1;
    }
    missing -= valid;
    std::size_t taken = AddOrdinaryRun(valid, validX.data(), validY.data(), itsWeights.data());
    for (; taken < valid; ++taken) Add(validX[taken], validY[taken], itsWeights[taken]);
  }
  return missing;
}

bool FSPairSums::AddPiece(const FSTargetPiece& piece, const double* x, const double* stepsY,
                          const double* weights) {
  if (!fOpen.AddPiece(piece, x, stepsY, weights)) return false;
  fNSummed += static_cast<std::int64_t>(piece.fEnd - piece.fBegin);
  CloseIfFull();
  return true;
}

void FSPairSums::Settle() {
  if (!fOpen.IsEmpty()) fMoments.Take(fOpen.Close());
  fNSummed = 0;
}

void FSPairSums::Merge(const FSPairSums& other) {
  fMoments.Coarsen(fScaleX.FitFor(other.fScaleX), fScaleY.FitFor(other.fScaleY));
  FSPairStats theirs = other.fMoments;
  theirs.Coarsen(fScaleX.GetExponent() - other.fScaleX.GetExponent(),
                 fScaleY.GetExponent() - other.fScaleY.GetExponent());
  if (theirs.fWeight > 0.0) fMoments.Take(theirs);
}
