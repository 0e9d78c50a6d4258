#include "host/output/evaluation/ShowCrossValidation.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "common/evaluation/Repeated.h"
#include "host/output/OutputFormat.h"
#include "host/output/evaluation/ShowEvaluation.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpGroup.h"
#include "host/output/pivot/BpNumber.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"

namespace MCHost {

namespace {

using MCCommon::Evaluation;
using MCCommon::Measure;
using MCCommon::Measures;

MCCommon::RepeatedMeasure SummaryOf(const std::vector<ShownFold>& folds, Measure measure,
                                    Measures Evaluation::*of) {
  std::vector<double> values;
  double share = 0.0;
  for (const ShownFold& fold : folds) {
    values.push_back(Of(fold.fEvaluation.*of, measure).fValue);
    share += fold.fTestShare / static_cast<double>(folds.size());
  }
  MCCommon::RepeatedMeasure summary = MCCommon::Summarize(values, share);
  // An interval ends where the measure does.
  const bool isCorrelation = measure == Measure::kKappa || measure == Measure::kMCC;
  const bool isLoss = measure == Measure::kLogLoss || measure == Measure::kBrier;
  MCCommon::Estimate& mean = summary.fMean;
  if (!MCMV::IsMissing(mean.fLow)) mean.fLow = std::max(mean.fLow, isCorrelation ? -1.0 : 0.0);
  if (!isLoss && !MCMV::IsMissing(mean.fHigh)) mean.fHigh = std::min(mean.fHigh, 1.0);
  return summary;
}

// How many folds and repeats there are.
OutputText Extent(const std::vector<ShownFold>& folds, bool isCalibrated) {
  int nFolds = 0;
  int nRepeats = 0;
  for (const ShownFold& fold : folds) {
    nFolds = std::max(nFolds, fold.fFold + 1);
    nRepeats = std::max(nRepeats, fold.fRepeat + 1);
  }
  return BpComposite(isCalibrated ? "Over ^1 folds, ^2 times, not calibrated..."
                                  : "Over ^1 folds, ^2 times...")
      .AddLiteral(std::to_string(nFolds))
      .AddLiteral(std::to_string(nRepeats))
      .Finish();
}

MCCommon::Estimate StabilityOf(const std::vector<ShownFold>& folds, std::size_t nCandidates) {
  std::vector<std::vector<int>> selections;
  for (const ShownFold& fold : folds) selections.push_back(fold.fvChosen);
  return MCCommon::StabilityOf(selections, static_cast<int>(nCandidates));
}

void ShowMeasures(const std::vector<ShownFold>& folds, const MCCommon::Estimate& stability,
                  bool isCalibrated) {
  BpPivotTable table("Cross-Validation", "CrossValidation");
  table.Flat();
  table.Caption(Extent(folds, isCalibrated));
  const auto general = BpProcedure::GeneralStat();
  BpDimension rows = table.RowDimension("Measure");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory mean = columns.AddCategory(BpString("Mean"), general);
  BpGroup interval = columns.AddGroup(BpString("Confidence Interval"));
  const BpCategory low = interval.AddCategory(BpString("Lower"), general);
  const BpCategory high = interval.AddCategory(BpString("Upper"), general);
  const BpCategory deviation = columns.AddCategory(BpString("Between Folds"), general);
  const BpCategory majority = columns.AddCategory(BpString("By Majority"), general);
  const BpCategory prior = columns.AddCategory(BpString("By Prior"), general);
  for (std::size_t i = 0; i < MCCommon::kNMeasures; ++i) {
    const auto measure = static_cast<Measure>(i);
    const BpCategory row = rows.AddCategory(BpString(NameOf(measure)));
    const MCCommon::RepeatedMeasure own = SummaryOf(folds, measure, &Evaluation::fMeasures);
    table.SetCell({row, mean}, own.fMean.fValue);
    table.SetCell({row, low}, own.fMean.fLow);
    table.SetCell({row, high}, own.fMean.fHigh);
    table.SetCell({row, deviation}, own.fDeviation);
    table.SetCell({row, majority}, SummaryOf(folds, measure, &Evaluation::fMajority).fMean.fValue);
    table.SetCell({row, prior}, SummaryOf(folds, measure, &Evaluation::fPrior).fMean.fValue);
  }
  const BpCategory row = rows.AddCategory(BpString("Stability of Selection"));
  table.SetCell({row, mean}, stability.fValue);
  table.SetCell({row, low}, stability.fLow);
  table.SetCell({row, high}, stability.fHigh);
  table.Show();
}

OutputText StabilityText(const MCCommon::Estimate& stability) {
  const auto general = BpProcedure::GeneralStat();
  if (MCMV::IsMissing(stability.fValue)) return BpString("No stability can be given...");
  if (MCMV::IsMissing(stability.fLow)) {
    return BpComposite("Stability ^1...").Add(BpNumber(stability.fValue, general)).Finish();
  }
  return BpComposite("Stability ^1, from ^2 to ^3...")
      .Add(BpNumber(stability.fValue, general))
      .Add(BpNumber(stability.fLow, general))
      .Add(BpNumber(stability.fHigh, general))
      .Finish();
}

// Of the candidates those that some fold chose, the most often chosen first, then those that enter
// first.
void ShowStability(const std::vector<ShownFold>& folds, const std::vector<OutputText>& candidates,
                   const MCCommon::Estimate& stability) {
  struct Chosen {
    std::size_t fCandidate = 0;
    double fTimes = 0.0;
    double fSteps = 0.0;
  };
  std::vector<Chosen> chosen(candidates.size());
  for (std::size_t c = 0; c < chosen.size(); ++c) chosen[c].fCandidate = c;
  for (const ShownFold& fold : folds) {
    for (std::size_t step = 0; step < fold.fvChosen.size(); ++step) {
      Chosen& own = chosen[static_cast<std::size_t>(fold.fvChosen[step])];
      own.fTimes += 1.0;
      own.fSteps += static_cast<double>(step + 1);
    }
  }
  std::erase_if(chosen, [](const Chosen& own) { return own.fTimes == 0.0; });
  std::ranges::stable_sort(chosen, [](const Chosen& left, const Chosen& right) {
    if (left.fTimes != right.fTimes) return left.fTimes > right.fTimes;
    return left.fSteps < right.fSteps;
  });
  BpPivotTable table("Selection Stability", "SelectionStability");
  table.Flat();
  table.Caption(StabilityText(stability));
  BpDimension rows = table.RowDimension("Predictor");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory percent =
      columns.AddCategory(BpString("Percent of Folds"), BpProcedure::Percent());
  const BpCategory times = columns.AddCategory(BpString("Folds"), BpProcedure::Count());
  const BpCategory step = columns.AddCategory(BpString("Mean Step"), OutputFormat::kTenths);
  for (const Chosen& own : chosen) {
    const BpCategory row = rows.AddCategory(candidates[own.fCandidate]);
    table.SetCell({row, times}, own.fTimes);
    table.SetCell({row, percent}, 100.0 * own.fTimes / static_cast<double>(folds.size()));
    table.SetCell({row, step}, own.fSteps / own.fTimes);
  }
  table.Show();
}

void ShowFolds(const std::vector<ShownFold>& folds) {
  BpPivotTable table("Folds", "Folds");
  table.ForPrograms();
  BpDimension rows = table.RowDimension("Fold");
  BpDimension columns = table.ColumnDimension("Statistics");
  const auto count = BpProcedure::Count();
  const BpCategory repeat = columns.AddCategory(BpString("Repeat"), count);
  const BpCategory number = columns.AddCategory(BpString("Number"), count);
  const BpCategory cases = columns.AddCategory(BpString("Cases"), count);
  const BpCategory predictors = columns.AddCategory(BpString("Predictors"), count);
  std::vector<BpCategory> measures;
  for (std::size_t i = 0; i < MCCommon::kNMeasures; ++i) {
    measures.push_back(
        columns.AddCategory(BpString(NameOf(static_cast<Measure>(i))), BpProcedure::GeneralStat()));
  }
  for (const ShownFold& fold : folds) {
    const BpCategory row = rows.AddCategory(OutputText::Literal(
        std::to_string(fold.fRepeat + 1) + "." + std::to_string(fold.fFold + 1)));
    table.SetCell({row, repeat}, fold.fRepeat + 1.0);
    table.SetCell({row, number}, fold.fFold + 1.0);
    table.SetCell({row, cases}, fold.fEvaluation.fCases);
    table.SetCell({row, predictors}, static_cast<double>(fold.fvChosen.size()));
    for (std::size_t i = 0; i < MCCommon::kNMeasures; ++i) {
      table.SetCell({row, measures[i]}, fold.fEvaluation.fMeasures[i].fValue);
    }
  }
  table.Show();
}

}  // namespace

void ShowCrossValidation(const std::vector<ShownFold>& folds,
                         const std::vector<OutputText>& candidates, bool isCalibrated) {
  const MCCommon::Estimate stability = StabilityOf(folds, candidates.size());
  ShowMeasures(folds, stability, isCalibrated);
  if (!candidates.empty()) ShowStability(folds, candidates, stability);
  ShowFolds(folds);
}

}  // namespace MCHost
