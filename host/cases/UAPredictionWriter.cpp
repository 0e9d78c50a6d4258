#include "host/cases/UAPredictionWriter.h"

#include <utility>

#include "host/cases/KOVA_InputCaseIterator.h"

UAPredictionWriter::UAPredictionWriter(int predicted, const std::vector<KOVA_Value>& categories,
                                       int width, std::vector<int> probabilities)
    : fPredicted(predicted), fProbabilities(std::move(probabilities)) {
  for (const KOVA_Value& category : categories) {
    if (category.IsNumeric()) {
      fNumbers.push_back(category.GetNumber());
    } else {
      fTexts.push_back(KOVA_InputCaseIterator::Cut(category.GetString(), width));
    }
  }
}

void UAPredictionWriter::Store(KOVA_InputCaseIterator& cases, const std::size_t* places,
                               const std::vector<std::int32_t>& winners,
                               const std::vector<double>& probabilities) const {
  if (!cases.MayStore() || winners.empty()) return;
  // One column: what the winner of a case decides, at the place of the case.
  const auto store = [&](auto* column, auto valueOf) {
    for (std::size_t i = 0; i < winners.size(); ++i) {
      if (winners[i] >= 0) column[places[i]] = valueOf(i);
    }
  };
  const auto winnerOf = [&winners](std::size_t i) { return static_cast<std::size_t>(winners[i]); };
  if (fPredicted >= 0 && fTexts.empty()) {
    store(cases.NumberColumn(fPredicted), [&](std::size_t i) { return fNumbers[winnerOf(i)]; });
  } else if (fPredicted >= 0) {
    store(cases.StringColumn(fPredicted), [&](std::size_t i) { return &fTexts[winnerOf(i)]; });
  }
  const std::size_t nCategories = probabilities.size() / winners.size();
  for (std::size_t k = 0; k < fProbabilities.size(); ++k) {
    store(cases.NumberColumn(fProbabilities[k]),
          [&](std::size_t i) { return probabilities[i * nCategories + k]; });
  }
}
