#include "operations/ShowEvidence.h"

#include <string>
#include <vector>

#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "host/text/CsvText.h"
#include "modelfiles/export/ScoringModel.h"
#include "naivebayes/model/NBEvidence.h"

namespace PredSelect {

namespace {

using MCHost::OutputText;
using MCModelFiles::ScoringInput;
using MCModelFiles::ScoringModel;
using MCModelFiles::ScoringVariable;

std::string Digits(double number) {
  std::string text;
  MCHost::AppendNumber(text, number);
  return text;
}

std::string CategoryOf(const ScoringVariable& variable, std::size_t i) {
  return variable.fbTexts ? variable.fTexts[i] : Digits(variable.fNumbers[i]);
}

// A category, or a bin: open below, closed above.
std::string ValueOf(const ScoringInput& input, std::size_t row) {
  if (!input.fbBinned) return CategoryOf(input, row);
  const bool isLast = row == input.fCuts.size();
  return "(" + (row == 0 ? "-inf" : Digits(input.fCuts[row - 1])) + ", " +
         (isLast ? "inf)" : Digits(input.fCuts[row]) + "]");
}

// By class; of two, against the other one.
std::vector<double> WeightsOf(const double* probabilities, std::size_t classes,
                              const NBCalibration& calibration) {
  std::vector<double> weights;
  NBEvidence::Append(probabilities, classes, weights);
  if (classes == 2) weights = {weights[0] - weights[1], weights[1] - weights[0]};
  for (double& weight : weights) weight /= calibration.GetTemperature();
  return weights;
}

class EvidenceTable {
 public:
  explicit EvidenceTable(const ScoringModel& model)
      : fTarget(model.fTarget),
        fCalibration(model.fCalibration),
        fTable("Weights of Evidence", "WeightsOfEvidence") {
    fTable.Flat();
  }

  void Add(const ScoringInput& input) {
    const std::size_t classes = fTarget.GetNCategories();
    for (std::size_t row = 0; row < input.GetNRows(); ++row) {
      const std::vector<double> weights =
          WeightsOf(&input.fFactors[row * classes], classes, fCalibration);
      for (std::size_t k = 0; k < classes; ++k) {
        const BpCategory line = fRows.AddCategory(OutputText::Literal(input.fName));
        fTable.SetCell({line, fValue}, OutputText::Literal(ValueOf(input, row)));
        fTable.SetCell({line, fClass}, OutputText::Literal(CategoryOf(fTarget, k)));
        fTable.SetCell({line, fCount}, input.fCounts[row * classes + k]);
        fTable.SetCell({line, fWeight}, weights[k]);
      }
    }
  }

  void Show() { fTable.Show(); }

 private:
  const ScoringVariable& fTarget;
  const NBCalibration& fCalibration;
  BpPivotTable fTable;
  BpDimension fRows = fTable.RowDimension("Predictor");
  BpDimension fColumns = fTable.ColumnDimension("Statistics");
  BpCategory fValue = fColumns.AddCategory(BpString("Value"));
  BpCategory fClass = fColumns.AddCategory(BpString("Class"));
  BpCategory fCount = fColumns.AddCategory(BpString("N"), BpProcedure::Count());
  BpCategory fWeight =
      fColumns.AddCategory(BpString("Weight of Evidence"), BpProcedure::Coefficient());
};

}  // namespace

void ShowEvidence(const INBAlgorithm& model) {
  const ScoringModel tables(model);
  if (tables.fInputs.empty()) return;
  EvidenceTable table(tables);
  for (const ScoringInput& input : tables.fInputs) table.Add(input);
  table.Show();
}

void ShowBaseValues(const INBAlgorithm& model) {
  const ScoringModel tables(model);
  BpPivotTable table("Base Values", "BaseValues");
  BpDimension rows = table.RowDimension("Class");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory prior = columns.AddCategory(BpString("Prior"), BpProcedure::GeneralStat());
  const BpCategory weight =
      columns.AddCategory(BpString("Weight of Evidence"), BpProcedure::Coefficient());
  const std::vector<double> weights =
      WeightsOf(tables.fPriors.data(), tables.GetNClasses(), tables.fCalibration);
  for (std::size_t k = 0; k < weights.size(); ++k) {
    const BpCategory row = rows.AddCategory(OutputText::Literal(CategoryOf(tables.fTarget, k)));
    table.SetCell({row, prior}, tables.fPriors[k]);
    table.SetCell({row, weight}, weights[k]);
  }
  table.Show();
}

}  // namespace PredSelect
