#include "naivebayes/store/NBMemoryStore.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "common/RecordBlock.h"

using MCCommon::RecordBlock;

NBMemoryStore::NBMemoryStore(const std::vector<int>& categories, bool hasWeight)
    : fbHasWeight(hasWeight) {
  if (!hasWeight) fvWeights.assign(RecordBlock::kMaxCases, 1.0);
  for (int count : categories) fvColumns.push_back(MakeColumn(count));
}

NBMemoryStore::Column NBMemoryStore::MakeColumn(int categories) {
  const int highest = categories - 1;
  if (highest <= std::numeric_limits<std::int8_t>::max()) return std::vector<std::int8_t>();
  if (highest <= std::numeric_limits<std::int16_t>::max()) return std::vector<std::int16_t>();
  return std::vector<std::int32_t>();
}

void NBMemoryStore::Add(const NBCodeBlock& codes, MCCommon::Workers& workers) {
  const std::size_t cases = codes.Cases();
  fvTargets.insert(fvTargets.end(), codes.Targets(), codes.Targets() + cases);
  if (fbHasWeight) fvWeights.insert(fvWeights.end(), codes.Weights(), codes.Weights() + cases);
  workers.For(cases * fvColumns.size()).ForEach(fvColumns.size(), [&](std::size_t j, std::size_t) {
    const auto append = [cases](auto& column, const auto* values) {
      using Code = typename std::decay_t<decltype(column)>::value_type;
      const std::size_t start = column.size();
      column.resize(start + cases);
      std::transform(values, values + cases, column.begin() + static_cast<std::ptrdiff_t>(start),
                     [](auto code) { return static_cast<Code>(code); });
    };
    std::visit(append, fvColumns[j], codes.Codes(static_cast<int>(j)));
  });
}

const NBCodeBlock* NBMemoryStore::NextCodes() {
  const std::size_t cases = std::min(fvTargets.size() - fNext, RecordBlock::kMaxCases);
  if (cases == 0) return nullptr;
  fBlock.Reset(cases, fvTargets.data() + fNext, fvWeights.data() + (fbHasWeight ? fNext : 0),
               fvColumns.size());
  for (std::size_t j = 0; j < fvColumns.size(); ++j) {
    const auto show = [this](const auto& column) -> NBCodes { return column.data() + fNext; };
    fBlock.SetCodes(j, std::visit(show, fvColumns[j]));
  }
  fNext += cases;
  return &fBlock;
}

bool NBMemoryStore::NewPass() {
  fNext = 0;
  return true;
}

void NBMemoryStore::KeepInputs(const std::vector<int>& inputs) {
  std::vector<Column> kept;
  for (int j : inputs) kept.push_back(std::move(fvColumns[j]));
  fvColumns = std::move(kept);
}
