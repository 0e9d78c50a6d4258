// What a cell costs in the data pass of the feature selection engine, for columns in memory, and
// what it costs merely to sum the same numbers, eight sums side by side. The ratio of the two is
// the figure that counts. Both are the least of all passes: a machine that does other work disturbs
// that least.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
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

// Column 0 is the target, the last one the weight.
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
    for (std::size_t i = 0; i < kCases; ++i) fWeights.push_back(1.0 + static_cast<double>(i % 3));
  }

  void Rewind() { fNext = 0; }

  double Sum() const {
    double total = 0.0;
    for (std::size_t j = 1; j < fColumns.size(); ++j) {
      total += SumOf(fColumns[j].data(), kCases);
    }
    return total;
  }

  bool HasMore() override { return fNext < kCases; }
  const MCCommon::Record* NextRecord() override { return nullptr; }  // blocks only
  FailReason GetFailReason() const override { return fNext < kCases ? kSuccess : kNoRecords; }

  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override {
    const std::size_t most = MCCommon::RecordBlock::PreferredCases(fColumns.size());
    const std::size_t n = std::min({maxCases, most, kCases - fNext});
    fBlock.Reset(fColumns.size() + 1, n);
    fBlock.SetColumn(fColumns.size(), &fWeights[fNext]);
    for (std::size_t j = 0; j < fColumns.size(); ++j) fBlock.SetColumn(j, &fColumns[j][fNext]);
    fNext += n;
    return fBlock;
  }

 private:
  static double SumOf(const double* values, std::size_t n) {
    using Two = double __attribute__((vector_size(16)));
    Two sums[4] = {};
    for (std::size_t k = 0; k + 8 <= n; k += 8) {
      for (std::size_t l = 0; l < 4; ++l) sums[l] += Two{values[k + 2 * l], values[k + 2 * l + 1]};
    }
    const Two all = (sums[0] + sums[1]) + (sums[2] + sums[3]);
    return all[0] + all[1];
  }

  std::vector<std::vector<double>> fColumns;
  std::vector<double> fWeights;
  MCCommon::RecordBlock fBlock;
  std::size_t fNext = 0;
};

double Seconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Arguments: categorical predictors, categorical target, weights other than 1, threads.
void DataPass(benchmark::State& state) {
  const bool catPredictors = state.range(0) != 0;
  const bool catTarget = state.range(1) != 0;
  ColumnsInMemory columns(catPredictors, catTarget);
  double passSeconds = INFINITY;
  double sumSeconds = INFINITY;
  for (auto _ : state) {
    FSSettings settings(kPredictors, catPredictors, catTarget);
    settings.SetNThreads(static_cast<int>(state.range(3)));
    if (state.range(2) != 0) settings.SetWeightPosition(kPredictors + 1);
    FSFactory factory;
    const auto component = factory.CreateFSAlgorithm(&settings);
    columns.Rewind();
    double start = Seconds();
    benchmark::DoNotOptimize(component->Accumulate(columns, -1));
    const double seconds = Seconds() - start;
    state.SetIterationTime(seconds);
    passSeconds = std::min(passSeconds, seconds);
    start = Seconds();
    benchmark::DoNotOptimize(columns.Sum());
    sumSeconds = std::min(sumSeconds, Seconds() - start);
  }
  const double cells = static_cast<double>(kCases * kPredictors) / 1e9;
  state.counters["ns_per_cell"] = passSeconds / cells;
  state.counters["sum_ns_per_cell"] = sumSeconds / cells;
  state.counters["times_the_sum"] = passSeconds / sumSeconds;
}

BENCHMARK(DataPass)
    ->ArgNames({"categorical_predictors", "categorical_target", "weights", "threads"})
    ->ArgsProduct({{0, 1}, {0, 1}, {0, 1}, {1, 2}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
