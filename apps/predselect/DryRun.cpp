#include "apps/predselect/DryRun.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "apps/predselect/CommandText.h"
#include "apps/predselect/ExitCode.h"
#include "apps/predselect/FileUses.h"
#include "apps/predselect/HelpPage.h"
#include "apps/predselect/LiveOutput.h"
#include "apps/predselect/OpenTable.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgramSurroundings.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/SaveTable.h"
#include "apps/predselect/Terminal.h"
#include "host/data/DataTable.h"
#include "host/session/ISession.h"
#include "modelfiles/ComponentFile.h"
#include "operations/RunCommands.h"
#include "operations/ScoreTable.h"
#include "operations/StateFile.h"
#include "operations/StateKey.h"

namespace PredSelectApp {

namespace {

constexpr std::size_t kMostNames = 8;
constexpr std::size_t kColumn = 8;

std::string Line(std::string what, const std::string& text) {
  what.resize(kColumn, ' ');
  return what + Wrap(text, kColumn) + "\n";
}

std::string Trimmed(const std::string& text) {
  return text.substr(0, text.find_last_not_of('\n') + 1);
}

std::string List(const std::vector<std::string>& names) {
  std::string list = std::to_string(names.size()) + (names.size() == 1 ? " column" : " columns");
  for (std::size_t i = 0; i < std::min(names.size(), kMostNames); ++i) {
    list += (i == 0 ? ": " : ", ") + names[i];
  }
  return list + (names.size() > kMostNames ? ", ..." : "");
}

std::string CasesOf(const MCHost::DataTable& table, const DataOptions& data) {
  return std::to_string(table.CaseCount()) + " cases of " + std::to_string(table.ColumnCount()) +
         " columns" + (data.fWeight.empty() ? "" : ", weighted by " + data.fWeight);
}

std::string UsesOf(const MCHost::CommandPlan& plan) {
  std::string text = "; the target " + plan.fTarget;
  if (!plan.fFactors.empty()) text += "; as categories " + List(plan.fFactors);
  if (!plan.fCovariates.empty()) text += "; as numbers " + List(plan.fCovariates);
  return text;
}

std::string Files(const Options& options, bool written) {
  std::string text;
  for (const FileUse& file : FilesOf(options)) {
    if (file.fbWritten != written) continue;
    text += Line(written ? "Writes" : "Reads", file.fPath + " (" + file.fUse + ")");
  }
  return text;
}

std::string Outputs(const Options& options, const std::vector<MCHost::CommandPlan>& plans) {
  std::string text = Files(options, true);
  for (const MCHost::CommandPlan& plan : plans) {
    const bool isNamed = plan.fModelFile.empty() || plan.fModelFile == options.fModel.fPmml;
    if (!isNamed) text += Line("Writes", plan.fModelFile + " (the model)");
  }
  if (!options.fResults.empty()) text += Line("Writes", options.fResults + " (result documents)");
  if (options.fResult.fFile.empty()) text += Line("Writes", "standard output (the results)");
  return text;
}

}  // namespace

int DryRun(const Options& options) {
  DataOptions data = options.fData;
  data.fbStream = data.fFile != "-";  // nothing is kept of what is not worked on
  std::string text = Files(options, false);
  ProgressLine progress(WantsProgress(options.fResult));
  std::unique_ptr<ComponentFile> state;
  if (options.fAction == Options::kScore) {
    state = std::make_unique<ComponentFile>(PredSelect::LoadState(
        options.fStates.front(), PredSelect::ReadStateKey(options.fVerifyKey)));
    (void)PredSelect::ModelOf(*state, options.fStates.front());
  }
  const std::unique_ptr<MCHost::DataTable> table = OpenTable(data, progress);
  const SaveTable saved(*table, options.fSave);
  const std::string cases = CasesOf(*table, data);
  std::vector<MCHost::CommandPlan> plans;
  PredSelect::Outcome outcome = PredSelect::Outcome::kCompleted;
  if (state != nullptr) {
    const std::vector<std::string> predictors = PredSelect::CheckScoring(
        *table, PredSelect::ModelOf(*state, options.fStates.front()), options.fScore);
    text += Line("Uses", cases + "; for the model " + List(predictors));
  } else {
    PredSelect::RunRequest request;
    request.fCommands = CommandTextOf(options, *table);
    request.fpPlans = &plans;
    LiveOutput document(options.fResult, progress, data.fFile);
    outcome =
        PredSelect::RunCommands(*table, document, request, ProgramSurroundings(options, progress));
    for (const MCHost::CommandPlan& plan : plans) text += Line("Uses", cases + UsesOf(plan));
    if (options.fAction != Options::kRun) text += Line("Runs", Trimmed(request.fCommands));
  }
  text += Outputs(options, plans) + "Nothing was written.\n";
  ResultOptions shown;
  shown.fbPager = options.fResult.fbPager;
  WriteResults(shown, text);
  return ExitCodeOf(outcome);
}

}  // namespace PredSelectApp
