#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/output/ShowText.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpNumber.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "operations/ModelSummary.h"

namespace PredSelect {

namespace {

using MCHost::OutputText;

constexpr std::size_t kShownConfusions = 5;

void ShowSteps(const ModelSummary& summary) {
  BpPivotTable table("Chosen Predictors", "ChosenPredictors");
  table.Flat();
  BpDimension rows = table.RowDimension("Predictor");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory step = columns.AddCategory(BpString("Step"), BpProcedure::Count());
  const BpCategory criterion =
      columns.AddCategory(BpString(summary.fCriterion), BpProcedure::GeneralStat());
  const BpCategory better = columns.AddCategory(BpString("Better By"), BpProcedure::GeneralStat());
  for (std::size_t i = 0; i < summary.fSteps.size(); ++i) {
    const ModelStep& shown = summary.fSteps[i];
    const BpCategory row = rows.AddCategory(OutputText::Variable(shown.fName, shown.fLabel));
    table.SetCell({row, step}, static_cast<double>(i + 1));
    table.SetCell({row, criterion}, shown.fCriterion);
    table.SetCell({row, better}, shown.fBetterBy);
  }
  std::vector<OutputText> below;
  const std::size_t nMore = static_cast<std::size_t>(summary.fNTried) - summary.fSteps.size();
  if (nMore > 0) {
    BpComposite more("^1 more predictors were tried and did not help...");
    below.push_back(more.AddLiteral(std::to_string(nMore)).Finish());
  }
  if (!summary.fLeftOut.empty()) below.push_back(LeftOutText(summary.fLeftOut));
  if (!below.empty()) table.Caption(Paragraphs(std::move(below)));
  table.Show();
}

// What the model is worth, in a sentence: by the last sample.
OutputText Worth(const ModelSummary& summary) {
  const ModelSample& sample = summary.fSamples.back();
  BpComposite text(sample.fName == "Test" ? "^1 predictors, ^2 of the test cases, ^3 by guessing..."
                                          : "^1 predictors, ^2 of the cases, ^3 by guessing...");
  return text.AddLiteral(std::to_string(summary.fSteps.size()))
      .Add(BpNumber(sample.fCorrect, BpProcedure::Percent()))
      .Add(BpNumber(sample.fGuessing, BpProcedure::Percent()))
      .Finish();
}

void ShowAccuracy(const ModelSummary& summary) {
  BpPivotTable table("Accuracy", "Accuracy");
  table.Flat();
  BpDimension rows = table.RowDimension("Sample");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory correct =
      columns.AddCategory(BpString("Percent Correct"), BpProcedure::Percent());
  const BpCategory guessing =
      columns.AddCategory(BpString("Percent Correct by Guessing"), BpProcedure::Percent());
  const BpCategory cases = columns.AddCategory(BpString("Cases"), BpProcedure::Count());
  for (const ModelSample& sample : summary.fSamples) {
    const BpCategory row = rows.AddCategory(BpString(sample.fName));
    table.SetCell({row, correct}, sample.fCorrect);
    table.SetCell({row, guessing}, sample.fGuessing);
    table.SetCell({row, cases}, sample.fCases);
  }
  table.Caption(Worth(summary));
  table.Show();
}

void ShowConfusions(const ModelSummary& summary) {
  BpPivotTable table("Worst Confusions", "WorstConfusions");
  table.Flat();
  BpDimension rows = table.RowDimension("Observed");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory predicted = columns.AddCategory(BpString("Predicted"));
  const BpCategory cases = columns.AddCategory(BpString("Cases"), BpProcedure::Count());
  const BpCategory percent =
      columns.AddCategory(BpString("Percent of Category"), BpProcedure::Percent());
  const std::size_t nShown = std::min(summary.fConfusions.size(), kShownConfusions);
  for (std::size_t i = 0; i < nShown; ++i) {
    const ModelConfusion& shown = summary.fConfusions[i];
    const BpCategory row = rows.AddCategory(shown.fObserved);
    table.SetCell({row, predicted}, shown.fPredicted);
    table.SetCell({row, cases}, shown.fCases);
    table.SetCell({row, percent}, shown.fPercent);
  }
  const std::size_t nMore = summary.fConfusions.size() - nShown;
  BpComposite more("^1 more pairs of categories are confused...");
  if (nMore > 0) table.Caption(more.AddLiteral(std::to_string(nMore)).Finish());
  table.Show();
}

// The categories of a dimension, each once.
class Categories {
 public:
  explicit Categories(BpDimension dimension) : fDimension(dimension) {}

  BpCategory Of(const OutputText& label) {
    const auto found = fPlaces.find(MCHost::TextId(label));
    if (found != fPlaces.end()) return found->second;
    return fPlaces.emplace(MCHost::TextId(label), fDimension.AddCategory(label)).first->second;
  }

 private:
  BpDimension fDimension;
  std::map<std::string, BpCategory> fPlaces;
};

void ShowMatrix(const ModelSummary& summary) {
  BpPivotTable table("Confusion Matrix", "ConfusionMatrix");
  table.ForPrograms();
  Categories samples(table.RowDimension("Sample"));
  Categories observed(table.RowDimension("Observed"));
  Categories predicted(table.RowDimension("Predicted"));
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory cases = columns.AddCategory(BpString("Cases"), BpProcedure::Count());
  const BpCategory percent =
      columns.AddCategory(BpString("Percent of Category"), BpProcedure::Percent());
  for (const ModelConfusion& cell : summary.fMatrix) {
    const BpCategory sample = samples.Of(BpString(cell.fSample));
    const BpCategory from = observed.Of(cell.fObserved);
    const BpCategory to = predicted.Of(cell.fPredicted);
    table.SetCell({sample, from, to, cases}, cell.fCases);
    table.SetCell({sample, from, to, percent}, cell.fPercent);
  }
  table.Show();
}

}  // namespace

void ShowModelSummary(const ModelSummary& summary) {
  if (summary.fNTried > 0 || !summary.fLeftOut.empty()) ShowSteps(summary);
  if (!summary.fSamples.empty()) ShowAccuracy(summary);
  if (!summary.fConfusions.empty()) ShowConfusions(summary);
  if (!summary.fMatrix.empty()) ShowMatrix(summary);
}

}  // namespace PredSelect
