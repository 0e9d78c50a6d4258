// Codes kept in memory, each input's in the narrowest width that holds its categories.
#pragma once

#include <cstddef>
#include <cstdint>
#include <variant>
#include <vector>

#include "common/Workers.h"
#include "naivebayes/store/NBCodeStore.h"

class NBMemoryStore : public NBCodeStore {
 public:
  // For inputs of so many categories each. Weights are kept only when there are any.
  NBMemoryStore(const std::vector<int>& categories, bool hasWeight);

  // Takes a block's cases in behind those before; the workers share out its inputs.
  // REQUIRES: codes within the categories; all blocks are added before the first pass.
  void Add(const NBCodeBlock& codes, MCCommon::Workers& workers = MCCommon::Workers::Alone());

  const NBCodeBlock* NextCodes() override;
  bool HasFailed() const override { return false; }
  [[nodiscard]] bool NewPass() override;
  void KeepInputs(const std::vector<int>& inputs) override;

 private:
  using Column =
      std::variant<std::vector<std::int8_t>, std::vector<std::int16_t>, std::vector<std::int32_t>>;

  static Column MakeColumn(int categories);

  bool fbHasWeight;
  std::vector<std::int32_t> fvTargets;
  std::vector<double> fvWeights;  // without weights, ones for a single block
  std::vector<Column> fvColumns;
  std::size_t fNext = 0;
  NBCodeBlock fBlock;
};
