#include "apps/predselect/EvaluateCommand.h"

#include <memory>
#include <string>

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/LiveOutput.h"
#include "apps/predselect/OpenTable.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgramSurroundings.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/Terminal.h"
#include "host/data/DataTable.h"
#include "operations/EvaluateTable.h"
#include "operations/ScoreTable.h"
#include "operations/StateFile.h"
#include "operations/StateKey.h"

namespace PredSelectApp {

int EvaluateModel(const Options& options) {
  const std::string& path = options.fStates.front();
  const ComponentFile state =
      PredSelect::LoadState(path, PredSelect::ReadStateKey(options.fVerifyKey));
  const INBAlgorithm& model = PredSelect::ModelOf(state, path);
  ProgressLine progress(WantsProgress(options.fResult));
  const std::unique_ptr<MCHost::DataTable> table = OpenTable(options.fData, progress);
  LiveOutput document(options.fResult, progress, options.fData.fFile);
  document.ShowNotes(*table);
  const PredSelect::Outcome outcome =
      PredSelect::EvaluateTable(*table, model, document, ProgramSurroundings(options, progress));
  progress.Clear();
  if (outcome == PredSelect::Outcome::kCompleted) WriteDocument(document, options.fResult);
  return ExitCodeOf(outcome);
}

}  // namespace PredSelectApp
