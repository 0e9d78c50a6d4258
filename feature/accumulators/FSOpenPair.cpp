#include "feature/accumulators/FSOpenPair.h"

#include <array>

#include "feature/accumulators/FSLoops.h"

void FSOpenPair::AddProducts(std::size_t n, const double* x, const double* stepsY,
                             const double* weights) {
  FSInLanes(
      fN, n,
      [&](std::size_t k, int lane) {
        AddX(lane, x[k], stepsY[k], weights != nullptr ? weights[k] : 1.0);
      },
      [&](std::size_t from, std::size_t count) {
        FSLoops::InUse().fAddProducts(count, x + from, fOriginX, stepsY + from,
                                      weights != nullptr ? weights + from : nullptr, fSumsX,
                                      fSquaresX, fProducts);
      });
}

bool FSOpenPair::AddPiece(const FSTargetPiece& piece, const double* x, const double* stepsY,
                          const double* weights) {
  FSOpenPair next = *this;
  const std::size_t n = piece.fEnd - piece.fBegin;
  if (fN == 0) next.Start(x[piece.fBegin], piece.fOrigin);
  next.AddProducts(n, x + piece.fBegin, stepsY + piece.fBegin,
                   weights != nullptr ? weights + piece.fBegin : nullptr);
  if (!FSAreOrdinary(next.fOriginX, next.fSquaresX.Sum())) return false;
  next.fY = piece.fSums;
  next.fN += static_cast<int>(n);
  *this = next;
  return true;
}

std::size_t FSOpenPair::AddRun(std::size_t n, const double* x, const double* y,
                               const double* weights) {
  const std::size_t most = std::min(n, static_cast<std::size_t>(kMost - fN));
  FSTargetPiece piece{0, most, fN == 0 ? y[0] : fOriginY, fY};
  std::array<double, kMost> stepsY;
  for (std::size_t k = 0; k < most; ++k) stepsY[k] = y[k] - piece.fOrigin;
  piece.fSums.AddRun(fN, most, {y, weights}, piece.fOrigin);
  return AddPiece(piece, x, stepsY.data(), weights) ? most : 0;
}

FSPairStats FSOpenPair::Close() {
  FSPairStats closed;
  const double n = fY.fWeights.Sum();
  const double sumX = fSumsX.Sum(), sumY = fY.fSums.Sum();
  closed.fWeight = n;
  closed.fMeanX.fValue = fOriginX;
  closed.fMeanX.Move(sumX / n);
  closed.fMeanY.fValue = fOriginY;
  closed.fMeanY.Move(sumY / n);
  closed.fSxx = std::max(fSquaresX.Sum() - sumX * (sumX / n), 0.0);
  closed.fSyy = std::max(fY.fSquares.Sum() - sumY * (sumY / n), 0.0);
  closed.fSxy = fProducts.Sum() - sumX * (sumY / n);
  *this = {};
  return closed;
}

void FSOpenPair::Coarsen(int byX, int byY) {
  fOriginX = std::ldexp(fOriginX, -byX);
  fOriginY = std::ldexp(fOriginY, -byY);
  fSumsX.Coarsen(byX);
  fSquaresX.Coarsen(2 * byX);
  fProducts.Coarsen(byX + byY);
  fY.Coarsen(byY);
}
