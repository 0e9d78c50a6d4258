// Progress of a forward selection: "selectedPredictors", "candidatePredictors" (left),
// "maxPredictors", "trainRecords", and "elapsedTime" in seconds.
#pragma once

#include <string>

#include "common/Progress.h"

class NBAttribSelectReporter : public ProgressReport {
 public:
  void SetValues(int selected, int candidates, int maxPredictors, int records, double seconds);
  long DiscreteMeasure(const std::string& name) const override;
  double ScaleMeasure(const std::string& name) const override;

 private:
  int fNSelected = 0;
  int fNCandidates = 0;
  int fNMax = 0;
  int fNRecords = 0;
  double fSeconds = 0;
};
