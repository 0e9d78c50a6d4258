#include "apps/predselect/DescribeCommand.h"

#include <memory>
#include <string>

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/LiveOutput.h"
#include "apps/predselect/OpenTable.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgramSurroundings.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/Terminal.h"
#include "host/data/DataTable.h"
#include "operations/DescribeTable.h"

namespace PredSelectApp {

namespace {

bool IsPage(MCHost::FileFormat format) {
  return format == MCHost::FileFormat::kText || format == MCHost::FileFormat::kHtml;
}

}  // namespace

int DescribeData(const Options& options) {
  ProgressLine progress(WantsProgress(options.fResult));
  const std::unique_ptr<MCHost::DataTable> table = OpenTable(options.fData, progress);
  LiveOutput document(options.fResult, progress, options.fData.fFile);
  document.ShowNotes(*table);
  PredSelect::DescribeRequest request = options.fDescribe;
  request.fbForPrograms = !IsPage(options.fResult.fFormat);
  const PredSelect::Outcome outcome =
      PredSelect::DescribeTable(*table, document, ProgramSurroundings(options, progress), request);
  progress.Clear();
  if (outcome == PredSelect::Outcome::kCompleted) WriteDocument(document, options.fResult);
  return ExitCodeOf(outcome);
}

}  // namespace PredSelectApp
