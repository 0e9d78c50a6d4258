#include "operations/DescribeTable.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "common/Workers.h"
#include "host/data/ITable.h"
#include "host/output/OutputDocument.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"
#include "operations/ColumnSummary.h"
#include "operations/DescriptionFindings.h"
#include "operations/DocumentParts.h"
#include "operations/ShowDescription.h"

namespace PredSelect {

namespace {

constexpr std::size_t kStepsACell = 10;

// What one pass over the table has seen.
struct Pass {
  std::vector<ColumnSummary> fSummaries;
  std::int64_t fNCases = 0;
  bool fbWhole = true;  // false when the user stopped it
};

Pass Summarize(MCHost::ITable& table, const Surroundings& surroundings) {
  Pass pass;
  std::vector<int> columns;
  for (int i = 0; i < table.ColumnCount(); ++i) {
    pass.fSummaries.emplace_back(table.GetVariable(i));
    columns.push_back(i);
  }
  MCCommon::Workers workers(surroundings.fThreads);
  const std::unique_ptr<MCHost::ITableScan> scan = table.Scan(columns);
  while (const MCHost::TableBatch* batch = scan->Next()) {
    pass.fbWhole = !surroundings.IsCancelled();
    if (!pass.fbWhole) break;
    const auto observe = [&](std::size_t j, std::size_t /*worker*/) {
      pass.fSummaries[j].Observe(batch->fColumns[j], batch->fNCases);
    };
    workers.For(columns.size() * batch->fNCases * kStepsACell).ForEach(columns.size(), observe);
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
  const Pass pass = Summarize(table, surroundings);
  RecordData(document, pass.fNCases, table.ColumnCount());
  if (!pass.fbWhole) return Outcome::kCancelled;
  const auto nShown =
      static_cast<std::size_t>(request.fTop > 0 ? request.fTop : table.ColumnCount());
  ShowDescription(pass.fSummaries, static_cast<double>(pass.fNCases), nShown);
  if (document.fbFindings) {
    run.fFindings = DescriptionFindings(pass.fSummaries, static_cast<double>(pass.fNCases));
  }
  run.fbCompleted = true;
  return Outcome::kCompleted;
}

}  // namespace PredSelect
