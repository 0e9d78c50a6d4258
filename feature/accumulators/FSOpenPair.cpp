#include "feature/accumulators/FSOpenPair.h"

#include <array>

namespace {

// Values before the next one of lane 0, when there are n already.
std::size_t ToFirstLane(int n) {
  return static_cast<std::size_t>((FSLanes::kCount - n % FSLanes::kCount) % FSLanes::kCount);
}

}  // namespace

bool FSOpenPair::AddPiece(const FSTargetPiece& piece, const double* x, const double* stepsY) {
  FSOpenPair next = *this;
  const std::size_t n = piece.fEnd - piece.fBegin;
  x += piece.fBegin;
  stepsY += piece.fBegin;
  if (next.fN == 0) next.Start(x[0], piece.fOrigin);
  const std::size_t head = std::min(n, ToFirstLane(fN));
  const std::size_t whole = (n - head) / FSLanes::kCount * FSLanes::kCount;
  const auto addOneByOne = [&](std::size_t from, std::size_t to) {
    for (std::size_t k = from; k < to; ++k) {
      next.AddX((fN + static_cast<int>(k)) % FSLanes::kCount, x[k], stepsY[k], 1.0);
    }
  };
  addOneByOne(0, head);
  FSSumStepsWith(whole, x + head, next.fOriginX, stepsY + head, next.fSumsX, next.fSquaresX,
                 next.fProducts);
  addOneByOne(head + whole, n);
  if (!FSAreOrdinary(next.fOriginX, next.fSquaresX.Sum())) return false;
  next.fSumsY = piece.fSums;
  next.fSquaresY = piece.fSquares;
  next.fN = fN + static_cast<int>(n);
  next.fWeight = fWeight + static_cast<double>(n);
  *this = next;
  return true;
}

std::size_t FSOpenPair::AddRun(std::size_t n, const double* x, const double* y) {
  const std::size_t most = std::min(n, static_cast<std::size_t>(kMost - fN));
  FSOpenPair next = *this;
  std::size_t k = 0;
  for (; k < most && (next.fN == 0 || next.fN % FSLanes::kCount != 0); ++k)
    next.Add(x[k], y[k], 1.0);
  const std::size_t whole = (most - k) / FSLanes::kCount * FSLanes::kCount;
  std::array<double, kMost> stepsY;
  for (std::size_t i = 0; i < whole; ++i) stepsY[i] = y[k + i] - next.fOriginY;
  FSSumStepsWith(whole, x + k, next.fOriginX, stepsY.data(), next.fSumsX, next.fSquaresX,
                 next.fProducts);
  FSSumSteps(
      whole, [&](std::size_t i) { return y[k + i]; }, next.fOriginY, next.fSumsY, next.fSquaresY);
  next.fN += static_cast<int>(whole);
  next.fWeight += static_cast<double>(whole);
  for (k += whole; k < most; ++k) next.Add(x[k], y[k], 1.0);
  if (!FSAreOrdinary(next.fOriginX, next.fSquaresX.Sum())) return 0;
  *this = next;
  return most;
}

FSPairStats FSOpenPair::Close() {
  FSPairStats closed;
  const double n = fWeight;
  const double sumX = fSumsX.Sum(), sumY = fSumsY.Sum();
  closed.fWeight = n;
  closed.fMeanX.fValue = fOriginX;
  closed.fMeanX.Move(sumX / n);
  closed.fMeanY.fValue = fOriginY;
  closed.fMeanY.Move(sumY / n);
  closed.fSxx = std::max(fSquaresX.Sum() - sumX * (sumX / n), 0.0);
  closed.fSyy = std::max(fSquaresY.Sum() - sumY * (sumY / n), 0.0);
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
  fSumsY.Coarsen(byY);
  fSquaresY.Coarsen(2 * byY);
}
