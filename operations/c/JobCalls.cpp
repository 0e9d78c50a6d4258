#include <memory>
#include <utility>

#include "host/output/render/RenderText.h"
#include "operations/DescribeTable.h"
#include "operations/FreeMemory.h"
#include "operations/InspectState.h"
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
    if (given.state_path != nullptr) request.fStatePath = given.state_path;
    if (given.results_folder != nullptr) request.fResultsFolder = given.results_folder;
    request.fMemory = given.memory == PREDSELECT_MEMORY_AUTO ? PredSelect::AutomaticMemory()
                                                             : static_cast<double>(given.memory);
    return PredSelect::RunCommands(data, document, request, session->fSurroundings);
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
    return PredSelect::ScoreTable(data, PredSelect::ModelOf(model.fState, model.fName), document,
                                  request, session->fSurroundings);
  });
}
