#include "apps/predselect/RankVerb.h"

#include <memory>
#include <string>

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/JobPasses.h"
#include "apps/predselect/LiveOutput.h"
#include "apps/predselect/OpenTable.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgramSurroundings.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/ServeParts.h"
#include "apps/predselect/Terminal.h"
#include "host/data/DataTable.h"
#include "operations/RankPredictors.h"

namespace PredSelectApp {

int RankData(const Options& options) {
  if (options.fServing > 0) return ServeParts(options);
  ProgressLine progress(WantsProgress(options.fResult));
  const std::unique_ptr<MCHost::DataTable> table =
      options.fJobs > 1 ? OpenJobs(options, progress) : OpenTable(options.fData, progress);
  if (options.fbShowCommand) {
    WriteResults(options.fResult, PredSelect::RankCommand(*table, options.fRank));
    return kCompleted;
  }
  LiveOutput document(options.fResult, progress, options.fData.fFile);
  document.ShowNotes(*table);
  const PredSelect::Outcome outcome = PredSelect::RankPredictors(
      *table, document, options.fRank, ProgramSurroundings(options, progress));
  progress.Clear();
  WriteDocument(document, options.fResult);
  return ExitCodeOf(outcome);
}

}  // namespace PredSelectApp
