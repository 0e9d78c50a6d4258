#include "apps/predselect/MergeCommand.h"

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/Interrupt.h"
#include "apps/predselect/Options.h"
#include "operations/MergeStates.h"
#include "operations/StateFile.h"
#include "operations/StateKey.h"

namespace PredSelectApp {

int MergeStates(const Options& options) {
  const std::string signKey = PredSelect::ReadStateKey(options.fSignKey);
  const std::string key = PredSelect::ReadStateKey(options.fVerifyKey);
  ComponentFile merged = PredSelect::LoadState(options.fStates.front(), key);
  PredSelect::MergedCounts counts;
  if (!options.fbAllowEqual) counts.Note(merged, options.fStates.front());
  for (std::size_t i = 1; i < options.fStates.size() && !IsInterrupted(); ++i) {
    const std::string& path = options.fStates[i];
    const ComponentFile state = PredSelect::LoadState(path, key);
    if (!options.fbAllowEqual) counts.Note(state, path);
    PredSelect::MergeStates(merged, state, path);
  }
  if (IsInterrupted()) return kCancelled;
  PredSelect::SaveState(merged, options.fSaveState, signKey);
  return kCompleted;
}

}  // namespace PredSelectApp
