// The calibration of one NAIVEBAYES run's model, where the session wants one: by the test cases, or
// without any by the training cases, which are then gone over twice.
#pragma once

#include <cstdint>

#include "backend/predselect/drivers/PRSMultiRun.h"

class NBAlgorithm;
class NBCalibrator;

class PRSMultiCalibration {
 public:
  // Both are borrowed. REQUIRES: the model was built.
  PRSMultiCalibration(PRSMultiRun& run, NBAlgorithm& model) : fRun(run), fModel(model) {}

  // False, after a message, when it did not come to its end.
  [[nodiscard]] bool Calibrate();

 private:
  enum class Step { kDivide, kAdd };

  [[nodiscard]] bool Pass(PRSMultiRun::Sample sample, Step step, NBCalibrator& calibrator);
  void Finish(const NBCalibrator& calibrator, bool byTestCases);
  void Say(const char* key, std::size_t cases) const;

  PRSMultiRun& fRun;
  NBAlgorithm& fModel;
};
