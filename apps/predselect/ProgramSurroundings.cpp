#include "apps/predselect/ProgramSurroundings.h"

#include <algorithm>
#include <cstdlib>

#include "apps/predselect/Interrupt.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgressLine.h"
#include "operations/AvailableThreads.h"
#include "operations/StateKey.h"

namespace PredSelectApp {

int ThreadsOf(const Options& options) {
  const int threads = options.fThreads == 0 ? PredSelect::AvailableThreads() : options.fThreads;
  return std::max(threads / std::max(options.fServing, 1), 1);
}

PredSelect::Surroundings ProgramSurroundings(const Options& options, ProgressLine& progress) {
  PredSelect::Surroundings surroundings;
  // A folder that is not there is complained of when something needs it.
  const char* folder = std::getenv("TMPDIR");
  if (folder != nullptr && *folder != '\0') surroundings.fTempPath = folder;
  surroundings.fStateKey = PredSelect::ReadStateKey(options.fSignKey);
  surroundings.fThreads = ThreadsOf(options);
  surroundings.fIsCancelled = IsInterrupted;
  surroundings.fReportProgress = [&progress](const std::string& text) { progress.Show(text); };
  return surroundings;
}

}  // namespace PredSelectApp
