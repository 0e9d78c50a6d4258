#include "operations/DescribeTable.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <vector>

#include "common/Workers.h"
#include "host/data/ITable.h"
#include "host/output/OutputDocument.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"
#include "operations/ColumnSummary.h"
#include "operations/DescriptionFindings.h"
#include "operations/DocumentParts.h"
#include "operations/MissingPatterns.h"
#include "operations/ShowDescription.h"
#include "operations/ShowMissingPatterns.h"

namespace PredSelect {

namespace {

constexpr std::size_t kStepsACell = 10;

// What one pass over the table has seen.
struct Pass {
  explicit Pass(const std::vector<const KOVA_Variable*>& variables) : fPatterns(variables) {
    for (const KOVA_Variable* variable : variables) fSummaries.emplace_back(*variable);
  }

  std::vector<ColumnSummary> fSummaries;
  MissingPatterns fPatterns;
  std::int64_t fNCases = 0;
  bool fbWhole = true;  // false when the user stopped it
};

std::vector<const KOVA_Variable*> VariablesOf(const MCHost::ITable& table) {
  std::vector<const KOVA_Variable*> variables;
  for (int i = 0; i < table.ColumnCount(); ++i) variables.push_back(&table.GetVariable(i));
  return variables;
}

Pass Summarize(MCHost::ITable& table, const std::vector<const KOVA_Variable*>& variables,
               const Surroundings& surroundings) {
  Pass pass(variables);
  std::vector<int> columns(variables.size());
  std::iota(columns.begin(), columns.end(), 0);
  MCCommon::Workers workers(surroundings.fThreads);
  const std::unique_ptr<MCHost::ITableScan> scan = table.Scan(columns);
  while (const MCHost::TableBatch* batch = scan->Next()) {
    pass.fbWhole = !surroundings.IsCancelled();
    if (!pass.fbWhole) break;
    const auto observe = [&](std::size_t j, std::size_t /*worker*/) {
      pass.fSummaries[j].Observe(batch->fColumns[j], batch->fNCases);
    };
    workers.For(columns.size() * batch->fNCases * kStepsACell).ForEach(columns.size(), observe);
    pass.fPatterns.Observe(*batch, workers);
    pass.fNCases += static_cast<std::int64_t>(batch->fNCases);
  }
  for (ColumnSummary& summary : pass.fSummaries) summary.Finish();
  return pass;
}

}  // namespace

Outcome DescribeTable(MCHost::ITable& table, MCHost::OutputDocument& document,
                      const Surroundings& surroundings, const DescribeRequest& request) {
  MCHost::Session session(table, document);
  const MCHost::SessionScope scope(session);
  MCHost::OutputRun& run = document.BeginRun("describe");
  const std::vector<const KOVA_Variable*> variables = VariablesOf(table);
  const Pass pass = Summarize(table, variables, surroundings);
  RecordData(document, pass.fNCases, table.ColumnCount());
  if (!pass.fbWhole) return Outcome::kCancelled;
  const auto nShown =
      static_cast<std::size_t>(request.fTop > 0 ? request.fTop : table.ColumnCount());
  const auto nCases = static_cast<double>(pass.fNCases);
  if (request.fbForPrograms) ShowForPrograms(pass.fSummaries);
  ShowDescription(pass.fSummaries, nCases, nShown);
  ShowMissingPatterns(pass.fPatterns, variables, nCases);
  if (document.fbFindings) {
    run.fFindings = DescriptionFindings(pass.fSummaries, pass.fPatterns, nCases);
  }
  run.fbCompleted = true;
  return Outcome::kCompleted;
}

}  // namespace PredSelect
