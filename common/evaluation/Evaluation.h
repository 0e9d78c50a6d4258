// How well a classifier's predictions agree with what was observed: measures with their 95 %
// intervals, beside those of two classifiers that look at no predictor.
//
// Plain values, as EvaluationCounter finds them. What does not apply, or cannot be told from the
// cases, is MCMV::gMissingValue. Cases count by their weights, which stand for copies.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/MissingValue.h"

namespace MCCommon {

enum class Measure {
  kAccuracy,
  kBalancedAccuracy,  // the mean of the recalls of the classes that were observed
  kAUC,               // one class against the rest, averaged by the observed shares
  kLogLoss,
  kBrier,
  kKappa,
  kMCC,
  kCalibrationError
};

inline constexpr std::size_t kNMeasures = 8;

struct Estimate {
  double fValue = MCMV::gMissingValue;
  double fLow = MCMV::gMissingValue;  // of its 95 % interval
  double fHigh = MCMV::gMissingValue;
};

using Measures = std::array<Estimate, kNMeasures>;

struct ClassEvaluation {
  double fObserved = 0.0;   // cases of the class ...
  double fPredicted = 0.0;  // ... and cases that are taken for it
  Estimate fRecall;         // share of the observed ones that are predicted rightly
  Estimate fPrecision;      // share of the predicted ones that are
  Estimate fAUC;            // the class against all others
};

// Cases whose class was predicted with about the same probability.
struct CalibrationBin {
  double fFrom = 0.0;
  double fTo = 0.0;
  double fCases = 0.0;
  double fProbability = MCMV::gMissingValue;  // on average
  double fAccuracy = MCMV::gMissingValue;
};

struct Evaluation {
  std::int64_t fNRows = 0;
  double fCases = 0.0;  // their weight
  Measures fMeasures;
  Measures fMajority;  // of always predicting the most frequent class of training for certain ...
  Measures fPrior;     // ... and of its shares in training as the probabilities; no intervals
  std::vector<ClassEvaluation> fClasses;         // of the model, and behind them unknown ones
  std::vector<std::vector<double>> fConfusions;  // cases by observed and predicted class
  std::vector<CalibrationBin> fCalibration;      // that have cases
  bool fbAUCRounded = false;  // probabilities were brought together, so that AUC is about so
};

inline const Estimate& Of(const Measures& measures, Measure measure) {
  return measures[static_cast<std::size_t>(measure)];
}

}  // namespace MCCommon
