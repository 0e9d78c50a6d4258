#include "naivebayes/NBReporter.h"

#include "common/MissingValue.h"

void NBReporter::SetValues(int records, double seconds) {
  fNRecords = records;
  fSeconds = seconds;
}

long NBReporter::DiscreteMeasure(const std::string& name) const {
  return name == "trainRecords" ? fNRecords : -1;
}

double NBReporter::ScaleMeasure(const std::string& name) const {
  return name == "elapsedTime" ? fSeconds : MCMV::gMissingValue;
}
