// Writes a model's predictions into new variables of the table, a block of cases at a time: the
// value of the category that wins, and the probabilities of the first categories.
//
// Knows categories by their numbers only, whatever model they come from. A case without a winner
// keeps missing cells. Owns nothing of the table, but the texts that go there: it must outlive the
// stream, which may hand them over as late as in its destruction.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/cases/KOVA_Value.h"

class KOVA_InputCaseIterator;

class UAPredictionWriter {
 public:
  // Variables are those that KOVA_DataSource::MakeVariable made. `predicted` (-1: none) receives
  // the value of the winning category, a text cut to `width` bytes; `probabilities`, one variable
  // per category from the first on, may be fewer than there are categories.
  UAPredictionWriter(int predicted, const std::vector<KOVA_Value>& categories, int width,
                     std::vector<int> probabilities);

  // Stores the predictions of a stream's last block, whose cases have these places
  // (UAProcDataSourceIter::GetBlockPlaces): per case the winner, below 0 for none, and the
  // probabilities of all categories side by side. Nothing outside the last pass.
  // REQUIRES: winners and categories that the writer knows.
  void Store(KOVA_InputCaseIterator& cases, const std::size_t* places,
             const std::vector<std::int32_t>& winners,
             const std::vector<double>& probabilities) const;

 private:
  int fPredicted;
  std::vector<double> fNumbers;     // by category; of a numeric predicted value
  std::vector<std::string> fTexts;  // by category; of a string one
  std::vector<int> fProbabilities;
};
