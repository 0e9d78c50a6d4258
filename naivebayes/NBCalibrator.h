// Finds the calibration of a built model by cases that its counts do not hold.
//
// Held-out cases: Add each block of them, then Fit. Without any, the training cases stand in for
// them: Divide each block into folds, SetFolds, Add each block again in the same order, and Fit;
// each case is then scored by the model without the counts of its own fold. The choice of
// predictors and the bins stay as they are. The joint values of all cases are kept in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "common/RecordBlock.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/model/NBCalibration.h"
#include "naivebayes/model/NBEvidence.h"
#include "naivebayes/model/NBModelView.h"
#include "naivebayes/store/NBCodeBuffer.h"
#include "naivebayes/validation/NBFoldModel.h"

class NBCalibrator {
 public:
  static constexpr int kFolds = 10;

  // The model is borrowed. `seed` decides which case is in which fold. REQUIRES: it was built.
  NBCalibrator(const NBAlgorithm& model, std::uint64_t seed);

  // Cases in blocks of original records; those without a valid target or weight do not count.
  void Divide(const MCCommon::RecordBlock& block);
  void SetFolds();
  void Add(const MCCommon::RecordBlock& block);

  // How many cases counted.
  std::size_t GetNCases() const { return fTargets.size(); }

  // None where the cases leave it open: there are fewer than 2, of one class, or all of them are
  // told apart without a doubt.
  NBCalibration Fit(NBCalibration::Method method) const;

 private:
  NBModelView Whole() const { return {fModel.GetOutput(), fModel.GetInputs()}; }
  void Encode(const MCCommon::RecordBlock& block);
  bool IsValid(std::size_t place) const {
    return fBlock.fvTargets[place] >= 0 && fBlock.fvWeights[place] > 0;
  }
  // Of the case with that number, of those that were encoded.
  std::size_t FoldOf(std::size_t number) const;
  bool IsOneClass() const;
  NBCalibration FitTemperature() const;
  NBCalibration FitCurves() const;
  // The slope of the cases' average log-loss by the inverse of the temperature, and its slope.
  std::pair<double, double> SlopeAt(double inverse) const;
  NBCalibration::Curve CurveOf(std::size_t k) const;

  const NBAlgorithm& fModel;
  std::uint64_t fSeed;
  std::size_t fNClasses;
  std::vector<NBFoldModel> fFolds;    // while cases are being taken out
  std::vector<NBEvidence> fEvidence;  // by fold; of held-out cases one
  std::size_t fNSeen = 0;
  NBCodeBuffer fBlock;  // at hand
  // Of all cases that count: logarithms of joint values, the classes side by side.
  std::vector<double> fLogs;
  std::vector<std::int32_t> fTargets;
  std::vector<double> fWeights;
};
