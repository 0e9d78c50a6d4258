// How far a feature selection run has come: "records" during the data pass, "predictors" while
// criteria are computed (the other one is -1), and "elapsedTime" in seconds.
#pragma once

#include "common/MissingValue.h"
#include "common/Progress.h"

class FSReporter : public ProgressReport {
 public:
  void SetNRecords(int n, double seconds) { Set(n, -1, seconds); }
  void SetNPredictors(int n, double seconds) { Set(-1, n, seconds); }

  long DiscreteMeasure(const std::string& name) const override {
    if (name == "records") return fNRecords;
    return name == "predictors" ? fNPredictors : -1;
  }
  double ScaleMeasure(const std::string& name) const override {
    return name == "elapsedTime" ? fSeconds : MCMV::gMissingValue;
  }

 private:
  void Set(int records, int predictors, double seconds) {
    fNRecords = records;
    fNPredictors = predictors;
    fSeconds = seconds;
  }

  int fNRecords = -1;
  int fNPredictors = -1;
  double fSeconds = 0.0;
};
