// Counts predicted cases, one after the other, and finds from them how good the predictions are.
//
// Memory does not grow with the cases beyond what RankedScores keep; all is exact but the area
// under the ROC curve of very many different probabilities. What parts of the cases have counted
// adds up to what all of them count.
#pragma once

#include <array>
#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <span>
#include <vector>

#include "common/CompensatedSum.h"
#include "common/evaluation/Evaluation.h"
#include "common/evaluation/RankedScores.h"

namespace MCCommon {

class EvaluationCounter {
 public:
  // Of targets with more classes no area under the ROC curve is computed.
  static constexpr std::size_t kMostAreas = 256;
  // So many different probabilities of all classes together keep the areas exact: what many parts
  // of a table can send each other (6 MB). RankedScores keep a least number a class.
  static constexpr std::size_t kScores = std::size_t{1} << 18;

  // For the classes of a model.
  explicit EvaluationCounter(std::size_t classes = 0);

  // A case: its class, which may be one that the model does not know, numbered behind those that it
  // knows; the class predicted; the probability of each that the model knows. An unknown class has
  // probability 0. REQUIRES: weight > 0.
  void Add(std::size_t observed, std::size_t predicted, std::span<const double> probabilities,
           double weight);
  // What was counted of other cases. REQUIRES: by a model of as many classes.
  void Add(const EvaluationCounter& other);

  std::size_t GetNClasses() const { return fNModel; }

  // Brings together what takes much room. REQUIRES: done before it is written.
  void Settle();

  // What was counted; the two classifiers beside it go by the model's priors.
  // REQUIRES: one prior a class of the model.
  Evaluation Find(const std::vector<double>& priors);

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

 private:
  static constexpr std::size_t kNBins = 10;

  // Of one number a case: its sum and that of its square.
  struct Mean {
    CompensatedSum fSum;
    CompensatedSum fSquares;
    void Add(double value, double weight) {
      fSum.Add(weight * value);
      fSquares.Add(weight * value * value);
    }
    void Add(const Mean& other) {
      fSum.Add(other.fSum);
      fSquares.Add(other.fSquares);
    }
    Estimate Find(double n) const;
  };
  // By the probability of the class predicted.
  struct Bin {
    double fCases = 0.0;
    double fCorrect = 0.0;
    CompensatedSum fProbability;
    CompensatedSum fSquares;  // of the difference between being right and the probability
    void Add(const Bin& other);
  };

  void Grow(std::size_t classes);
  void AddScores(std::size_t observed, std::span<const double> probabilities, double weight);
  Measures FindMeasures();
  Estimate FindBrier(std::size_t observedClasses) const;
  Estimate FindCalibrationError() const;
  void FindAreas();
  Estimate FindArea() const;
  std::vector<CalibrationBin> FindCalibration() const;
  Measures FindBaseline(std::size_t predicted, const std::vector<double>& probabilities) const;

  std::size_t fNModel;  // classes of the model; behind them are unknown ones
  std::int64_t fNRows = 0;
  double fTotal = 0.0;
  std::vector<std::vector<double>> fCases;  // by observed and predicted class
  Mean fLogLoss;
  Mean fBrier;
  std::array<Bin, kNBins> fBins;
  std::vector<RankedScores> fScores;  // by class of the model
  std::vector<RankedScores::Area> fAreas;
};

}  // namespace MCCommon
