#include "operations/ScoreTable.h"

#include <algorithm>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "common/MCAssert.h"
#include "host/cases/UAPredictionWriter.h"
#include "host/command/VarSpecObj.h"
#include "host/data/DataTable.h"
#include "host/data/ProcedureDataSource.h"
#include "host/output/OutputDocument.h"
#include "host/output/ShowText.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"
#include "modelfiles/ComponentFile.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/model/NBScoredBlock.h"
#include "operations/DocumentParts.h"
#include "operations/ExplainedScores.h"
#include "operations/ModelCases.h"
#include "operations/ModelCategories.h"
#include "operations/RequestError.h"
#include "operations/ScoreFindings.h"
#include "operations/ScoringDrift.h"
#include "operations/UnseenClasses.h"

namespace PredSelect {

namespace {

using MCHost::DataTable;

constexpr KOVA_Format kProbabilityFormat{KOVA_Format::kNumber, 5, 3};

// The new columns, what writes them, and how many cases got a prediction.
struct Predictions {
  int fPredicted = -1;
  std::vector<int> fProbabilities;
  std::vector<KOVA_Value> fCategories;
  std::optional<UAPredictionWriter> fWriter;
  std::optional<ExplainedScores> fExplained;
  std::int64_t fNScored = 0;
};

VarSpecObj Role(const char* name, const KOVA_DataSource& source) {
  return {"", name, CommandDescriptor("score", ""), source, false};
}

KovaVarName PredictedName(const KOVA_DataSource& source, const std::string& asked) {
  if (asked != ScoreRequest{}.fPredicted && source.FindVariable(asked) >= 0) {
    throw RequestError("predicted", "the data have a variable \"" + asked + "\" already.");
  }
  KovaVarName name;
  if (!Role("--predicted", source).NewVarNameByRoot(KovaVarName(asked), name)) {
    throw RequestError("predicted", "\"" + asked + "\" cannot name a new variable.");
  }
  return name;
}

void AddPredicted(KOVA_DataSource& source, const std::string& asked, const INBVariable& target,
                  Predictions& predictions) {
  const KovaVarName name = PredictedName(source, asked);
  std::size_t width = 1;
  for (int k = 0; k < target.GetNumberOfCategories(); ++k) {
    width = std::max(width, CategoryText(target, k).size());
  }
  predictions.fCategories = CategoriesOf(target);
  const bool isNumeric = target.GetMeasureLevel() == INBVariable::kNumericCategorical;
  predictions.fPredicted =
      source.MakeVariable(name.GetName(), isNumeric ? 0 : static_cast<int>(width));
  KOVA_Variable& variable = source.GetVariable(predictions.fPredicted);
  variable.SetMeasurementLevel(KOVA_Variable::kNominal);
  variable.SetLabel("Predicted value");
}

// As many as the target has categories; none without a root.
std::vector<KovaVarName> ProbabilityNames(const KOVA_DataSource& source, const std::string& root,
                                          const INBVariable& target) {
  std::vector<KovaVarName> names;
  if (!root.empty() &&
      !Role("--probabilities", source)
           .NewVarNamesByRoot(KovaVarName(root), target.GetNumberOfCategories(), names)) {
    throw RequestError("probabilities", "\"" + root + "\" cannot name new variables.");
  }
  return names;
}

void AddProbabilities(KOVA_DataSource& source, const std::string& root, const INBVariable& target,
                      Predictions& predictions) {
  const std::vector<KovaVarName> names = ProbabilityNames(source, root, target);
  for (std::size_t k = 0; k < names.size(); ++k) {
    const int column = source.MakeVariable(names[k].GetName(), 0);
    KOVA_Variable& variable = source.GetVariable(column);
    variable.SetFormat(kProbabilityFormat);
    variable.SetWriteFormat(kProbabilityFormat);
    variable.SetMeasurementLevel(KOVA_Variable::kScale);
    variable.SetLabel("Predicted probability that " + target.GetVariableName() + " is " +
                      CategoryText(target, static_cast<int>(k)));
    predictions.fProbabilities.push_back(column);
  }
}

void AddExplanation(KOVA_DataSource& source, int predictors, const INBAlgorithm& model,
                    Predictions& predictions) {
  if (predictors <= 0) return;
  const int width = source.GetVariable(predictions.fPredicted).GetType();
  predictions.fExplained.emplace(dynamic_cast<const NBAlgorithm&>(model), predictors, source,
                                 predictions.fCategories, width);
}

void Report(const Surroundings& surroundings, std::size_t cases) {
  if (!surroundings.fReportProgress) return;
  surroundings.fReportProgress(MCHost::KeyText(
      "^1: ^2 cases", {MCHost::KeyText("Scoring the cases"), std::to_string(cases)}));
}

// False when the user stopped it.
bool Score(const INBAlgorithm& model, ProcedureDataSource& source, const Surroundings& surroundings,
           Predictions& predictions, ModelCases& cases, DriftCounter& drift, UnseenClasses& unseen,
           ScoreFindings* findings) {
  const KOVA_Variable& predicted = source.GetVariable(predictions.fPredicted);
  predictions.fWriter.emplace(predictions.fPredicted, predictions.fCategories, predicted.GetType(),
                              predictions.fProbabilities);
  const std::size_t most =
      NBScoredBlock::PreferredCases(model.GetNTargetCategories(), model.GetNumberOfInputVars());
  NBScoredBlock scored(surroundings.fThreads);
  std::size_t done = 0;
  for (;;) {
    const MCCommon::RecordBlock& block = cases.NextBlock(most);
    if (block.Cases() == 0) return true;
    if (surroundings.IsCancelled()) return false;
    const MCNaive::MCStatus status = model.ScoreBlock(block, scored);
    if (status.GetErrorCode() == MCNaive::kNoMemory) throw std::bad_alloc();
    MCCommon::Assert(!status.IsError(), "the model was built", "operations/ScoreTable");
    predictions.fWriter->Store(*cases.Stream().GetProcDS(), cases.Stream().GetBlockPlaces(),
                               scored.GetWinners(), scored.GetProbabilities());
    if (predictions.fExplained) predictions.fExplained->Store(block, scored, cases);
    drift.Count(block, scored);
    unseen.Count(scored);
    if (findings != nullptr) findings->Count(scored);
    done += block.Cases();
    Report(surroundings, done);
    predictions.fNScored +=
        std::ranges::count_if(scored.GetWinners(), [](int winner) { return winner >= 0; });
  }
}

void ShowCounts(const DataTable& table, const Predictions& predictions, const ScoringDrift& drift) {
  BpPivotTable counts("Scoring", "Scoring");
  BpDimension rows = counts.RowDimension("Cases");
  BpDimension columns = counts.ColumnDimension("Statistics");
  const BpCategory n = columns.AddCategory(BpString("N"), BpProcedure::Count());
  const auto nCases = static_cast<double>(table.CaseCount());
  const auto nScored = static_cast<double>(predictions.fNScored);
  counts.SetCell({rows.AddCategory(BpString("Predicted")), n}, nScored);
  counts.SetCell({rows.AddCategory(BpString("Not predicted")), n}, nCases - nScored);
  counts.SetCell({rows.AddCategory(BpString("Total")), n}, nCases);
  counts.SetCell({rows.AddCategory(BpString("Without a Usable Predictor")), n},
                 static_cast<double>(drift.fNUnusable));
  counts.Show();
}

}  // namespace

const INBAlgorithm& ModelOf(const ComponentFile& state, const std::string& name) {
  if (state.fpNaive != nullptr) return *state.fpNaive;
  const char* held = state.fRanges             ? "ranges"
                     : state.fpPart != nullptr ? "counts of too few cases for a model"
                                               : "a ranking of predictors";
  throw RequestError(name + " holds " + held + ", not a Naive Bayes model.");
}

std::vector<std::string> CheckScoring(DataTable& table, const INBAlgorithm& model,
                                      const ScoreRequest& request) {
  const NBVarList& variables = model.GetVarList();
  MCHost::OutputDocument nothing;
  MCHost::Session session(table, nothing);
  const MCHost::SessionScope scope(session);
  ProcedureDataSource source;
  const ModelCases cases(variables, source);
  const INBVariable& target = *variables.GetVarAt(variables.GetTargetIndex());
  (void)ProbabilityNames(source, request.fProbabilities, target);
  (void)PredictedName(source, request.fPredicted);
  std::vector<std::string> names;
  for (int i = 0; i < variables.Size(); ++i) {
    const INBVariable& variable = *variables.GetVarAt(i);
    if (variable.GetVariableRole() == INBVariable::kInput) {
      names.push_back(variable.GetVariableName());
    }
  }
  return names;
}

Outcome ScoreTable(DataTable& table, const INBAlgorithm& model, MCHost::OutputDocument& document,
                   const ScoreRequest& request, const Surroundings& surroundings,
                   ScoringDrift* drift) {
  const INBVariable& target = *model.GetVarList().GetVarAt(model.GetVarList().GetTargetIndex());
  MCHost::Session session(table, document);
  const MCHost::SessionScope scope(session);
  RecordData(document, table.CaseCount(), table.ColumnCount());
  MCHost::OutputRun& run = document.BeginRun("score");
  ProcedureDataSource source;
  Predictions predictions;  // has texts that the cases may yet store when they end
  ModelCases cases(model.GetVarList(), source);
  const int before = table.ColumnCount();
  // A root that is refused is refused before anything was added; the names themselves are made
  // anew behind the predicted value, whose name they must not take.
  (void)ProbabilityNames(source, request.fProbabilities, target);
  AddPredicted(source, request.fPredicted, target, predictions);
  AddProbabilities(source, request.fProbabilities, target, predictions);
  AddExplanation(source, request.fExplained, model, predictions);
  DriftCounter counter(model);
  UnseenClasses unseen(model);
  ScoreFindings findings(target);
  if (!Score(model, source, surroundings, predictions, cases, counter, unseen,
             document.fbFindings ? &findings : nullptr)) {
    return Outcome::kCancelled;
  }
  if (document.fbFindings) run.fFindings = findings.Text();
  RecordNewVariables(table, before, run);
  ShowCounts(table, predictions, counter.Drift());
  ShowDrift(counter.Drift());
  unseen.Show();
  if (drift != nullptr) *drift = counter.Drift();
  run.fbCompleted = true;
  return Outcome::kCompleted;
}

}  // namespace PredSelect
