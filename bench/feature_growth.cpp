// How the time of a feature selection run grows: with the categories of a predictor (one a case),
// with those of the target, with cases and with columns.

#include <algorithm>
#include <random>
#include <vector>

#include "bench/Growth.h"
#include "bench/InMemory.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"

namespace {

using InMemory::Blocks, InMemory::Input, InMemory::Table;

// Each case has its own category, in no order.
Input UniqueIdentifiers(int cases, int targetCategories) {
  Input input = Table(cases, targetCategories, {1}, 4096);
  for (int i = 0; i < cases; ++i) input.fColumns[1][static_cast<std::size_t>(i)] = i;
  std::shuffle(input.fColumns[1].begin(), input.fColumns[1].end(), std::mt19937(7));
  return input;
}

void Rank(const Input& input) {
  FSSettings settings(input.fCategorical, input.fbCatTarget);
  FSFactory factory;
  const auto component = factory.CreateFSAlgorithm(&settings);
  Blocks blocks(input);
  static_cast<void>(component->AccumulateAndRank(blocks, -1, false, 0));
}

}  // namespace

int main() {
  const std::vector<int> many = {62500, 125000, 250000, 500000, 1000000};
  const std::vector<int> categories = {4, 8, 15, 30, 60};
  Growth::Show(
      "Unique identifiers, scale target, by cases", many,
      [](int n) { return UniqueIdentifiers(n, 0); }, Rank);
  Growth::Show(
      "Unique identifiers, target of 3 categories, by cases", many,
      [](int n) { return UniqueIdentifiers(n, 3); }, Rank);
  Growth::Show(
      "100,000 cases in blocks of 64, 4 scale and 4 categorical predictors, by target categories",
      categories,
      [](int k) {
        return Table(100000, k, {0, 0, 0, 0, 8, 8, 8, 8}, 64);
      },
      Rank);
  Growth::Show(
      "The same in blocks of 4,096", categories,
      [](int k) {
        return Table(100000, k, {0, 0, 0, 0, 8, 8, 8, 8}, 4096);
      },
      Rank);
  Growth::Show(
      "Identifiers as target (one a case), scale predictor, by cases", many,
      [](int n) {
        Input input = UniqueIdentifiers(n, 0);
        std::swap(input.fColumns[0], input.fColumns[1]);
        input.fbCatTarget = true;
        input.fCategorical = {false};
        return input;
      },
      Rank);
  Growth::Show(
      "10 scale and 10 categorical predictors, target of 3 categories, by cases", many,
      [](int n) {
        std::vector<int> predictors(20, 0);
        std::fill_n(predictors.begin(), 10, 8);
        return Table(n, 3, predictors, 4096);
      },
      Rank);
  Growth::Show(
      "1,000 cases, scale predictors, target of 3 categories, by columns",
      {1250, 2500, 5000, 10000, 20000},
      [](int k) {
        const auto columns = static_cast<std::size_t>(k);
        return Table(1000, 3, std::vector<int>(columns, 0),
                     MCCommon::RecordBlock::PreferredCases(columns));
      },
      Rank);
  return 0;
}
