// Progress of a training pass: "trainRecords" and "elapsedTime" in seconds.
#pragma once

#include <string>

#include "common/Progress.h"

class NBReporter : public ProgressReport {
 public:
  void SetValues(int records, double seconds);
  long DiscreteMeasure(const std::string& name) const override;
  double ScaleMeasure(const std::string& name) const override;

 private:
  int fNRecords = 0;
  double fSeconds = 0;
};
