// How the time of a feature selection run grows: with the categories of a predictor (one a case),
// with those of the target, with cases and with columns.

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

#include "bench/Growth.h"
#include "common/RecordIterator.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"

namespace {

struct Input {
  std::vector<bool> fCategorical;  // predictors
  bool fbCatTarget;
  std::size_t fBlock;                         // cases
  std::vector<std::vector<double>> fColumns;  // the target comes first
};

class Blocks : public MCCommon::RecordIterator {
 public:
  explicit Blocks(const Input& input) : fInput(input) {}
  bool HasMore() override { return fNext < fInput.fColumns[0].size(); }
  const MCCommon::Record* NextRecord() override { return nullptr; }  // blocks only
  FailReason GetFailReason() const override { return HasEnded() ? kNoRecords : kSuccess; }
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override {
    const std::size_t left = fInput.fColumns[0].size() - fNext;
    const std::size_t n = std::min({maxCases, fInput.fBlock, left});
    fBlock.Reset(fInput.fColumns.size(), n);
    for (std::size_t j = 0; j < fInput.fColumns.size(); ++j) {
      fBlock.SetColumn(j, fInput.fColumns[j].data() + fNext);
    }
    fNext += n;
    return fBlock;
  }

 private:
  bool HasEnded() const { return fNext >= fInput.fColumns[0].size(); }

  const Input& fInput;
  std::size_t fNext = 0;
  MCCommon::RecordBlock fBlock;
};

// So many categories at random, or values for 0 of them.
std::vector<double> Column(int cases, int categories, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<double> column(static_cast<std::size_t>(cases));
  for (double& value : column) {
    value = categories > 0 ? random() % static_cast<unsigned>(categories) : random() * 0x1p-32;
  }
  return column;
}

Input Table(int cases, int targetCategories, const std::vector<int>& predictorCategories,
            std::size_t block) {
  Input input{{}, targetCategories > 0, block, {Column(cases, targetCategories, 1)}};
  for (const int categories : predictorCategories) {
    input.fCategorical.push_back(categories > 0);
    const auto seed = static_cast<unsigned>(input.fColumns.size()) + 1;
    input.fColumns.push_back(Column(cases, categories, seed));
  }
  return input;
}

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
      categories, [](int k) { return Table(100000, k, {0, 0, 0, 0, 8, 8, 8, 8}, 64); }, Rank);
  Growth::Show(
      "The same in blocks of 4,096", categories,
      [](int k) { return Table(100000, k, {0, 0, 0, 0, 8, 8, 8, 8}, 4096); }, Rank);
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
      [](int k) { return Table(1000, 3, std::vector<int>(static_cast<std::size_t>(k), 0), 64); },
      Rank);
  return 0;
}
