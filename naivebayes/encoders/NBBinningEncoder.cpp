#include "naivebayes/encoders/NBBinningEncoder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <ostream>

#include "common/MissingValue.h"
#include "naivebayes/model/NBayesInputBase.h"

namespace {

std::vector<double> EqualWidths(double min, double max, int bins) {
  std::vector<double> cutpoints;
  const double width = (max - min) / bins;
  for (int i = 1; i < bins; ++i) {
    // A range that no double can hold still has cutpoints.
    cutpoints.push_back(std::isfinite(width) ? min + i * width
                                             : std::lerp(min, max, static_cast<double>(i) / bins));
  }
  return cutpoints;
}

}  // namespace

NBBinningEncoder::NBBinningEncoder(double min, double max, int bins)
    : fNBins(bins), fvCutpoints(EqualWidths(min, max, bins)), fGrid(fvCutpoints) {}

NBBinningEncoder::NBBinningEncoder(const std::vector<double>& cutpoints)
    : fNBins(static_cast<int>(cutpoints.size()) + 1), fvCutpoints(cutpoints), fGrid(cutpoints) {}

// The number of cutpoints strictly below the value. The halving has no branch that depends on the
// data, which random values would mispredict.
std::int32_t NBBinningEncoder::BinOf(double value) const {
  if (fvCutpoints.empty()) return value >= 0 ? 1 : 0;
  const double* first = fvCutpoints.data();
  std::size_t length = fvCutpoints.size();
  while (length > 1) {
    const std::size_t half = length / 2;
    first += first[half - 1] < value ? half : 0;
    length -= half;
  }
  return static_cast<std::int32_t>(first - fvCutpoints.data()) + (*first < value ? 1 : 0);
}

double NBBinningEncoder::Encode(double value) const {
  return IsMissingNumber(value) ? kMissingCode : BinOf(value);
}

void NBBinningEncoder::EncodeColumn(const double* values, std::size_t cases,
                                    std::int32_t* codes) const {
  if (fGrid.IsUsable()) {
    fGrid.Encode(values, cases, codes);
  } else {
    for (std::size_t i = 0; i < cases; ++i) {
      codes[i] = MCMV::IsMissing(values[i]) ? kMissingCode : BinOf(values[i]);
    }
  }
  if (GetUserMissingInfo() == nullptr) return;
  for (std::size_t i = 0; i < cases; ++i) {
    if (IsMissingNumber(values[i])) codes[i] = kMissingCode;
  }
}

std::unique_ptr<NBBinningEncoder> NBBinningEncoder::CreateRebinned(
    const NBayesInputBase* counts) const {
  auto copy = std::make_unique<NBBinningEncoder>(*this);
  const int bins = std::min(fNBins, counts->GetNCategories());
  std::vector<int> filled;
  for (int m = 0; m < bins; ++m) {
    if (counts->GetRowTotal(m) > 0) filled.push_back(m);
  }
  if (static_cast<int>(filled.size()) >= fNBins || filled.size() < 2) return copy;
  auto& cuts = copy->fvCutpoints;
  // Cutpoint i ends bin i: those before the first and after the last filled bin are out of reach.
  std::fill(cuts.begin(), cuts.begin() + filled.front(), std::numeric_limits<double>::lowest());
  std::fill(cuts.begin() + filled.back(), cuts.end(), std::numeric_limits<double>::max());
  for (std::size_t f = 1; f < filled.size(); ++f) {
    const int left = filled[f - 1], right = filled[f];
    const double middle = std::midpoint(fvCutpoints[left], fvCutpoints[right - 1]);
    if (right - left > 1) std::fill(cuts.begin() + left, cuts.begin() + right, middle);
  }
  copy->fGrid = NBBinGrid(cuts);
  return copy;
}

std::unique_ptr<INBEncoder> NBBinningEncoder::Clone() const {
  return std::make_unique<NBBinningEncoder>(*this);
}

void NBBinningEncoder::Display(std::ostream& os) const {
  os << "Binning encoder, " << fNBins << " bins, cutpoints:";
  for (double cut : fvCutpoints) os << ' ' << cut;
  os << '\n';
}
