#include "naivebayes/selection/NBAttribSelectReporter.h"

#include "common/MissingValue.h"

void NBAttribSelectReporter::SetValues(int selected, int candidates, int maxPredictors, int records,
                                       double seconds) {
  fNSelected = selected;
  fNCandidates = candidates;
  fNMax = maxPredictors;
  fNRecords = records;
  fSeconds = seconds;
}

long NBAttribSelectReporter::DiscreteMeasure(const std::string& name) const {
  if (name == "selectedPredictors") return fNSelected;
  if (name == "candidatePredictors") return fNCandidates;
  if (name == "maxPredictors") return fNMax;
  return name == "trainRecords" ? fNRecords : -1;
}

double NBAttribSelectReporter::ScaleMeasure(const std::string& name) const {
  return name == "elapsedTime" ? fSeconds : MCMV::gMissingValue;
}
