#include "operations/BuildModel.h"

#include <charconv>
#include <cstddef>
#include <utility>

#include "host/command/KovaVarName.h"
#include "host/data/DataTable.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"
#include "operations/ModelSummary.h"
#include "operations/RequestError.h"

namespace PredSelect {

namespace {

void CheckTarget(const KOVA_Variable& target) {
  if (!target.IsNumeric() || target.GetMeasurementLevel() != KOVA_Variable::kScale) return;
  throw RequestError(
      "\"" + target.GetName() + "\" is a number on a scale, and a model predicts " + "categories; ",
      "level", " " + target.GetName() + "=nominal takes each of its values for one.");
}

// Without the rounding of the binary system: a share of 0.07 leaves 93.
std::string TrainingPercent(double test) {
  char digits[32];
  const double percent = 100.0 - 100.0 * test;
  constexpr int kDigits = 12;
  return {digits, std::to_chars(digits, digits + sizeof(digits), percent,
                                std::chars_format::general, kDigits)
                      .ptr};
}

// Empty where no case tests the model.
std::string TrainingSample(const MCHost::ITable& table, const ModelRequest& request) {
  if (request.fFolds > 0) return "";
  if (!request.fTrainingColumn.empty()) {
    NamedVariable(table, request.fTrainingColumn, "training-column");
    return "\n  /TRAININGSAMPLE VARIABLE=" + KovaVarName(request.fTrainingColumn).Quoted();
  }
  if (request.fTest == 0.0) return "";
  if (request.fTest < kLeastTestShare) {
    throw RequestError("test", "the share is next to nothing; give 0.");
  }
  if (table.GetWeightVarIndex() >= 0) {
    throw RequestError("test",
                       "cases with a weight are not drawn at random. Give 0 and all of them train "
                       "the model, or a column that says which do.");
  }
  return "\n  /TRAININGSAMPLE PERCENT=" + TrainingPercent(request.fTest);
}

// More than there are columns is no bound.
std::string Subset(const MCHost::ITable& table, const ModelRequest& request, bool isTested) {
  const bool isBound = request.fPredictors > 0 && request.fPredictors < table.ColumnCount() - 1;
  return "\n  /SUBSET MAXSIZE=" + (isBound ? std::to_string(request.fPredictors) : "AUTO") +
         "(BESTSUBSET=" + (isTested ? "TESTDATA)" : "PSEUDOBIC)");
}

std::string InQuotes(const std::string& text, const std::string& option) {
  CheckOneLine(text, option);
  std::string quoted = "'";
  for (const char c : text) quoted.append(c == '\'' ? 2 : 1, c);
  return quoted + "'";
}

// By what the model was calibrated, where it was.
void ShowCalibrationOf(const CommandRun& run, MCHost::OutputDocument& document) {
  for (const MCHost::OutputNote& note : run.GetRuns().back().fNotes) {
    if (note.fTitle.fKey == "Calibration") document.AddNote(note);
  }
}

// The measures on a page, the rest for programs.
void ShowEvaluationOf(const CommandRun& run, MCHost::OutputDocument& document) {
  for (const char* subtype : {"Evaluation", "ClassEvaluation", "Calibration", "CrossValidation",
                              "SelectionStability", "Folds"}) {
    const MCHost::OutputTable* found = run.Find(subtype);
    if (found == nullptr) continue;
    MCHost::OutputTable table = *found;
    table.fbForPrograms = table.fbForPrograms || table.fSubtype == "ClassEvaluation";
    document.AddTable(std::move(table));
  }
}

}  // namespace

std::string ModelCommand(const MCHost::ITable& table, const ModelRequest& request) {
  CheckTarget(table.GetVariable(NamedVariable(table, request.fTarget)));
  const std::string sample = TrainingSample(table, request);
  const std::string screening = ScreeningOfDates(table);
  std::string text = "NAIVEBAYES " + KovaVarName(request.fTarget).Quoted() +
                     ExceptSubcommand(table, request.fExcept) + "\n  /SCREENING STATUS=ON" +
                     (screening.empty() ? "" : " " + screening) + sample +
                     Subset(table, request, !sample.empty());
  if (request.fFolds > 0) {
    text += "\n  /CROSSVALIDATION FOLDS=" + std::to_string(request.fFolds) +
            " REPEATS=" + std::to_string(request.fRepeats) +
            " SEED=" + std::to_string(request.fSeed);
  }
  if (request.fbSavePredictions) text += "\n  /SAVE PREDVAL PREDPROB";
  if (!request.fPmml.empty()) text += "\n  /OUTFILE MODEL=" + InQuotes(request.fPmml, "pmml");
  return text + "\n  /CRITERIA TIMER=0\n  /PRINT EXCLUDED SUMMARY CLASSIFICATION" +
         (sample.empty() ? "" : " EVALUATION") + ".\n";
}

Outcome BuildModel(MCHost::DataTable& table, MCHost::OutputDocument& document,
                   const ModelRequest& request, const Surroundings& surroundings,
                   ModelSummary* summary) {
  RunRequest asked = request.fRun;
  asked.fCommands = ModelCommand(table, request);
  CommandRun run(document, "model");
  run.Withhold("Too few possible predictors, maximum size...");
  Outcome outcome = run.Run(table, asked, surroundings);
  // Screening has left fewer than the bound, which is none then.
  if (run.IsWithheld()) {
    ModelRequest unbound = request;
    unbound.fPredictors = 0;
    asked.fCommands = ModelCommand(table, unbound);
    outcome = run.Run(table, asked, surroundings);
  }
  if (outcome != Outcome::kCompleted && outcome != Outcome::kFileLost) return outcome;
  ModelSummary found = ReadModelSummary(run);
  MCHost::Session session(table, document);
  const MCHost::SessionScope scope(session);
  ShowCalibrationOf(run, document);
  ShowModelSummary(found);
  ShowEvaluationOf(run, document);
  if (summary != nullptr) *summary = std::move(found);
  return outcome;
}

}  // namespace PredSelect
