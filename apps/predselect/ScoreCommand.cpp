#include "apps/predselect/ScoreCommand.h"

#include <memory>
#include <string>

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/LiveOutput.h"
#include "apps/predselect/OpenTable.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgramSurroundings.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/SaveTable.h"
#include "apps/predselect/Terminal.h"
#include "host/arrow/DataFile.h"
#include "host/data/MemoryTable.h"
#include "operations/ScoreTable.h"
#include "operations/ScoringDrift.h"
#include "operations/StateFile.h"
#include "operations/StateKey.h"

namespace PredSelectApp {

int ScoreData(const Options& options) {
  const std::string& path = options.fStates.front();
  const ComponentFile state =
      PredSelect::LoadState(path, PredSelect::ReadStateKey(options.fVerifyKey));
  const INBAlgorithm& model = PredSelect::ModelOf(state, path);
  ProgressLine progress(WantsProgress(options.fResult));
  const std::unique_ptr<MCHost::DataTable> table = OpenTable(options.fData, progress);
  const SaveTable saved(*table, options.fSave);
  LiveOutput document(options.fResult, progress, options.fData.fFile);
  document.ShowNotes(*table);
  PredSelect::ScoringDrift drift;
  const PredSelect::Outcome outcome = PredSelect::ScoreTable(
      *table, model, document, options.fScore, ProgramSurroundings(options, progress), &drift);
  progress.Clear();
  if (outcome != PredSelect::Outcome::kCompleted) return ExitCodeOf(outcome);
  const bool isAside = !options.fSave.fFile.empty();
  if (isAside) {
    saved.Write();
    document.CurrentRun().fFiles.push_back(options.fSave.fFile);
  } else {
    saved.WriteTo({options.fResult.fFormat, ResultPath(options.fResult)});
  }
  if (!options.fDrift.empty()) {
    MCHost::WriteDataFile(*PredSelect::DriftTable(drift), options.fDrift);
    document.CurrentRun().fFiles.push_back(options.fDrift);
  }
  if (isAside) WriteDocument(document, options.fResult);
  return kCompleted;
}

}  // namespace PredSelectApp
