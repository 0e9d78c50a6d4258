// What the table of effects of a SELECTPRED run shows.
#pragma once

#include <vector>

#include "feature/MCStatus.h"
#include "feature/statistics/FSEffect.h"

class IFSAlgorithm;
class PRSValidSpecs;

// A predictor of the component, by its index.
struct PRSEffect {
  int fPredictor;
  FSEffect fEffect;
  FSInterval fInterval;  // of 95 percent
  // Natural logarithms of the p-values adjusted over all ranked predictors.
  double fLogFalseDiscovery;  // Benjamini-Hochberg
  double fLogFamilywise;      // Holm
};

struct PRSEffects {
  std::vector<PRSEffect> fShown;  // in rank order: those that the predictor summary shows
  int fNRanked = 0;               // over which p-values are adjusted
};

// Fills in all but the mutual information of scale variables, which takes another pass
// (PRSBinnedInformation). An error when the run was cancelled. REQUIRES: the component has ranked.
[[nodiscard]] MCFeature::MCStatus PRSFindEffects(const PRSValidSpecs& specs,
                                                 const IFSAlgorithm& algorithm,
                                                 PRSEffects& effects);
