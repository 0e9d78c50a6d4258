// What every accumulator knows of its predictor: weights seen and whether its values differ.
#pragma once

#include <cstdint>

class FSPredictorState {
 public:
  // `none` is the first value as long as no valid one was seen.
  explicit FSPredictorState(double none) : fNone(none), fFirst(none) {}

  // A valid value (a category for a categorical predictor) with a weight above zero.
  void AddValid(double value, double weight) {
    if (fbConstant) Track(value);
    fTotal += weight;
    ++fNValid;
  }

  // A missing value with a weight above zero.
  void AddMissing(double weight) {
    fTotal += weight;
    fMissing += weight;
  }

  // Sum of weights of all cases, of the missing ones, of the valid ones.
  double GetTotalWeight() const { return fTotal; }
  double GetMissingWeight() const { return fMissing; }
  double GetValidWeight() const { return fTotal - fMissing; }
  // Number of valid cases, not weighted.
  std::int64_t GetNValidCases() const { return fNValid; }

  // True without any valid case, also when no case was seen at all.
  bool IsAllMissing() const { return fTotal == fMissing; }
  // True until two different values were seen.
  bool IsAllConstant() const { return fbConstant; }

 private:
  void Track(double value) {
    if (fFirst == fNone) {
      fFirst = value;
    } else {
      fbConstant = value == fFirst;
    }
  }

  double fTotal = 0.0;
  double fMissing = 0.0;
  std::int64_t fNValid = 0;
  double fNone;
  double fFirst;
  bool fbConstant = true;
};
