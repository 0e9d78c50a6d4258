// Cost of one cell on its way from the table to an engine, beside the plain sum of as many doubles.
#include <benchmark/benchmark.h>

#include <optional>
#include <random>
#include <string>
#include <vector>

#include "host/cases/UAInputAdapter.h"
#include "host/cases/UAProcDataSourceIter.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/data/MemoryTable.h"
#include "host/data/ProcedureDataSource.h"
#include "host/session/SessionScope.h"
#include "tests/host/cases/CaseFixtures.h"

namespace {

constexpr std::size_t kCases = 100000;
constexpr int kColumns = 20;

enum Kind { kNumbers, kNumericCategories, kStrings };

void Fill(MCHost::MemoryTable& table, Kind kind) {
  std::mt19937 draw(7);
  for (int j = 0; j < kColumns; ++j) {
    const std::string name = "v" + std::to_string(j);
    if (kind == kStrings) {
      std::vector<std::optional<std::string>> cells(kCases);
      for (auto& cell : cells) cell = "c" + std::to_string(draw() % 20);
      table.AddStrings(name, cells);
    } else {
      std::vector<double> cells(kCases);
      for (double& cell : cells) cell = kind == kNumbers ? draw() / 7.0 : draw() % 20;
      table.AddNumbers(name, cells);
    }
  }
}

void ReportCells(benchmark::State& state) {
  state.counters["per_cell"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * kCases * kColumns,
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void StreamBlocks(benchmark::State& state, Kind kind) {
  MCHost::MemoryTable table;
  Fill(table, kind);
  casetests::TestSession session(table);
  const MCHost::SessionScope scope(session);
  ProcedureDataSource source;
  UAVarValidSpecs specs(true, true, true);
  for (int j = 0; j < kColumns; ++j) specs.AddVariable(j, kind != kNumbers);
  UAInputAdapter adapter(&specs, source);
  UAProcDataSourceIter stream(&adapter, false);
  for (auto _ : state) {
    if (!stream.NewPass()) state.SkipWithError("the table cannot be read");
    while (stream.NextBlock(MCCommon::RecordBlock::kMaxCases).Cases() > 0) continue;
  }
  ReportCells(state);
}

void PlainSum(benchmark::State& state) {
  const std::vector<double> values(kCases * kColumns, 1.5);
  for (auto _ : state) {
    double sum = 0.0;
    for (const double value : values) sum += value;
    benchmark::DoNotOptimize(sum);
  }
  ReportCells(state);
}

BENCHMARK(PlainSum);
BENCHMARK_CAPTURE(StreamBlocks, numbers, kNumbers);
BENCHMARK_CAPTURE(StreamBlocks, numeric_categories, kNumericCategories);
BENCHMARK_CAPTURE(StreamBlocks, strings, kStrings);

}  // namespace
