#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "host/output/render/RenderText.h"
#include "naivebayes/validation/NBCrossValidation.h"
#include "operations/BuildModel.h"
#include "operations/DescribeTable.h"
#include "operations/EvaluateTable.h"
#include "operations/ExplainTable.h"
#include "operations/FreeMemory.h"
#include "operations/InspectState.h"
#include "operations/RankPredictors.h"
#include "operations/RunCommands.h"
#include "operations/ScoreTable.h"
#include "operations/c/Arguments.h"
#include "operations/c/Guard.h"
#include "operations/c/Handles.h"

namespace PredSelectC {

namespace {

using PredSelect::Outcome;

// The errors that the commands reported, as their messages.
std::string ErrorsOf(const MCHost::OutputDocument& document) {
  std::string errors;  // a line each, or several
  for (const MCHost::OutputRun& run : document.GetRuns()) {
    for (const MCHost::OutputMessage& message : run.fMessages) {
      if (message.fLevel < MCHost::OutputMessage::kError) continue;
      errors += MCHost::RenderMessage(message, {});
    }
  }
  return errors.substr(0, errors.find_last_not_of('\n') + 1);
}

predselect_status StatusOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::kCompleted:
      return PREDSELECT_OK;
    case Outcome::kCommandError:
    case Outcome::kFileLost:
      return PREDSELECT_COMMAND_ERROR;
    case Outcome::kCancelled:
      return PREDSELECT_CANCELLED;
  }
  return PREDSELECT_BROKEN_INVARIANT;
}

double KilobytesOf(std::size_t memory) {
  return memory == PREDSELECT_MEMORY_AUTO ? PredSelect::AutomaticMemory()
                                          : static_cast<double>(memory);
}

std::string PathOrNone(const char* path) { return path != nullptr ? path : ""; }

// More than any table has variables are all of them.
int CountOf(std::size_t count) {
  return static_cast<int>(std::min<std::size_t>(count, std::numeric_limits<int>::max()));
}

PredSelect::RankBy RankByOf(std::size_t by) {
  constexpr PredSelect::RankBy kAll[] = {
      PredSelect::RankBy::kPearson, PredSelect::RankBy::kLikelihoodRatio,
      PredSelect::RankBy::kCramersV, PredSelect::RankBy::kLambda, PredSelect::RankBy::kBits};
  if (by >= std::size(kAll)) throw Misuse("by is no predselect_rank_by");
  return kAll[by];
}

MCHost::CalibrationWish CalibrationOf(std::size_t method, std::size_t seed) {
  if (method > PREDSELECT_CALIBRATE_ISOTONIC) throw Misuse("calibrate is no PREDSELECT_CALIBRATE");
  return {static_cast<MCHost::CalibrationWish::Method>(method), seed == 0 ? 1 : seed};
}

double TestShareOf(double test) {
  if (test == 0.0) return PredSelect::ModelRequest().fTest;
  if (!(test < 1.0)) throw Misuse("test is not below 1");
  return std::max(test, 0.0);
}

int FoldsOf(const predselect_model_options& given) {
  if (given.folds == 0) return 0;
  if (given.folds < 2 || given.folds > NBCrossValidation::kMostFolds) {
    throw Misuse("folds is not from 2 to " + std::to_string(NBCrossValidation::kMostFolds));
  }
  const bool isTested = given.test > 0.0 || given.training_column != nullptr;
  if (isTested) throw Misuse("folds take the place of test cases");
  return CountOf(given.folds);
}

int RepeatsOf(std::size_t repeats) {
  if (repeats > NBCrossValidation::kMostRepeats) {
    throw Misuse("repeats is above " + std::to_string(NBCrossValidation::kMostRepeats));
  }
  return std::max(CountOf(repeats), 1);
}

// Another one in its place would be as good, and the same one for many.
int SeedOf(std::size_t seed) {
  constexpr int kMost = std::numeric_limits<int>::max();
  if (seed > kMost) throw Misuse("seed is above " + std::to_string(kMost));
  return CountOf(seed);
}

PredSelect::ModelRequest ModelRequestOf(const char* target, const predselect_model_options& given) {
  PredSelect::ModelRequest request;
  request.fTarget = TextArgument(target, "target");
  request.fExcept = TextArguments(given.except, given.n_except, "except");
  request.fTrainingColumn = TextArgument(given.training_column, "training_column", "");
  request.fTest = TestShareOf(given.test);
  request.fPredictors = CountOf(given.predictors);
  request.fFolds = FoldsOf(given);
  request.fRepeats = RepeatsOf(given.repeats);
  request.fSeed = SeedOf(given.seed);
  request.fbSavePredictions = given.save_predictions != 0;
  request.fPmml = PathOrNone(given.pmml_path);
  request.fRun.fStatePath = PathOrNone(given.state_path);
  request.fRun.fMemory = KilobytesOf(given.memory == 0 ? PREDSELECT_MEMORY_AUTO : given.memory);
  request.fRun.fCalibration = CalibrationOf(given.calibrate, given.calibration_seed);
  return request;
}

// Runs a job that fills a result's document, and hands the result out however the job ended.
template <class Job>
predselect_status Produce(predselect_session* session, predselect_result** result, Job job) {
  Clear(result);
  return Guarded(session, [&] {
    predselect_result*& out = Given(result, "result");
    auto made = std::make_unique<predselect_result>();
    const predselect_status status = StatusOf(job(*made));
    if (status == PREDSELECT_COMMAND_ERROR) session->fError = ErrorsOf(made->fDocument);
    if (status == PREDSELECT_CANCELLED) session->fError = "the job was cancelled";
    session->fpError = session->fError.c_str();
    out = made.release();
    return status;
  });
}

// The same for a job on a table, whose new columns become the result's.
template <class Job>
predselect_status ProduceFrom(predselect_session* session, predselect_table* table,
                              predselect_result** result, Job job) {
  return Produce(session, result, [&](predselect_result& made) {
    const predselect_table& from = Given(table, "table");
    made.fpTable = from.fpTable;
    made.fDocument.fDataSource = from.fName;
    made.fFirstNewColumn = made.fpTable->ColumnCount();
    const Outcome outcome = job(*made.fpTable, made.fDocument);
    made.fNewColumnsEnd = made.fpTable->ColumnCount();
    return outcome;
  });
}

}  // namespace

}  // namespace PredSelectC

using namespace PredSelectC;

predselect_status predselect_run(predselect_session* session, predselect_table* table,
                                 const char* commands, const predselect_run_options* options,
                                 predselect_result** result) {
  return ProduceFrom(session, table, result, [&](auto& data, auto& document) {
    const predselect_run_options given = GivenOptions(options);
    PredSelect::RunRequest request;
    request.fCommands = TextArgument(commands, "commands");
    request.fStatePath = PathOrNone(given.state_path);
    request.fResultsFolder = PathOrNone(given.results_folder);
    request.fMemory = KilobytesOf(given.memory);
    request.fCalibration = CalibrationOf(given.calibrate, given.calibration_seed);
    return PredSelect::RunCommands(data, document, request, session->fSurroundings);
  });
}

predselect_status predselect_rank(predselect_session* session, predselect_table* table,
                                  const char* target, const predselect_rank_options* options,
                                  predselect_result** result) {
  return ProduceFrom(session, table, result, [&](auto& data, auto& document) {
    const predselect_rank_options given = GivenOptions(options);
    const PredSelect::RankRequest request{
        .fTarget = TextArgument(target, "target"),
        .fBy = RankByOf(given.by),
        .fExcept = TextArguments(given.except, given.n_except, "except"),
        .fTop = CountOf(given.top)};
    return PredSelect::RankPredictors(data, document, request, session->fSurroundings);
  });
}

predselect_status predselect_model(predselect_session* session, predselect_table* table,
                                   const char* target, const predselect_model_options* options,
                                   predselect_result** result) {
  return ProduceFrom(session, table, result, [&](auto& data, auto& document) {
    const PredSelect::ModelRequest request = ModelRequestOf(target, GivenOptions(options));
    return PredSelect::BuildModel(data, document, request, session->fSurroundings);
  });
}

predselect_status predselect_describe(predselect_session* session, predselect_table* table,
                                      predselect_result** result) {
  return ProduceFrom(session, table, result, [&](auto& data, auto& document) {
    return PredSelect::DescribeTable(data, document, session->fSurroundings);
  });
}

predselect_status predselect_inspect(predselect_session* session, predselect_state* state,
                                     predselect_result** result) {
  return Produce(session, result, [&](predselect_result& made) {
    predselect_state& inspected = Given(state, "state");
    made.fDocument.fDataSource = inspected.fName;
    PredSelect::InspectState(inspected.fState, made.fDocument);
    return Outcome::kCompleted;
  });
}

predselect_status predselect_score(predselect_session* session, predselect_table* table,
                                   const predselect_state* state,
                                   const predselect_score_options* options,
                                   predselect_result** result) {
  return ProduceFrom(session, table, result, [&](auto& data, auto& document) {
    const predselect_score_options given = GivenOptions(options);
    const predselect_state& model = Given(state, "state");
    PredSelect::ScoreRequest request;
    request.fPredicted = TextArgument(given.predicted, "predicted", request.fPredicted.c_str());
    request.fProbabilities =
        TextArgument(given.probabilities, "probabilities", request.fProbabilities.c_str());
    request.fExplained = CountOf(given.explain);
    return PredSelect::ScoreTable(data, PredSelect::ModelOf(model.fState, model.fName), document,
                                  request, session->fSurroundings);
  });
}

predselect_status predselect_evaluate(predselect_session* session, predselect_table* table,
                                      const predselect_state* state, predselect_result** result) {
  return ProduceFrom(session, table, result, [&](auto& data, auto& document) {
    const predselect_state& model = Given(state, "state");
    return PredSelect::EvaluateTable(data, PredSelect::ModelOf(model.fState, model.fName), document,
                                     session->fSurroundings);
  });
}

predselect_status predselect_explain(predselect_session* session, predselect_table* table,
                                     const predselect_state* state, predselect_result** result) {
  return ProduceFrom(session, table, result, [&](auto& data, auto& document) {
    const predselect_state& model = Given(state, "state");
    return PredSelect::ExplainTable(data, PredSelect::ModelOf(model.fState, model.fName), document,
                                    session->fSurroundings);
  });
}
