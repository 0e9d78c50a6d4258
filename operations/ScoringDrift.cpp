#include "operations/ScoringDrift.h"

#include <algorithm>
#include <limits>
#include <numeric>

#include "common/MCAssert.h"
#include "common/MissingValue.h"
#include "common/RecordBlock.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/encoders/NBNumericUserMissing.h"
#include "naivebayes/model/NBScoredBlock.h"
#include "naivebayes/variables/NBContVar.h"

namespace PredSelect {

namespace {

// The share of the training weight that no category of the input has.
double MissingShare(const NBayesInput& input, double totalWeight) {
  double valid = 0.0;
  for (int m = 0; m < input.GetNCategories(); ++m) valid += input.GetRowTotal(m);
  return totalWeight > 0.0 ? std::max(0.0, totalWeight - valid) / totalWeight : 0.0;
}

// How many values pass the test. Several sums at a time, each of doubles like what is compared, so
// that a compiler vectorises the loop and counting costs next to nothing beside scoring.
template <class Test>
std::int64_t CountWhere(const double* values, std::size_t cases, Test test) {
  constexpr std::size_t kLanes = 8;
  double counts[kLanes] = {};
  std::size_t i = 0;
  for (; i + kLanes <= cases; i += kLanes) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      counts[lane] += test(values[i + lane]) ? 1.0 : 0.0;
    }
  }
  for (; i < cases; ++i) counts[0] += test(values[i]) ? 1.0 : 0.0;
  return static_cast<std::int64_t>(std::accumulate(counts, counts + kLanes, 0.0));
}

}  // namespace

struct DriftCounter::Input {
  std::size_t fColumn;
  double fLow;  // what is below is new: of the codes of categories, what is negative
  double fHigh;
  const NBNumericUserMissing* fpUserMissing;  // of numbers; null for none
  std::vector<double> fWithoutUserMissing{};

  const double* Values(const MCCommon::RecordBlock& block) {
    const double* values = block.Column(fColumn);
    if (fpUserMissing == nullptr) return values;
    fWithoutUserMissing.assign(values, values + block.Cases());
    std::replace_if(
        fWithoutUserMissing.begin(), fWithoutUserMissing.end(),
        [this](double value) { return fpUserMissing->Contains(value); }, KOVA_SystemMissing);
    return fWithoutUserMissing.data();
  }
};

DriftCounter::DriftCounter(const INBAlgorithm& model) {
  const auto* built = dynamic_cast<const NBAlgorithm*>(&model);
  MCCommon::Assert(built != nullptr, "built != 0", "operations/ScoringDrift");
  for (const NBayesInput& input : built->GetInputs()) {
    const INBVariable& variable = *input.GetVariable();
    const auto* range = dynamic_cast<const NBContVar*>(&variable);
    const auto* missing =
        range == nullptr ? nullptr
                         : dynamic_cast<const NBNumericUserMissing*>(range->GetUserMissingInfo());
    fInputs.push_back(
        {static_cast<std::size_t>(input.GetVarIndex()), range == nullptr ? 0.0 : range->GetMin(),
         range == nullptr ? std::numeric_limits<double>::max() : range->GetMax(), missing});
    PredictorDrift drift;
    drift.fName = variable.GetVariableName();
    drift.fbCategorical = range == nullptr;
    drift.fTrainingMissing = MissingShare(input, built->GetTotalWeight());
    fDrift.fPredictors.push_back(drift);
  }
}

DriftCounter::~DriftCounter() = default;

void DriftCounter::Count(const MCCommon::RecordBlock& block, const NBScoredBlock& scored) {
  const std::size_t cases = block.Cases();
  fDrift.fNCases += static_cast<std::int64_t>(cases);
  for (std::size_t i = 0; i < cases; ++i) {
    fDrift.fNUnusable += scored.GetWarning(i) == MCNaive::kAllInputsMissing ? 1 : 0;
  }
  for (std::size_t j = 0; j < fInputs.size(); ++j) {
    const double* values = fInputs[j].Values(block);
    PredictorDrift& drift = fDrift.fPredictors[j];
    // The marker of missing values is the lowest of all numbers.
    const double low = fInputs[j].fLow;
    const double high = fInputs[j].fHigh;
    const std::int64_t below = CountWhere(values, cases, [low](double v) { return v < low; });
    const auto isMissing = [](double v) { return v == KOVA_SystemMissing; };
    const std::int64_t missing = below == 0 ? 0 : CountWhere(values, cases, isMissing);
    drift.fNMissing += missing;
    if (drift.fbCategorical) {
      drift.fNUnseen += below - missing;
    } else {
      drift.fNBelow += below - missing;
      drift.fNAbove += CountWhere(values, cases, [high](double v) { return v > high; });
    }
  }
}

}  // namespace PredSelect
