#include "operations/ScoreTable.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "common/MissingValue.h"
#include "host/command/VarSpecObj.h"
#include "host/data/DataTable.h"
#include "host/output/OutputDocument.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"
#include "modelfiles/ComponentFile.h"
#include "operations/DocumentParts.h"
#include "operations/ModelColumns.h"
#include "operations/RequestError.h"

namespace PredSelect {

namespace {

using MCHost::DataTable;

constexpr KOVA_Format kProbabilityFormat{KOVA_Format::kNumber, 5, 3};

// The new columns, and how many cases got a prediction.
struct Predictions {
  int fPredicted = -1;
  std::vector<int> fProbabilities;
  std::vector<std::string> fCategories;
  bool fbNumeric = true;
  std::int64_t fNScored = 0;
};

VarSpecObj Role(const char* name, const KOVA_DataSource& source) {
  return {"", name, CommandDescriptor("score", ""), source, false};
}

void AddPredicted(KOVA_DataSource& source, const std::string& asked, const INBVariable& target,
                  Predictions& predictions) {
  KovaVarName name;
  if (!Role("--predicted", source).NewVarNameByRoot(KovaVarName(asked), name)) {
    throw RequestError("predicted", "\"" + asked + "\" cannot name a new variable.");
  }
  std::size_t width = 1;
  for (int k = 0; k < target.GetNumberOfCategories(); ++k) {
    predictions.fCategories.push_back(CategoryText(target, k));
    width = std::max(width, predictions.fCategories.back().size());
  }
  predictions.fbNumeric = target.GetMeasureLevel() == INBVariable::kNumericCategorical;
  predictions.fPredicted =
      source.MakeVariable(name.GetName(), predictions.fbNumeric ? 0 : static_cast<int>(width));
  KOVA_Variable& variable = source.GetVariable(predictions.fPredicted);
  variable.SetMeasurementLevel(KOVA_Variable::kNominal);
  variable.SetLabel("Predicted value");
}

void AddProbabilities(KOVA_DataSource& source, const std::string& root, const INBVariable& target,
                      Predictions& predictions) {
  if (root.empty()) return;
  std::vector<KovaVarName> names;
  if (!Role("--probabilities", source)
           .NewVarNamesByRoot(KovaVarName(root), target.GetNumberOfCategories(), names)) {
    throw RequestError("probabilities", "\"" + root + "\" cannot name new variables.");
  }
  for (std::size_t k = 0; k < names.size(); ++k) {
    const int column = source.MakeVariable(names[k].GetName(), 0);
    KOVA_Variable& variable = source.GetVariable(column);
    variable.SetFormat(kProbabilityFormat);
    variable.SetWriteFormat(kProbabilityFormat);
    variable.SetMeasurementLevel(KOVA_Variable::kScale);
    variable.SetLabel("Predicted probability that " + target.GetVariableName() + " is " +
                      predictions.fCategories[k]);
    predictions.fProbabilities.push_back(column);
  }
}

// One batch of predictions, column by column, until it goes to the table.
class PredictionBatch {
 public:
  PredictionBatch(const INBAlgorithm& model, Predictions& predictions)
      : fModel(model), fPredictions(predictions) {
    const INBVariable& target = *model.GetVarList().GetVarAt(model.GetVarList().GetTargetIndex());
    for (int k = 0; k < target.GetNumberOfCategories(); ++k) {
      fNumbersOfCategory.push_back(CategoryNumber(target, k));
    }
    fProbabilities.resize(predictions.fProbabilities.size());
  }

  void Start(std::size_t cases) {
    fNumbers.assign(cases, KOVA_SystemMissing);
    fTexts.assign(cases, nullptr);
    for (std::vector<double>& column : fProbabilities) column.assign(cases, KOVA_SystemMissing);
  }

  void Score(std::size_t i, const MCCommon::Record& record) {
    NBOutput output(fModel.GetNTargetCategories());
    const MCNaive::MCStatus status = fModel.ScoreFullRecord(record, output);
    if (status.IsError() || output.GetWinningIndex() < 0) return;
    const auto winner = static_cast<std::size_t>(output.GetWinningIndex());
    fNumbers[i] = fNumbersOfCategory[winner];
    fTexts[i] = &fPredictions.fCategories[winner];
    for (std::size_t k = 0; k < fProbabilities.size(); ++k) {
      fProbabilities[k][i] = output.GetOutProbabilities()[k];
    }
    ++fPredictions.fNScored;
  }

  void Store(DataTable& table, std::int64_t firstCase) const {
    const std::size_t n = fNumbers.size();
    if (fPredictions.fbNumeric) {
      table.WriteNumbers(fPredictions.fPredicted, firstCase, fNumbers.data(), n);
    } else {
      table.WriteStrings(fPredictions.fPredicted, firstCase, fTexts.data(), n);
    }
    for (std::size_t k = 0; k < fProbabilities.size(); ++k) {
      table.WriteNumbers(fPredictions.fProbabilities[k], firstCase, fProbabilities[k].data(), n);
    }
  }

 private:
  const INBAlgorithm& fModel;
  Predictions& fPredictions;
  std::vector<double> fNumbersOfCategory;
  std::vector<double> fNumbers;
  std::vector<const std::string*> fTexts;
  std::vector<std::vector<double>> fProbabilities;
};

// False when the user stopped it.
bool Score(DataTable& table, const INBAlgorithm& model, ModelColumns& columns,
           const Surroundings& surroundings, Predictions& predictions) {
  PredictionBatch batch(model, predictions);
  MCCommon::Record record(static_cast<std::size_t>(model.GetVarList().Size()));
  const std::unique_ptr<MCHost::ITableScan> scan = table.Scan(columns.TableColumns());
  while (const MCHost::TableBatch* cases = scan->Next()) {
    if (surroundings.IsCancelled()) return false;
    batch.Start(cases->fNCases);
    for (std::size_t i = 0; i < cases->fNCases; ++i) {
      columns.FillRecord(*cases, i, record);
      batch.Score(i, record);
    }
    batch.Store(table, cases->fFirstCase);
  }
  return true;
}

void ShowCounts(const DataTable& table, const Predictions& predictions) {
  BpPivotTable counts("Scoring", "Scoring");
  BpDimension rows = counts.RowDimension("Cases");
  BpDimension columns = counts.ColumnDimension("Statistics");
  const BpCategory n = columns.AddCategory(BpString("N"), BpProcedure::Count());
  const auto nCases = static_cast<double>(table.CaseCount());
  const auto nScored = static_cast<double>(predictions.fNScored);
  counts.SetCell({rows.AddCategory(BpString("Predicted")), n}, nScored);
  counts.SetCell({rows.AddCategory(BpString("Not predicted")), n}, nCases - nScored);
  counts.SetCell({rows.AddCategory(BpString("Total")), n}, nCases);
  counts.Show();
}

}  // namespace

const INBAlgorithm& ModelOf(const ComponentFile& state, const std::string& name) {
  if (state.fpNaive != nullptr) return *state.fpNaive;
  throw RequestError("model", name + " holds a ranking of predictors, not a Naive Bayes model.");
}

Outcome ScoreTable(DataTable& table, const INBAlgorithm& model, MCHost::OutputDocument& document,
                   const ScoreRequest& request, const Surroundings& surroundings) {
  const INBVariable& target = *model.GetVarList().GetVarAt(model.GetVarList().GetTargetIndex());
  MCHost::Session session(table, document);
  const MCHost::SessionScope scope(session);
  RecordData(document, table.CaseCount(), table.ColumnCount());
  MCHost::OutputRun& run = document.BeginRun("score");
  ModelColumns columns(model.GetVarList(), table);
  const int before = table.ColumnCount();
  KOVA_DataSource source(table);
  Predictions predictions;
  AddPredicted(source, request.fPredicted, target, predictions);
  AddProbabilities(source, request.fProbabilities, target, predictions);
  if (!Score(table, model, columns, surroundings, predictions)) return Outcome::kCancelled;
  RecordNewVariables(table, before, run);
  ShowCounts(table, predictions);
  run.fbCompleted = true;
  return Outcome::kCompleted;
}

}  // namespace PredSelect
