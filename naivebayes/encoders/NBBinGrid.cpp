#include "naivebayes/encoders/NBBinGrid.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "common/MissingValue.h"
#include "naivebayes/NBLoops.h"
#include "naivebayes/encoders/INBEncoder.h"

namespace {

constexpr double kHighest = std::numeric_limits<double>::max();
constexpr double kMostCellsPerBin = 4;

bool AreOrdered(const std::vector<double>& cutpoints) {
  return std::is_sorted(cutpoints.begin(), cutpoints.end()) &&
         std::all_of(cutpoints.begin(), cutpoints.end(),
                     [](double cut) { return std::isfinite(cut); });
}

// The cutpoints that separate values: one of several equal ones, and none at the ends of the
// doubles, below which nothing counts and above which nothing is.
std::vector<double> Separating(const std::vector<double>& cutpoints) {
  std::vector<double> cuts;
  for (const double cut : cutpoints) {
    const bool separates = !MCMV::IsMissing(cut) && cut < kHighest;
    if (separates && (cuts.empty() || cut != cuts.back())) cuts.push_back(cut);
  }
  return cuts;
}

double LeastGap(const std::vector<double>& cuts) {
  double least = kHighest;
  for (std::size_t i = 1; i < cuts.size(); ++i) least = std::min(least, cuts[i] - cuts[i - 1]);
  return least;
}

}  // namespace

NBBinGrid::NBBinGrid(const std::vector<double>& cutpoints) {
  if (cutpoints.empty() || !AreOrdered(cutpoints)) return;
  const std::vector<double> cuts = Separating(cutpoints);
  if (cuts.size() > 1) {
    const double range = cuts.back() - cuts.front();
    fLow = cuts.front();
    fLast = std::ceil(2 * (range / LeastGap(cuts)));
    fScale = fLast / range;
    const double bins = static_cast<double>(cutpoints.size() + 1);
    if (!(fLast <= kMostCellsPerBin * bins) || !std::isnormal(fScale)) return;
  }
  const auto binBelow = [&cutpoints](double cut) {
    const auto at = std::lower_bound(cutpoints.begin(), cutpoints.end(), cut);
    return static_cast<std::int32_t>(at - cutpoints.begin());
  };
  for (const double cut : cuts) {
    std::int32_t found = 0;
    NBLoops::InUse().fFindCells(&cut, 1, fLow, fScale, fLast, &found);
    const auto cell = static_cast<std::size_t>(found);
    if (fvCells.size() > cell) {  // by the cutpoint before
      fvCells.clear();
      return;
    }
    FillTo(cell, binBelow(cut));
    const std::int32_t beyond = binBelow(std::nextafter(cut, kHighest)) - binBelow(cut);
    fvCells.push_back({cut, binBelow(cut), beyond});
  }
  FillTo(static_cast<std::size_t>(fLast) + 1, binBelow(kHighest));
  fvCells.push_back({kHighest, INBEncoder::kMissingCode, 0});
}

// Cells without a cutpoint, up to the one before.
void NBBinGrid::FillTo(std::size_t cell, std::int32_t bin) {
  while (fvCells.size() < cell) fvCells.push_back({kHighest, bin, 0});
}

// No branch on the data.
void NBBinGrid::Encode(const double* values, std::size_t cases, std::int32_t* bins) const {
  NBLoops::InUse().fFindCells(values, cases, fLow, fScale, fLast, bins);
  for (std::size_t i = 0; i < cases; ++i) {
    const Cell& cell = fvCells[static_cast<std::size_t>(bins[i])];
    bins[i] = cell.fBin + cell.fBeyond * (values[i] > cell.fCutpoint ? 1 : 0);
  }
}
