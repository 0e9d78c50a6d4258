#include "apps/predselect/InspectCommand.h"

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/LiveOutput.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/Terminal.h"
#include "operations/InspectState.h"
#include "operations/StateFile.h"
#include "operations/StateKey.h"

namespace PredSelectApp {

int InspectState(const Options& options) {
  const std::string& path = options.fStates.front();
  ComponentFile state = PredSelect::LoadState(path, PredSelect::ReadStateKey(options.fVerifyKey));
  ProgressLine progress(false);
  LiveOutput document(options.fResult, progress, path);
  PredSelect::InspectState(state, document, {options.fbWeights});
  WriteDocument(document, options.fResult);
  return kCompleted;
}

}  // namespace PredSelectApp
