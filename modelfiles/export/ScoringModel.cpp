#include "modelfiles/export/ScoringModel.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "common/MCAssert.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/encoders/NBCatNumEncoder.h"
#include "naivebayes/encoders/NBNumericUserMissing.h"
#include "naivebayes/encoders/NBStringEncoder.h"
#include "naivebayes/variables/NBContVar.h"

namespace MCModelFiles {

namespace {

constexpr double kHighest = std::numeric_limits<double>::max();

void DescribeCategories(const INBVariable& variable, int categories, ScoringVariable& described) {
  const INBEncoder* encoder = variable.GetEncoder();
  const auto* numbers = dynamic_cast<const NBCatNumEncoder*>(encoder);
  const auto* texts = dynamic_cast<const NBStringEncoder*>(encoder);
  described.fbTexts = texts != nullptr;
  for (int code = 0; code < categories; ++code) {
    // What is known by its number alone goes by that number.
    const bool isKnown = code < encoder->GetNumberOfCategories();
    if (texts != nullptr) {
      described.fTexts.push_back(isKnown ? *texts->Decode(code) : std::to_string(code));
    } else {
      described.fNumbers.push_back(isKnown ? numbers->Decode(code) + 0.0 : code);
    }
  }
}

void AddRow(const NBayesInput& input, int category, ScoringInput& described) {
  for (int k = 0; k < input.GetNTargetCategories(); ++k) {
    described.fCounts.push_back(input.GetCount(category, k));
    described.fFactors.push_back(input.GetProbability(category, k));
  }
}

// The cutpoints that separate values, each once, and the rows that values between them fall into.
void DescribeBins(const NBayesInput& input, const NBContVar& variable, ScoringInput& described) {
  const std::vector<double>& cuts = variable.GetEncoder()->GetBinningCutpoints();
  const auto beyond = [&cuts](double cut) {
    return static_cast<int>(std::upper_bound(cuts.begin(), cuts.end(), cut) - cuts.begin());
  };
  AddRow(input, beyond(-kHighest), described);
  for (const double cut : cuts) {
    const bool isNew = described.fCuts.empty() || cut > described.fCuts.back();
    if (!isNew || std::abs(cut) >= kHighest) continue;
    described.fCuts.push_back(cut);
    AddRow(input, beyond(cut), described);
  }
  described.fLow = variable.GetMin();
  described.fHigh = variable.GetMax();
  const auto* missing = dynamic_cast<const NBNumericUserMissing*>(variable.GetUserMissingInfo());
  if (missing == nullptr) return;
  described.fMissing = missing->GetDiscreteValues();
  const NBNumericInterval& range = missing->GetInterval();
  if (missing->HasInterval() && range.GetLeftEnd() <= range.GetRightEnd()) {
    described.fMissingRange.emplace(range.GetLeftEnd(), range.GetRightEnd());
  }
}

ScoringInput Describe(const NBayesInput& input) {
  const INBVariable& variable = *input.GetVariable();
  ScoringInput described;
  described.fName = variable.GetVariableName();
  described.fLabel = variable.GetVariableLabel();
  const auto* binned = dynamic_cast<const NBContVar*>(&variable);
  described.fbBinned = binned != nullptr;
  if (binned != nullptr) {
    DescribeBins(input, *binned, described);
  } else {
    DescribeCategories(variable, input.GetNCategories(), described);
    for (int m = 0; m < input.GetNCategories(); ++m) AddRow(input, m, described);
  }
  return described;
}

// Takes the numbers from `low` to `high` out of the intervals.
std::vector<ScoringInterval> Without(const std::vector<ScoringInterval>& intervals, double low,
                                     double high) {
  std::vector<ScoringInterval> left;
  for (const ScoringInterval& interval : intervals) {
    const double before = std::min(interval.fUpTo, std::nextafter(low, -kHighest));
    const double after = std::max(interval.fAbove, high);
    if (interval.fAbove < before) left.push_back({interval.fAbove, before, interval.fRow});
    if (after < interval.fUpTo) left.push_back({after, interval.fUpTo, interval.fRow});
  }
  return left;
}

}  // namespace

ScoringModel::ScoringModel(const INBAlgorithm& model) {
  const auto* built = dynamic_cast<const NBAlgorithm*>(&model);
  MCCommon::Assert(built != nullptr && built->IsModelBuilt(), "built", "modelfiles/ScoringModel");
  const NBayesOutput& output = built->GetOutput();
  const INBVariable& target = *output.GetVariable();
  fTarget.fName = target.GetVariableName();
  fTarget.fLabel = target.GetVariableLabel();
  DescribeCategories(target, output.GetNCategories(), fTarget);
  for (int k = 0; k < output.GetNCategories(); ++k) fCounts.push_back(output.GetCount(k));
  fPriors = output.GetPriors();
  fTotalWeight = built->GetTotalWeight();
  fCalibration = built->GetCalibration();
  double weight = 0;
  double excluded = 0;
  int nExcluded = 0;
  model.GetNValidNExcluded(weight, excluded, fNRecords, nExcluded);
  for (const NBayesInput& input : built->GetInputs()) fInputs.push_back(Describe(input));
}

std::vector<ScoringInterval> IntervalsOf(const ScoringInput& input) {
  std::vector<ScoringInterval> intervals;
  double above = -kHighest;  // which is missing itself
  for (const double cut : input.fCuts) {
    intervals.push_back({above, cut, intervals.size()});
    above = cut;
  }
  intervals.push_back({above, kHighest, intervals.size()});
  for (const double value : input.fMissing) intervals = Without(intervals, value, value);
  if (input.fMissingRange) {
    intervals = Without(intervals, input.fMissingRange->first, input.fMissingRange->second);
  }
  return intervals;
}

std::vector<double> EvidenceOf(const ScoringInput& input, std::size_t classes) {
  std::vector<double> evidence;
  for (std::size_t row = 0; row < input.GetNRows(); ++row) {
    const auto first = input.fFactors.begin() + static_cast<std::ptrdiff_t>(row * classes);
    const double largest = *std::max_element(first, first + static_cast<std::ptrdiff_t>(classes));
    // The quotient of neighbours is better than the difference of their logarithms.
    for (std::size_t k = 0; k < classes; ++k) {
      evidence.push_back(std::log(first[static_cast<std::ptrdiff_t>(k)] / largest));
    }
  }
  return evidence;
}

std::vector<std::size_t> ClassesByWeight(const ScoringModel& model) {
  std::vector<std::size_t> classes(model.GetNClasses());
  std::iota(classes.begin(), classes.end(), std::size_t{0});
  std::stable_sort(classes.begin(), classes.end(), [&model](std::size_t a, std::size_t b) {
    return model.fCounts[a] > model.fCounts[b];
  });
  return classes;
}

}  // namespace MCModelFiles
