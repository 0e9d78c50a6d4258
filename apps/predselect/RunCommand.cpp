#include "apps/predselect/RunCommand.h"

#include <memory>
#include <string>
#include <vector>

#include "apps/predselect/ChartFiles.h"
#include "apps/predselect/CommandText.h"
#include "apps/predselect/ExitCode.h"
#include "apps/predselect/FileUses.h"
#include "apps/predselect/LiveOutput.h"
#include "apps/predselect/OpenTable.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgramSurroundings.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/SaveTable.h"
#include "apps/predselect/Terminal.h"
#include "apps/predselect/UsageError.h"
#include "host/command/CommandSplitter.h"
#include "host/data/DataTable.h"
#include "host/session/HostIOError.h"
#include "operations/ReadsOnce.h"
#include "operations/RunCommands.h"

namespace PredSelectApp {

namespace {

using MCHost::DataTable;

double MemoryOf(const Options& options, const DataTable& table) {
  return options.fMemory == 0.0 ? 0.0 : MemoryForCases(options, table);
}

}  // namespace

int RunCommands(const Options& options) {
  const std::string commands = ReadCommandText(options);
  // Said before the data are read, which may take long.
  if (MCHost::SplitCommands(commands).empty()) {
    throw UsageError("there is no command to run; see predselect run --help.");
  }
  DataOptions data = options.fData;
  data.fbOnce = !data.fbSaved && PredSelect::ReadsOnce(commands);
  ProgressLine progress(WantsProgress(options.fResult));
  const std::unique_ptr<DataTable> table = OpenTable(data, progress);
  const SaveTable saved(*table, options.fSave);

  LiveOutput document(options.fResult, progress, options.fData.fFile);
  // A document of commands holds what they show, and nothing besides.
  document.fbFindings = options.fResult.fFormat == MCHost::FileFormat::kHtml;
  document.ShowNotes(*table);
  const PredSelect::Outcome outcome = PredSelect::RunCommands(
      *table, document,
      {commands, options.fSaveState, options.fResults,
       [&options](const std::string& path) { return UseOf(path, options); },
       MemoryOf(options, *table), nullptr, options.fExport, options.fCalibration},
      ProgramSurroundings(options, progress));
  progress.Clear();
  document.ShowNotes(*table);

  // Files first, whatever becomes of the reader of the results; and results whatever becomes of
  // the file.
  const int code = saved.WriteAfter(outcome);
  WriteChartFiles(document, options.fCharts);
  WriteDocument(document, options.fResult);
  return code;
}

}  // namespace PredSelectApp
