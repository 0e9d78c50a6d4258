#include "apps/predselect/MergeCommand.h"

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/Interrupt.h"
#include "apps/predselect/Options.h"
#include "operations/MergeStates.h"
#include "operations/StateFile.h"
#include "operations/StateKey.h"

namespace PredSelectApp {

namespace {

// Parts to which nobody has given a number are all number 0: they stand in the order in which they
// are named.
void NumberAfter(const ComponentFile& merged, ComponentFile& state) {
  if (!merged.fRanges || !state.fRanges) return;
  const std::vector<PartSize>& parts = state.fRanges->fParts;
  const bool isUnnumbered = parts.size() == 1 && parts.front().fPart == 0;
  const std::int64_t next = merged.fRanges->fParts.back().fPart + 1;
  if (!isUnnumbered || merged.fRanges->FirstCaseOf(0) < 0 || next >= TableRanges::kMostParts)
    return;
  state.fRanges->Renumber(next);
}

}  // namespace

int MergeStates(const Options& options) {
  const std::string signKey = PredSelect::ReadStateKey(options.fSignKey);
  const std::string key = PredSelect::ReadStateKey(options.fVerifyKey);
  ComponentFile merged = PredSelect::LoadState(options.fStates.front(), key);
  PredSelect::MergedCounts counts;
  if (!options.fbAllowEqual) counts.Note(merged, options.fStates.front());
  for (std::size_t i = 1; i < options.fStates.size() && !IsInterrupted(); ++i) {
    const std::string& path = options.fStates[i];
    ComponentFile state = PredSelect::LoadState(path, key);
    if (!options.fbAllowEqual) counts.Note(state, path);
    NumberAfter(merged, state);
    PredSelect::MergeStates(merged, state, path);
  }
  if (IsInterrupted()) return kCancelled;
  PredSelect::SaveState(merged, options.fSaveState, signKey);
  return kCompleted;
}

}  // namespace PredSelectApp
