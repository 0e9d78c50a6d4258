// How long the engines take for columns in memory: by cases, predictors, categories of a predictor,
// and threads. Prints a line for each measurement: panel, curve, size, seconds (the least of three
// runs); bench/plot_curves.py draws them.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "bench/InMemory.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/model/NBScoredBlock.h"

namespace {

using InMemory::Blocks, InMemory::Input, InMemory::Table;

constexpr int kRuns = 3;
constexpr std::size_t kBlock = MCCommon::RecordBlock::kMaxCases;

void Measure(const char* panel, const char* curve, double size, const std::function<void()>& run) {
  double least = INFINITY;
  for (int i = 0; i < kRuns; ++i) {
    const auto start = std::chrono::steady_clock::now();
    run();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    least = std::min(least, taken.count());
  }
  std::printf("%s\t%s\t%.0f\t%.9f\n", panel, curve, size, least);
  std::fflush(stdout);
}

int CasesOf(const Input& input) {
  return static_cast<int>(input.fColumns[0].size() * input.fTimes);
}

void Rank(const Input& input, int threads) {
  FSSettings settings(input.fCategorical, input.fbCatTarget);
  settings.SetNThreads(threads);
  FSFactory factory;
  const auto component = factory.CreateFSAlgorithm(&settings);
  Blocks blocks(input);
  static_cast<void>(component->AccumulateAndRank(blocks, -1, false, 0));
}

// All predictors have so many categories.
NBVarList ListOf(const Input& input, int categories, INBVariable::VariableRole role) {
  NBVarList list;
  list.AddCatVar("y", "", 3, INBVariable::kNumericCategorical, INBVariable::kOutput);
  for (std::size_t j = 1; j < input.fColumns.size(); ++j) {
    list.AddCatVar("x" + std::to_string(j), "", categories, INBVariable::kNumericCategorical, role);
  }
  return list;
}

NaiveBayesSettings SettingsFor(const Input& input, int threads) {
  NaiveBayesSettings settings;
  settings.SetNThreads(threads);
  settings.SetMaxRecordsInMemory(CasesOf(input));
  return settings;
}

void Train(const Input& input, int categories, int threads) {
  Blocks blocks(input);
  NBAlgorithm algorithm(SettingsFor(input, threads),
                        ListOf(input, categories, INBVariable::kInput));
  static_cast<void>(algorithm.BuildModel(blocks, CasesOf(input)));
}

void Select(const Input& input, int threads) {
  Blocks blocks(input);
  NBAlgorithm algorithm(SettingsFor(input, threads), ListOf(input, 8, INBVariable::kPossibleInput));
  NBSelectionResult result;
  static_cast<void>(algorithm.SelectAttributes(
      {.fData = blocks, .fNRecords = CasesOf(input), .fSize = 3}, result));
}

std::vector<int> Predictors(int count, int categories) {
  return std::vector<int>(static_cast<std::size_t>(count), categories);
}

void ByCases() {
  std::vector<int> mixed = Predictors(20, 0);
  std::fill_n(mixed.begin(), 10, 8);
  for (const int cases : {10000, 100000, 1000000, 10000000}) {
    const int once = std::min(cases, 1000000);
    Input input = Table(once, 3, mixed, kBlock);
    input.fTimes = static_cast<std::size_t>(cases / once);
    Measure("cases", "ranking of 20", cases, [&] { Rank(input, 1); });
    input = Table(once, 3, Predictors(20, 8), kBlock);
    input.fTimes = static_cast<std::size_t>(cases / once);
    Measure("cases", "training of 20", cases, [&] { Train(input, 8, 1); });
    if (cases == once) Measure("cases", "selection of 3 of 20", cases, [&] { Select(input, 1); });
  }
}

void ByPredictors() {
  for (const int predictors : {10, 100, 1000, 2000, 20000}) {
    const std::size_t block =
        MCCommon::RecordBlock::PreferredCases(static_cast<std::size_t>(predictors));
    Input input = Table(1000, 3, Predictors(predictors, 0), block);
    Measure("predictors", "ranking", predictors, [&] { Rank(input, 1); });
    input = Table(1000, 3, Predictors(predictors, 8), block);
    Measure("predictors", "training", predictors, [&] { Train(input, 8, 1); });
    if (predictors <= 2000) {
      Measure("predictors", "selection of 3", predictors, [&] { Select(input, 1); });
    }
  }
}

void ByCategories() {
  for (const int categories : {10, 100, 1000, 10000, 100000, 1000000}) {
    const Input classes = Table(1000000, 3, {categories}, kBlock);
    Measure("categories", "ranking, classes", categories, [&] { Rank(classes, 1); });
    Measure("categories", "training", categories, [&] { Train(classes, categories, 1); });
    const Input scale = Table(1000000, 0, {categories}, kBlock);
    Measure("categories", "ranking, scale target", categories, [&] { Rank(scale, 1); });
  }
}

void ByThreads() {
  const Input scale = Table(1000000, 3, Predictors(20, 0), kBlock);
  const Input codes = Table(1000000, 3, Predictors(20, 8), kBlock);
  const Input fewer = Table(100000, 3, Predictors(50, 8), kBlock);
  Blocks blocks(codes);
  NBAlgorithm built(SettingsFor(codes, 1), ListOf(codes, 8, INBVariable::kInput));
  static_cast<void>(built.BuildModel(blocks, CasesOf(codes)));
  const int cores = static_cast<int>(std::thread::hardware_concurrency());
  for (int threads = 1; threads <= std::max(cores, 1); threads *= 2) {
    Measure("threads", "ranking", threads, [&] { Rank(scale, threads); });
    Measure("threads", "training", threads, [&] { Train(codes, 8, threads); });
    Measure("threads", "selection", threads, [&] { Select(fewer, threads); });
    NBScoredBlock scored(threads);
    Measure("threads", "scoring", threads, [&] {
      static_cast<void>(blocks.NewPass());
      while (blocks.HasMore())
        static_cast<void>(built.ScoreBlock(blocks.NextBlock(kBlock), scored));
    });
  }
}

}  // namespace

int main() {
  ByCases();
  ByPredictors();
  ByCategories();
  ByThreads();
  return 0;
}
