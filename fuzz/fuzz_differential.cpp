// Bytes as a small table, through both engines and through the slow reference: the statistics of
// every pair of kinds, and the probabilities of every case, agree to 1e-9.
//
// Bytes: the kind of the target and whether there are weights, then five to six bytes a case.
// Values are small whole numbers, and sixteenths of them for scale variables, so that no answer is
// ill-conditioned.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "fuzz/FuzzCheck.h"
#include "fuzz/SlowReference.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBFactory.h"
#include "naivebayes/store/NBMemoryIter.h"
#include "tests/feature/Tables.h"

namespace {

using PredSelectFuzz::Require;
using SlowReference::Pairs;
using SlowReference::Real;
using SlowReference::Test;

constexpr int kColumns = 6;  // target, weight, two categorical and two scale predictors
constexpr std::size_t kMostCases = 200;
constexpr double kMissingCategory = -1;

double ScaleOf(std::uint8_t byte) { return byte == 255 ? KOVA_SystemMissing : byte / 16.0; }
double CategoryOf(std::uint8_t byte, int n) { return byte >= 240 ? kMissingCategory : byte % n; }

Table TableOf(const std::uint8_t* data, std::size_t size, bool catTarget, bool weighted) {
  Table table(kColumns);
  for (std::size_t at = 0; at + kColumns <= size && table[0].size() < kMostCases; at += kColumns) {
    const std::uint8_t* bytes = data + at;
    table[0].push_back(catTarget ? CategoryOf(bytes[0], 3) : ScaleOf(bytes[0]));
    table[1].push_back(weighted ? bytes[1] % 4 : 1);
    table[2].push_back(CategoryOf(bytes[2], 4));
    table[3].push_back(CategoryOf(bytes[3], 9));
    table[4].push_back(ScaleOf(bytes[4]));
    table[5].push_back(ScaleOf(bytes[5]));
  }
  return table;
}

bool IsValid(double value, bool categorical) {
  return categorical ? value != kMissingCategory : value != KOVA_SystemMissing;
}

// The cases in which both are valid.
Pairs PairsOf(const Table& table, int predictor, bool catTarget) {
  Pairs pairs;
  const bool categorical = predictor < 2;
  for (std::size_t i = 0; i < table[0].size(); ++i) {
    const double x = table[static_cast<std::size_t>(predictor) + 2][i];
    if (table[1][i] > 0 && IsValid(x, categorical) && IsValid(table[0][i], catTarget)) {
      pairs.push_back({x, table[0][i], table[1][i]});
    }
  }
  return pairs;
}

void RequireNear(double found, Real wanted, const char* what) {
  const Real off = std::abs(found - wanted);
  const bool isNear = off <= 1e-9L * std::max(Real(1), std::abs(wanted));
  Require(isNear, what,
          isNear ? "" : std::to_string(found) + " instead of " + std::to_string(double(wanted)));
}

struct Shown {
  double fP, fSecond, fThird, fFourth;
};

bool Show(const IFSAlgorithm& component, int criterion, int predictor, Shown& shown) {
  return component.GetPredictorStats(criterion, predictor, shown.fP, shown.fSecond, shown.fThird,
                                     shown.fFourth);
}

void CheckTable(const IFSAlgorithm& component, int predictor, const Pairs& pairs) {
  const SlowReference::Table table(pairs);
  if (table.fRows.size() < 2 || table.fColumns.size() < 2) return;
  Shown shown{};
  Require(Show(component, MCFSCommon::kPearson, predictor, shown), "X2 is shown");
  const Test pearson = SlowReference::Pearson(table);
  RequireNear(shown.fP, pearson.fP, "p of X2");
  RequireNear(shown.fSecond, pearson.fStatistic, "X2");
  RequireNear(shown.fThird, pearson.fDf1, "df of X2");
  Require(Show(component, MCFSCommon::kLikelihood, predictor, shown), "G2 is shown");
  const Test likelihood = SlowReference::Likelihood(table);
  RequireNear(shown.fP, likelihood.fP, "p of G2");
  RequireNear(shown.fSecond, likelihood.fStatistic, "G2");
  if (Show(component, MCFSCommon::kCramer, predictor, shown)) {
    RequireNear(shown.fP, SlowReference::CramersV(table), "Cramer's V");
  }
  if (Show(component, MCFSCommon::kLambda, predictor, shown)) {
    RequireNear(shown.fP, SlowReference::Lambda(table), "lambda");
  }
}

void CheckGroups(const IFSAlgorithm& component, int predictor, const Pairs& pairs) {
  const Test wanted = SlowReference::Anova(pairs);
  Shown shown{};
  // A perfect separation has no F, and what cannot be computed nothing.
  const bool isOrdinary = wanted.fDf1 >= 1 && wanted.fDf2 >= 1 && std::isfinite(wanted.fStatistic);
  if (!isOrdinary) return;
  Require(Show(component, MCFSCommon::kFStat, predictor, shown), "F is shown");
  RequireNear(shown.fP, wanted.fP, "p of F");
  RequireNear(shown.fSecond, wanted.fStatistic, "F");
  RequireNear(shown.fThird, wanted.fDf1, "df1");
  RequireNear(shown.fFourth, wanted.fDf2, "df2");
}

void CheckLine(const IFSAlgorithm& component, int predictor, const Pairs& pairs) {
  const Test wanted = SlowReference::Correlation(pairs);
  const bool isOrdinary =
      wanted.fDf1 >= 1 && std::isfinite(wanted.fDf2) && 1 - wanted.fDf2 * wanted.fDf2 > 1e-9L;
  if (!isOrdinary) return;
  Shown shown{};
  Require(Show(component, MCFSCommon::kTStat, predictor, shown), "t is shown");
  RequireNear(shown.fP, wanted.fP, "p of t");
  RequireNear(shown.fSecond, wanted.fDf2, "r");
  RequireNear(shown.fThird, wanted.fStatistic, "t");
  RequireNear(shown.fFourth, wanted.fDf1, "df of t");
}

void CheckFeatureSelection(const Table& table, bool catTarget) {
  FSSettings settings({true, true, false, false}, catTarget);
  settings.SetWeightPosition(1);
  FSFactory factory;
  const auto component = factory.CreateFSAlgorithm(&settings);
  BlocksOf source(table, 7);
  if (component->AccumulateAndRank(source, -1, false, 0).IsError()) return;
  const std::vector<int>& deleted = component->GetIndicesDelPred();
  for (int j = 0; j < 4; ++j) {
    if (std::find(deleted.begin(), deleted.end(), j) != deleted.end()) continue;
    Pairs pairs = PairsOf(table, j, catTarget);
    if (j < 2 && catTarget) {
      CheckTable(*component, j, pairs);
    } else if (j < 2 || catTarget) {
      if (j >= 2) {
        for (auto& pair : pairs) std::swap(pair.fX, pair.fY);
      }
      CheckGroups(*component, j, pairs);
    } else {
      CheckLine(*component, j, pairs);
    }
  }
}

void CheckNaiveBayes(const Table& table) {
  NBVarList list;
  list.AddCatVar("y", "", 3, INBVariable::kNumericCategorical, INBVariable::kOutput);
  list.AddCatVar("a", "", 4, INBVariable::kNumericCategorical, INBVariable::kInput);
  list.AddCatVar("b", "", 9, INBVariable::kNumericCategorical, INBVariable::kInput);
  const auto n = static_cast<int>(table[0].size());
  MCCommon::Record record(3);
  MCNaive::NBMemoryIter source(3, n);
  std::vector<std::vector<int>> rows;
  std::vector<MCCommon::Record> records;
  for (int i = 0; i < n; ++i) {
    const int from[] = {0, 2, 3};
    std::vector<int> row;
    for (int j = 0; j < 3; ++j) {
      const double value = table[static_cast<std::size_t>(from[j])][static_cast<std::size_t>(i)];
      record[static_cast<std::size_t>(j)] = value < 0 ? KOVA_SystemMissing : value;
      row.push_back(static_cast<int>(value));
    }
    source.AddRecord(record);
    records.push_back(record);
    if (row[0] >= 0) rows.push_back(row);
  }
  NBAlgorithm model(NaiveBayesSettings(), list);
  if (model.BuildModel(source, n).IsError()) return;
  NBOutput output(model.GetNTargetCategories());
  for (const MCCommon::Record& values : records) {
    if (model.ScoreFullRecord(values, output).IsError()) continue;
    const auto code = [](double value) { return value < 0 ? -1 : static_cast<int>(value); };
    const std::vector<Real> wanted =
        SlowReference::Posterior(rows, {code(values[1]), code(values[2])}, 3);
    for (int k = 0; k < 3; ++k) {
      RequireNear(output.GetOutProbabilities()[static_cast<std::size_t>(k)],
                  wanted[static_cast<std::size_t>(k)], "a probability");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1 + 2 * kColumns) return 0;
  const bool catTarget = (data[0] & 1) != 0;
  const bool weighted = (data[0] & 2) != 0;
  const Table table = TableOf(data + 1, size - 1, catTarget, weighted);
  CheckFeatureSelection(table, catTarget);
  if (catTarget && !weighted) CheckNaiveBayes(table);
  return 0;
}
