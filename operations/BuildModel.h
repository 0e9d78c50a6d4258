// A Naive Bayes classifier of a target, with the predictors that serve it best.
#pragma once

#include <string>
#include <vector>

#include "operations/CommandRun.h"
#include "operations/RunCommands.h"

namespace PredSelect {

// A share of test cases below is next to nothing, and refused.
inline constexpr double kLeastTestShare = 1e-6;

struct ModelRequest {
  std::string fTarget{};
  std::vector<std::string> fExcept{};  // are no predictors
  // Share of the cases that test the model; 0: none do, as where it is cross-validated.
  double fTest = 0.3;
  std::string fTrainingColumn{};   // is 1 in the cases that train it, instead of a share
  int fFolds = 0;                  // to cross-validate with; 0: it is not
  int fRepeats = 1;                // of it, with other folds each time
  int fSeed = 1;                   // of the folds
  int fPredictors = 0;             // at most so many; 0: as many as serve it
  bool fbSavePredictions = false;  // as new variables of the table
  std::string fPmml{};             // file of the model; empty for none
  RunRequest fRun{};               // all but its commands: state, memory, files in use
};

// Numbers that do not apply are missing values.
struct ModelStep {
  std::string fName;   // the predictor that it adds
  std::string fLabel;  // empty for none
  double fCriterion;   // with it: what the cases cost on average, the less the better
  double fBetterBy;    // than without it
};

struct ModelSample {
  std::string fName;  // "Training", "Test"
  double fCases;      // weighted
  double fCorrect;    // percent
  double fGuessing;   // percent that always guessing the most frequent category would be right for
};

// Cases of one category that the model takes for another, or rightly for itself.
struct ModelConfusion {
  std::string fSample;  // "Training", "Test"
  MCHost::OutputText fObserved;
  MCHost::OutputText fPredicted;
  double fCases;    // weighted
  double fPercent;  // of the cases of the category
};

struct ModelSummary {
  std::string fCriterion;         // "Test Data Criterion" or "Pseudo-BIC"
  std::vector<ModelStep> fSteps;  // of the chosen predictors, in order
  int fNTried = 0;                // steps that were looked at
  std::vector<ModelSample> fSamples;
  std::vector<ModelConfusion> fMatrix;      // of each sample, what there is of each category
  std::vector<ModelConfusion> fConfusions;  // of the last sample, the most frequent first
  std::vector<LeftOutPredictor> fLeftOut;
};

// The command that the model is made by, for RunCommands. Throws RequestError for variables that
// the table does not have, and for a scale target.
std::string ModelCommand(const MCHost::ITable& table, const ModelRequest& request);

// Builds the model after screening, and shows the tables ChosenPredictors, Accuracy and
// WorstConfusions, flat, and for programs ConfusionMatrix; of a test sample also Evaluation, and
// for programs ClassEvaluation and Calibration; in a run "model" of the document, whose data source
// is the caller's to name. They go to `summary`, too, unless it is null or the operation does not
// complete. Throws RequestError as ModelCommand does, and what RunCommands throws. REQUIRES: the
// table was prepared.
Outcome BuildModel(MCHost::DataTable& table, MCHost::OutputDocument& document,
                   const ModelRequest& request, const Surroundings& surroundings,
                   ModelSummary* summary = nullptr);

}  // namespace PredSelect
