#include "apps/predselect/ExportCommand.h"

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/Terminal.h"
#include "operations/ModelFile.h"
#include "operations/ScoreTable.h"
#include "operations/StateFile.h"
#include "operations/StateKey.h"

namespace PredSelectApp {

int ExportModel(const Options& options) {
  const std::string& path = options.fStates.front();
  const ComponentFile state =
      PredSelect::LoadState(path, PredSelect::ReadStateKey(options.fVerifyKey));
  for (const std::string& note :
       PredSelect::WriteModelFile(PredSelect::ModelOf(state, path), options.fExport)) {
    if (!options.fResult.fbQuiet) PrintError("Note: " + note);
  }
  return kCompleted;
}

}  // namespace PredSelectApp
