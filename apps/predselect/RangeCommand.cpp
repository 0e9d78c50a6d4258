#include "apps/predselect/RangeCommand.h"

#include <algorithm>
#include <memory>

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/OpenTable.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgramSurroundings.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/Terminal.h"
#include "host/data/DataTable.h"
#include "operations/FindRanges.h"
#include "operations/StateFile.h"

namespace PredSelectApp {

int FindRanges(const Options& options) {
  ProgressLine progress(WantsProgress(options.fResult));
  DataOptions data = options.fData;
  data.fbOnce = true;
  const std::unique_ptr<MCHost::DataTable> table = OpenTable(data, progress);
  try {
    ComponentFile state;
    state.fRanges = PredSelect::FindRanges(*table, std::max(options.fData.fPart, 0),
                                           ProgramSurroundings(options, progress));
    progress.Clear();
    PredSelect::SaveState(state, options.fSaveState);
    return kCompleted;
  } catch (const PredSelect::Cancelled&) {
    return kCancelled;
  }
}

}  // namespace PredSelectApp
