// What a cross-validated selection costs beside the selection alone: the same cases, codes and
// steps.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "InMemory.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/validation/NBCrossValidation.h"

namespace {

constexpr int kCases = 20000, kInputs = 50;

// Scale predictors of a target, the first few of which say something of it.
InMemory::Input MakeData(int classes) {
  InMemory::Input data{{}, true, kCases, {InMemory::Column(kCases, classes, 1)}};
  std::mt19937 random(3);
  std::normal_distribution<double> normal;
  for (int j = 1; j <= kInputs; ++j) {
    std::vector<double> column;
    for (const double y : data.fColumns.front()) column.push_back(normal(random) + y * 0.5 / j);
    data.fColumns.push_back(std::move(column));
  }
  return data;
}

NBVarList MakeList(int classes) {
  NBVarList list;
  list.AddCatVar("y", "", classes, INBVariable::kNumericCategorical, INBVariable::kOutput);
  for (int j = 0; j < kInputs; ++j) {
    list.AddContVar("x" + std::to_string(j), "", -5, 6, 10, INBVariable::kPossibleInput);
  }
  return list;
}

void BM_Selection(benchmark::State& state) {
  const auto classes = static_cast<int>(state.range(0));
  const auto folds = static_cast<int>(state.range(1));
  const InMemory::Input data = MakeData(classes);
  NaiveBayesSettings settings;
  settings.SetMaxRecordsInMemory(kCases);
  for (auto _ : state) {
    InMemory::Blocks records(data);
    NBAlgorithm algorithm(settings, MakeList(classes));
    NBSelectionResult result;
    NBCrossValidation validation{.fNFolds = folds};
    const auto status = algorithm.SelectAttributes(
        {.fData = records, .fNRecords = kCases, .fpValidation = folds > 0 ? &validation : nullptr},
        result);
    if (status.IsError()) state.SkipWithError("selection failed");
  }
}
BENCHMARK(BM_Selection)
    ->ArgNames({"classes", "folds"})
    ->ArgsProduct({{2, 3, 6}, {0, 10}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
