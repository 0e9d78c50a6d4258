// Naive Bayes: forward selection from records in memory, the training pass, and scoring of a
// sample.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "common/RecordIterator.h"
#include "naivebayes/NBAlgorithm.h"

namespace {

// Columns of random category codes, handed out as blocks without copying.
class Columns : public MCCommon::MultiPassRecordIter {
 public:
  Columns(int cases, int inputs, int categories, int classes) : fCases(cases) {
    std::mt19937 random(1);
    for (int j = 0; j <= inputs; ++j) {
      std::vector<double> column;
      for (int i = 0; i < cases; ++i) {
        const auto draw = static_cast<int>(random() % (j == 0 ? classes : categories));
        const bool tied = j > 0 && random() % 40 < static_cast<unsigned>(j);
        column.push_back(tied ? static_cast<int>(fvColumns[0][i]) % categories : draw);
      }
      fvColumns.push_back(column);
    }
    fRecord = MCCommon::Record(fvColumns.size());
  }
  bool HasMore() override { return fNext < fCases; }
  const MCCommon::Record* NextRecord() override {
    if (!HasMore()) return nullptr;
    for (std::size_t j = 0; j < fvColumns.size(); ++j) fRecord[j] = fvColumns[j][fNext];
    ++fNext;
    return &fRecord;
  }
  FailReason GetFailReason() const override { return fNext < fCases ? kSuccess : kNoRecords; }
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override {
    const std::size_t cases = std::min(
        {maxCases, fCases - fNext, MCCommon::RecordBlock::PreferredCases(fvColumns.size())});
    fBlock.Reset(fvColumns.size(), cases);
    for (std::size_t j = 0; j < fvColumns.size(); ++j) {
      fBlock.SetColumn(j, fvColumns[j].data() + fNext);
    }
    fNext += cases;
    return fBlock;
  }
  bool NewPass() override {
    fNext = 0;
    return true;
  }

 private:
  std::size_t fCases;
  std::size_t fNext = 0;
  std::vector<std::vector<double>> fvColumns;
  MCCommon::Record fRecord;
  MCCommon::RecordBlock fBlock;
};

NBVarList MakeList(int inputs, int categories, int classes, INBVariable::VariableRole role) {
  NBVarList list;
  list.AddCatVar("y", "", classes, INBVariable::kNumericCategorical, INBVariable::kOutput);
  std::string name = "x";
  for (int j = 0; j < inputs; ++j) {
    list.AddCatVar(name += 'x', "", categories, INBVariable::kNumericCategorical, role);
  }
  return list;
}

constexpr int kInputs = 30, kCategories = 8;

// The time that one of so many like steps of an iteration takes.
void ReportTime(benchmark::State& state, const char* step, double steps) {
  state.counters[step] = benchmark::Counter(
      steps, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Selects so many of the inputs, each time with a new component.
void SelectPredictors(benchmark::State& state, int cases, int inputs, int classes, int size) {
  Columns data(cases, inputs, kCategories, classes);
  NaiveBayesSettings settings;
  settings.SetMaxRecordsInMemory(cases);
  settings.SetNThreads(static_cast<int>(state.range(2)));
  for (auto _ : state) {
    data.NewPass();
    NBAlgorithm algorithm(settings,
                          MakeList(inputs, kCategories, classes, INBVariable::kPossibleInput));
    NBSelectionResult result;
    if (algorithm.SelectAttributes({.fData = data, .fNRecords = cases, .fSize = size}, result)
            .IsError()) {
      state.SkipWithError("selection failed");
    }
  }
}

void BM_ForwardSelection(benchmark::State& state) {
  const int cases = static_cast<int>(state.range(0)), classes = static_cast<int>(state.range(1));
  SelectPredictors(state, cases, kInputs, classes, 10);
  constexpr int kTried = 30 + 29 + 28 + 27 + 26 + 25 + 24 + 23 + 22 + 21;
  ReportTime(state, "record_candidate_class", 1.0 * cases * kTried * classes);
}
BENCHMARK(BM_ForwardSelection)
    ->ArgNames({"cases", "classes", "threads"})
    ->ArgsProduct({{5000}, {2, 3, 10}, {1, 2}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// Many classes, or many candidates: the time of a step on its own must not grow with them.
void BM_LargeSelection(benchmark::State& state) {
  const int cases = 4000, inputs = static_cast<int>(state.range(0));
  const int classes = static_cast<int>(state.range(1));
  SelectPredictors(state, cases, inputs, classes, 3);
  ReportTime(state, "record_candidate_class", 1.0 * cases * (3.0 * inputs - 3) * classes);
}
BENCHMARK(BM_LargeSelection)
    ->ArgNames({"inputs", "classes", "threads"})
    ->Args({8, 1000, 1})
    ->Args({8, 4000, 1})
    ->Args({8, 16000, 1})
    ->Args({500, 3, 1})
    ->Args({500, 3, 2})
    ->Args({2000, 3, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void BM_Training(benchmark::State& state) {
  const int cases = static_cast<int>(state.range(0));
  Columns data(cases, kInputs, kCategories, 3);
  NaiveBayesSettings settings;
  settings.SetNThreads(static_cast<int>(state.range(1)));
  for (auto _ : state) {
    data.NewPass();
    NBAlgorithm algorithm(settings, MakeList(kInputs, kCategories, 3, INBVariable::kInput));
    if (algorithm.BuildModel(data, cases).IsError()) state.SkipWithError("training failed");
  }
  ReportTime(state, "cell", 1.0 * cases * kInputs);
}
BENCHMARK(BM_Training)
    ->ArgNames({"cases", "threads"})
    ->ArgsProduct({{5000, 200000}, {1, 2}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// A whole sample in blocks, and single records.
void BM_Scoring(benchmark::State& state) {
  const bool blocks = state.range(0) != 0;
  const int cases = 50000, classes = static_cast<int>(state.range(1));
  Columns data(cases, kInputs, kCategories, classes);
  NaiveBayesSettings settings;
  settings.SetNThreads(static_cast<int>(state.range(2)));
  NBAlgorithm algorithm(settings, MakeList(kInputs, kCategories, classes, INBVariable::kInput));
  if (algorithm.BuildModel(data, cases).IsError()) state.SkipWithError("training failed");
  NBOutputStatistics stats(classes);
  NBOutput output(classes);
  std::vector<MCCommon::Record> records;
  data.NewPass();
  while (records.size() < 1000) records.push_back(*data.NextRecord());
  for (auto _ : state) {
    data.NewPass();
    if (blocks) {
      if (algorithm.ComputeOutputStats(data, stats, -1).IsError()) state.SkipWithError("failed");
    } else {
      for (int i = 0; i < cases; ++i) {
        const MCCommon::Record& record = records[i % records.size()];
        if (algorithm.ScoreFullRecord(record, output).IsError()) state.SkipWithError("failed");
      }
    }
  }
  ReportTime(state, "cell_class", 1.0 * cases * kInputs * classes);
}
BENCHMARK(BM_Scoring)
    ->ArgNames({"blocks", "classes", "threads"})
    ->ArgsProduct({{1}, {2, 3, 10}, {1, 2}})
    ->Args({0, 3, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
