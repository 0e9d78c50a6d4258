#include "feature/accumulators/FSOpenGroup.h"

#include <algorithm>

std::size_t FSOpenGroup::AddRun(std::size_t n, const FSRun& run) {
  const std::size_t most = std::min(n, static_cast<std::size_t>(kMost - fN));
  FSOpenGroup next = *this;
  if (fN == 0 && most > 0) next.fOrigin = run.ValueAt(0);
  next.fSums.AddRun(fN, most, run, next.fOrigin);
  next.fN += static_cast<int>(most);
  if (!FSAreOrdinary(next.fOrigin, next.fSums.fSquares.Sum())) return 0;
  *this = next;
  return most;
}

FSGroupStats FSOpenGroup::Close() {
  FSGroupStats closed;
  closed.fWeight = fSums.fWeights.Sum();
  closed.fMean.fValue = fOrigin;
  const double sum = fSums.fSums.Sum();
  closed.fMean.Move(sum / closed.fWeight);
  closed.fSquaredDeviations = std::max(fSums.fSquares.Sum() - sum * (sum / closed.fWeight), 0.0);
  *this = {};
  return closed;
}
