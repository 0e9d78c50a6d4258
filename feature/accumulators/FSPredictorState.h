// What every accumulator knows of its predictor: weights seen and whether its values differ.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "common/MissingValue.h"
#include "feature/accumulators/FSRecode.h"
#include "feature/accumulators/FSRun.h"

class FSPredictorState {
 public:
  // The first value as long as no valid one was seen, of a categorical and a continuous predictor.
  static constexpr double kNoCategory = -1.0;
  static constexpr double kNoNumber = MCMV::gMissingValue;

  // `none` is one of the two.
  explicit FSPredictorState(double none) : fNone(none), fFirst(none) {}

  // A valid value (a category for a categorical predictor) with a weight above zero.
  void AddValid(double value, double weight) {
    if (fbConstant) Track(value);
    fTotal += weight;
    ++fNValid;
  }

  // Cases of weight 1; Track() has to be told the valid values besides. REQUIRES: HasWholeWeights.
  void AddUnitCases(std::size_t valid, std::size_t missing) {
    fTotal += static_cast<double>(valid + missing);
    fMissing += static_cast<double>(missing);
    fNValid += static_cast<std::int64_t>(valid);
  }
  // The weights of cases: of all of them, as they add up with the total so far, and of one that is
  // missing; and how many are valid. Track() as above.
  void SetTotalWeight(double total) { fTotal = total; }
  void AddMissingWeight(double weight) { fMissing += weight; }
  void AddValidCases(std::size_t valid) { fNValid += static_cast<std::int64_t>(valid); }
  bool HasWholeWeights() const { return FSIsWhole(fTotal) && FSIsWhole(fMissing); }

  // Whether the values are constant still, with this valid one.
  void Track(double value) {
    if (fFirst == fNone) {
      fFirst = value;
    } else {
      fbConstant = value == fFirst;
    }
  }

  // A missing value with a weight above zero.
  void AddMissing(double weight) {
    fTotal += weight;
    fMissing += weight;
  }

  // Takes in what was seen of the predictor in another part of the data, whose first value reads
  // `first` here.
  void Merge(const FSPredictorState& other, double first) {
    if (fFirst == fNone) {
      fFirst = first;
    } else if (first != fNone) {
      fbConstant = fbConstant && first == fFirst;
    }
    fbConstant = fbConstant && other.fbConstant;
    fTotal += other.fTotal;
    fMissing += other.fMissing;
    fNValid += other.fNValid;
  }

  // The first valid value, or kNoCategory, kNoNumber.
  double GetFirst() const { return fFirst; }
  // Sum of weights of all cases, of the missing ones, of the valid ones.
  double GetTotalWeight() const { return fTotal; }
  double GetMissingWeight() const { return fMissing; }
  double GetValidWeight() const { return fTotal - fMissing; }
  double GetPercentMissing() const { return fTotal > 0.0 ? fMissing / fTotal * 100.0 : 0.0; }
  // Whether the predictor is categorical.
  bool IsOfCategory() const { return fNone == kNoCategory; }
  // Number of valid cases, not weighted: of a categorical predictor.
  std::int64_t GetNValidCases() const { return fNValid; }

  // The mean weight of a valid case; 1 where there is none.
  double GetCaseWeight() const {
    return fNValid > 0 ? GetValidWeight() / static_cast<double>(fNValid) : 1.0;
  }

  // True without any valid case, also when no case was seen at all.
  bool IsAllMissing() const { return fTotal == fMissing; }
  // True until two different values were seen.
  bool IsAllConstant() const { return fbConstant; }

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);

 private:
  double fTotal = 0.0;
  double fMissing = 0.0;
  std::int64_t fNValid = 0;
  double fNone;
  double fFirst;
  bool fbConstant = true;
};

// The first category of another component's predictor, as it reads here.
inline double FSFirstCategory(const FSPredictorState& other, const FSRecode& recode) {
  const double first = other.GetFirst();
  return first == FSPredictorState::kNoCategory ? first : recode(static_cast<int>(first));
}
