// What a cell costs in the data pass of the feature selection engine, for columns in memory, and
// what it costs merely to sum the same numbers. The ratio of the two is the figure that counts.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <random>
#include <vector>

#include "common/RecordIterator.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"

namespace {

constexpr std::size_t kCases = 100000;
constexpr std::size_t kPredictors = 20;
constexpr int kCategories = 8;
constexpr int kClasses = 3;

// Column 0 is the target.
class ColumnsInMemory : public MCCommon::RecordIterator {
 public:
  ColumnsInMemory(bool catPredictors, bool catTarget) {
    std::mt19937_64 random(20240229);
    std::normal_distribution<double> normal(50.0, 10.0);
    for (std::size_t j = 0; j <= kPredictors; ++j) {
      const bool categorical = j == 0 ? catTarget : catPredictors;
      std::uniform_int_distribution<int> code(0, (j == 0 ? kClasses : kCategories) - 1);
      std::vector<double> column(kCases);
      for (double& value : column) value = categorical ? code(random) : normal(random);
      fColumns.push_back(std::move(column));
    }
  }

  void Rewind() { fNext = 0; }

  double Sum() const {
    double total = 0.0;
    for (std::size_t j = 1; j < fColumns.size(); ++j) {
      double sum = 0.0;
      for (const double value : fColumns[j]) sum += value;
      total += sum;
    }
    return total;
  }

  bool HasMore() override { return fNext < kCases; }
  const MCCommon::Record* NextRecord() override { return nullptr; }  // blocks only
  FailReason GetFailReason() const override { return fNext < kCases ? kSuccess : kNoRecords; }

  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override {
    const std::size_t most = MCCommon::RecordBlock::PreferredCases(fColumns.size());
    const std::size_t n = std::min({maxCases, most, kCases - fNext});
    fBlock.Reset(fColumns.size(), n);
    for (std::size_t j = 0; j < fColumns.size(); ++j) fBlock.SetColumn(j, &fColumns[j][fNext]);
    fNext += n;
    return fBlock;
  }

 private:
  std::vector<std::vector<double>> fColumns;
  MCCommon::RecordBlock fBlock;
  std::size_t fNext = 0;
};

double SecondsOf(const std::chrono::steady_clock::time_point& start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Arguments: categorical predictors, categorical target, threads.
void DataPass(benchmark::State& state) {
  const bool catPredictors = state.range(0) != 0;
  const bool catTarget = state.range(1) != 0;
  ColumnsInMemory columns(catPredictors, catTarget);
  double passSeconds = 0.0;
  double sumSeconds = 0.0;
  for (auto _ : state) {
    FSSettings settings(kPredictors, catPredictors, catTarget);
    settings.SetNThreads(static_cast<int>(state.range(2)));
    FSFactory factory;
    const auto component = factory.CreateFSAlgorithm(&settings);
    columns.Rewind();
    auto start = std::chrono::steady_clock::now();
    benchmark::DoNotOptimize(component->Accumulate(columns, -1));
    const double seconds = SecondsOf(start);
    state.SetIterationTime(seconds);
    passSeconds += seconds;
    start = std::chrono::steady_clock::now();
    benchmark::DoNotOptimize(columns.Sum());
    sumSeconds += SecondsOf(start);
  }
  const double cells =
      static_cast<double>(kCases * kPredictors) * static_cast<double>(state.iterations()) / 1e9;
  state.counters["ns_per_cell"] = passSeconds / cells;
  state.counters["sum_ns_per_cell"] = sumSeconds / cells;
  state.counters["times_the_sum"] = passSeconds / sumSeconds;
}

BENCHMARK(DataPass)
    ->ArgNames({"categorical_predictors", "categorical_target", "threads"})
    ->ArgsProduct({{0, 1}, {0, 1}, {1, 2}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
