// A built model's tables as logarithms: what each value of each predictor says of the classes.
//
// Evidence is a number a class, of which only differences mean anything: with the priors' and that
// of every value that a case has, the softmax of the sums is the case's posterior. It is centred:
// the classes' mean is 0. A missing value says nothing, so its evidence is 0 for all classes. A
// probability of 0 counts as the smallest number above it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/RecordBlock.h"

class NBAlgorithm;
class NBayesInput;
class NBayesOutput;

class NBEvidence {
 public:
  // The model is borrowed. REQUIRES: it was built.
  explicit NBEvidence(const NBAlgorithm& model);
  // Of tables alone, for which there are no blocks.
  NBEvidence(const NBayesOutput& output, const std::vector<NBayesInput>& inputs);

  // Adds the evidence of one value, of which these are the probabilities given each class.
  static void Append(const double* probabilities, std::size_t classes,
                     std::vector<double>& evidence);

  std::size_t GetNClasses() const { return fNClasses; }
  std::size_t GetNInputs() const { return fvTables.size(); }

  // By class: of the priors, and of a category or bin of an input; a code below 0 is a missing one.
  const double* OfPriors() const { return fvPriors.data(); }
  const double* Of(std::size_t input, std::int32_t code) const {
    return code < 0 ? fvNothing.data()
                    : &fvTables[input][static_cast<std::size_t>(code) * fNClasses];
  }

  // Takes the cases of a block of original records (INBAlgorithm::ScoreBlock), for the two below.
  void SetBlock(const MCCommon::RecordBlock& block);
  // Whether a case of the block has a value of the input.
  bool HasValue(std::size_t place, std::size_t input) const { return fvCodes[input][place] >= 0; }
  const double* OfCase(std::size_t place, std::size_t input) const {
    return Of(input, fvCodes[input][place]);
  }

 private:
  void DivideBy(double temperature);

  const NBAlgorithm* fpModel = nullptr;
  std::size_t fNClasses;
  std::vector<double> fvPriors;
  std::vector<double> fvNothing;
  std::vector<std::vector<double>> fvTables;       // by input; row by row
  std::vector<std::vector<std::int32_t>> fvCodes;  // by input and case of the block
};
