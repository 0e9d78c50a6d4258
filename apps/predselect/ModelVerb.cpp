#include "apps/predselect/ModelVerb.h"

#include <memory>
#include <string>

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/FileUses.h"
#include "apps/predselect/JobPasses.h"
#include "apps/predselect/LiveOutput.h"
#include "apps/predselect/OpenTable.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgramSurroundings.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/SaveTable.h"
#include "apps/predselect/ServeParts.h"
#include "apps/predselect/Terminal.h"
#include "host/data/DataTable.h"
#include "operations/BuildModel.h"

namespace PredSelectApp {

namespace {

PredSelect::ModelRequest RequestOf(const Options& options) {
  PredSelect::ModelRequest request = options.fModel;
  request.fbSavePredictions = !options.fSave.fFile.empty();
  request.fRun.fStatePath = options.fSaveState;
  request.fRun.fExport = options.fExport;
  request.fRun.fCalibration = options.fCalibration;
  return request;
}

}  // namespace

int ModelData(const Options& options) {
  if (options.fServing > 0) return ServeParts(options);
  ProgressLine progress(WantsProgress(options.fResult));
  const std::unique_ptr<MCHost::DataTable> table =
      options.fJobs > 1 ? OpenJobs(options, progress) : OpenTable(options.fData, progress);
  PredSelect::ModelRequest request = RequestOf(options);
  if (options.fbShowCommand) {
    WriteResults(options.fResult, PredSelect::ModelCommand(*table, request));
    return kCompleted;
  }
  const SaveTable saved(*table, options.fSave);
  // The model's own file is what its command is to write.
  Options others = options;
  others.fModel.fPmml.clear();
  request.fRun.fUseOf = [&others](const std::string& path) { return UseOf(path, others); };
  request.fRun.fMemory = MemoryForCases(options, *table);
  LiveOutput document(options.fResult, progress, options.fData.fFile);
  document.ShowNotes(*table);
  const PredSelect::Outcome outcome =
      PredSelect::BuildModel(*table, document, request, ProgramSurroundings(options, progress));
  progress.Clear();
  const int code = saved.WriteAfter(outcome);
  WriteDocument(document, options.fResult);
  return code;
}

}  // namespace PredSelectApp
