#include "apps/predselect/MergeCommand.h"

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/Interrupt.h"
#include "apps/predselect/Options.h"
#include "operations/MergeStates.h"
#include "operations/StateFile.h"

namespace PredSelectApp {

int MergeStates(const Options& options) {
  ComponentFile merged = PredSelect::LoadState(options.fStates.front());
  PredSelect::MergedCounts counts;
  if (!options.fbAllowEqual) counts.Note(merged, options.fStates.front());
  for (std::size_t i = 1; i < options.fStates.size() && !IsInterrupted(); ++i) {
    const std::string& path = options.fStates[i];
    const ComponentFile state = PredSelect::LoadState(path);
    if (!options.fbAllowEqual) counts.Note(state, path);
    PredSelect::MergeStates(merged, state, path);
  }
  if (IsInterrupted()) return kCancelled;
  PredSelect::SaveState(merged, options.fSaveState);
  return kCompleted;
}

}  // namespace PredSelectApp
