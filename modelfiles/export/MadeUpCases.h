// Cases to try an exported model by: values of the predictors' own rows, or none, the same ones for
// the same model, and what the model says of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "modelfiles/export/ScoringModel.h"
#include "naivebayes/model/NBOutput.h"

class INBAlgorithm;

namespace MCModelFiles {

struct MadeUpCase {
  std::vector<std::optional<std::variant<double, std::string>>> fValues;  // by input; or missing
  NBOutput fScores;
};

class MadeUpCases {
 public:
  // Both are borrowed; the tables are those of the model.
  MadeUpCases(const INBAlgorithm& model, const ScoringModel& tables)
      : fModel(model), fTables(tables) {}

  MadeUpCase Next();

 private:
  std::size_t Draw(std::size_t below);

  const INBAlgorithm& fModel;
  const ScoringModel& fTables;
  std::uint64_t fState = 1;
};

}  // namespace MCModelFiles
