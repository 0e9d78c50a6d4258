#include "host/output/evaluation/ShowEvaluation.h"

#include <utility>

#include "host/output/pivot/BpGroup.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"

namespace MCHost {

namespace {

using MCCommon::Estimate;
using MCCommon::Evaluation;
using MCCommon::Measure;

constexpr std::size_t kMostColumns = 12;  // of a page's table of confusions

// Value, and its interval.
struct EstimateColumns {
  BpCategory fValue;
  BpCategory fLow;
  BpCategory fHigh;

  static EstimateColumns Add(BpGroup group) {
    return {group.AddCategory(BpString("Value"), BpProcedure::GeneralStat()),
            group.AddCategory(BpString("Lower"), BpProcedure::GeneralStat()),
            group.AddCategory(BpString("Upper"), BpProcedure::GeneralStat())};
  }

  void Set(BpPivotTable& table, const BpCategory& row, const Estimate& estimate) const {
    table.SetCell({row, fValue}, estimate.fValue);
    table.SetCell({row, fLow}, estimate.fLow);
    table.SetCell({row, fHigh}, estimate.fHigh);
  }
};

void ShowMeasures(const Evaluation& evaluation, const OutputText& caption) {
  BpPivotTable table("Evaluation", "Evaluation");
  table.Flat();
  if (!caption.fKey.empty()) table.Caption(caption);
  BpDimension rows = table.RowDimension("Measure");
  BpDimension columns = table.ColumnDimension("Statistics");
  const auto general = BpProcedure::GeneralStat();
  const BpCategory value = columns.AddCategory(BpString("Value"), general);
  BpGroup interval = columns.AddGroup(BpString("Confidence Interval"));
  const BpCategory low = interval.AddCategory(BpString("Lower"), general);
  const BpCategory high = interval.AddCategory(BpString("Upper"), general);
  const BpCategory majority = columns.AddCategory(BpString("By Majority"), general);
  const BpCategory prior = columns.AddCategory(BpString("By Prior"), general);
  for (std::size_t i = 0; i < MCCommon::kNMeasures; ++i) {
    const auto measure = static_cast<Measure>(i);
    BpCategory row = rows.AddCategory(BpString(NameOf(measure)));
    const Estimate& estimate = Of(evaluation.fMeasures, measure);
    table.SetCell({row, value}, estimate.fValue);
    table.SetCell({row, low}, estimate.fLow);
    table.SetCell({row, high}, estimate.fHigh);
    table.SetCell({row, majority}, Of(evaluation.fMajority, measure).fValue);
    table.SetCell({row, prior}, Of(evaluation.fPrior, measure).fValue);
    if (measure == Measure::kAUC && evaluation.fbAUCRounded) {
      row.Note(BpString("Probabilities were rounded for the AUC..."));
    }
  }
  table.Show();
}

void ShowClasses(const Evaluation& evaluation, const std::vector<OutputText>& classes) {
  BpPivotTable table("Class Evaluation", "ClassEvaluation");
  table.Flat();
  BpDimension rows = table.RowDimension("Class");
  BpDimension columns = table.ColumnDimension("Statistics");
  const auto recall = EstimateColumns::Add(columns.AddGroup(BpString("Recall")));
  const auto area = EstimateColumns::Add(columns.AddGroup(BpString("AUC")));
  const auto precision = EstimateColumns::Add(columns.AddGroup(BpString("Precision")));
  const BpCategory observed = columns.AddCategory(BpString("Observed"), BpProcedure::Count());
  const BpCategory predicted = columns.AddCategory(BpString("Predicted"), BpProcedure::Count());
  for (std::size_t k = 0; k < classes.size(); ++k) {
    const MCCommon::ClassEvaluation& own = evaluation.fClasses[k];
    const BpCategory row = rows.AddCategory(classes[k]);
    table.SetCell({row, observed}, own.fObserved);
    table.SetCell({row, predicted}, own.fPredicted);
    recall.Set(table, row, own.fRecall);
    precision.Set(table, row, own.fPrecision);
    area.Set(table, row, own.fAUC);
  }
  table.Show();
}

void ShowSquare(const Evaluation& evaluation, const std::vector<OutputText>& classes) {
  BpPivotTable table("Confusions", "Confusions");
  BpDimension rows = table.RowDimension("Observed");
  BpDimension columns = table.ColumnDimension("Predicted");
  columns.ShowName();
  std::vector<BpCategory> predicted;
  for (const OutputText& text : classes) {
    predicted.push_back(columns.AddCategory(text, BpProcedure::Count()));
  }
  for (std::size_t i = 0; i < classes.size(); ++i) {
    const BpCategory row = rows.AddCategory(classes[i]);
    for (std::size_t j = 0; j < classes.size(); ++j) {
      table.SetCell({row, predicted[j]}, evaluation.fConfusions[i][j]);
    }
  }
  table.Show();
}

void ShowMatrix(const Evaluation& evaluation, const std::vector<OutputText>& classes) {
  BpPivotTable table("Confusion Matrix", "ConfusionMatrix");
  table.ForPrograms();
  BpDimension observed = table.RowDimension("Observed");
  BpDimension predicted = table.RowDimension("Predicted");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory cases = columns.AddCategory(BpString("Cases"), BpProcedure::Count());
  const BpCategory percent =
      columns.AddCategory(BpString("Percent of Category"), BpProcedure::Percent());
  std::vector<BpCategory> to;
  for (const OutputText& text : classes) to.push_back(predicted.AddCategory(text));
  for (std::size_t i = 0; i < classes.size(); ++i) {
    const BpCategory from = observed.AddCategory(classes[i]);
    for (std::size_t j = 0; j < classes.size(); ++j) {
      const double n = evaluation.fConfusions[i][j];
      if (!(n > 0.0)) continue;
      table.SetCell({from, to[j], cases}, n);
      table.SetCell({from, to[j], percent}, 100.0 * n / evaluation.fClasses[i].fObserved);
    }
  }
  table.Show();
}

void ShowCalibration(const Evaluation& evaluation) {
  BpPivotTable table("Calibration", "Calibration");
  table.ForPrograms();
  BpDimension rows = table.RowDimension("Bin");
  BpDimension columns = table.ColumnDimension("Statistics");
  const auto general = BpProcedure::GeneralStat();
  const BpCategory from = columns.AddCategory(BpString("From"), general);
  const BpCategory to = columns.AddCategory(BpString("To"), general);
  const BpCategory cases = columns.AddCategory(BpString("Cases"), BpProcedure::Count());
  const BpCategory probability = columns.AddCategory(BpString("Mean Probability"), general);
  const BpCategory accuracy = columns.AddCategory(BpString("Accuracy"), general);
  for (const MCCommon::CalibrationBin& bin : evaluation.fCalibration) {
    const BpCategory row = rows.AddCategory(
        OutputText::Literal(FormatNumber(bin.fFrom, MCHost::OutputFormat::kCoefficient)));
    table.SetCell({row, from}, bin.fFrom);
    table.SetCell({row, to}, bin.fTo);
    table.SetCell({row, cases}, bin.fCases);
    table.SetCell({row, probability}, bin.fProbability);
    table.SetCell({row, accuracy}, bin.fAccuracy);
  }
  table.Show();
}

}  // namespace

const char* NameOf(Measure measure) {
  switch (measure) {
    case Measure::kAccuracy:
      return "Accuracy";
    case Measure::kBalancedAccuracy:
      return "Balanced Accuracy";
    case Measure::kAUC:
      return "AUC";
    case Measure::kLogLoss:
      return "Log Loss";
    case Measure::kBrier:
      return "Brier Score";
    case Measure::kKappa:
      return "Cohen's Kappa";
    case Measure::kMCC:
      return "Matthews Correlation";
    case Measure::kCalibrationError:
      return "Calibration Error";
  }
  return "";
}

void ShowEvaluation(const Evaluation& evaluation, const std::vector<OutputText>& classes,
                    const OutputText& caption) {
  ShowMeasures(evaluation, caption);
  ShowClasses(evaluation, classes);
  if (!evaluation.fCalibration.empty()) ShowCalibration(evaluation);
}

void ShowConfusions(const Evaluation& evaluation, const std::vector<OutputText>& classes) {
  if (classes.size() <= kMostColumns) ShowSquare(evaluation, classes);
  ShowMatrix(evaluation, classes);
}

}  // namespace MCHost
