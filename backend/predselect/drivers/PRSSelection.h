// Which predictors of a finished run are selected: the one decision that tables, chart and macros
// share.
#pragma once

#include <vector>

#include "feature/MCFSCommon.h"

class IFSAlgorithm;
class PRSValidSpecs;

struct PRSSelection {
  // The criterion in force: the user's or, where that does not suit the data, F or t as the kinds
  // of target and predictors say (FSSettings::GetMainCriterion).
  MCFSCommon::RankCriteria fCriterion = MCFSCommon::kPearson;
  // Predictors of the component in rank order, the selected first, then the unselected ones that
  // are shown; and their values of the criterion.
  std::vector<int> fIndices;
  std::vector<double> fValues;
  int fNSelected = 0;
  bool fbLimited = false;  // there are more unselected predictors than are shown

  bool IsEmpty() const { return fNSelected == 0; }
};

// Selected are the leading predictors of the ranked list, at most as many as the size allows and,
// for a criterion with a p-value, only those before the first that is not below the cut-off (a
// missing p-value never is). REQUIRES: the component has ranked.
PRSSelection SelectPredictors(const PRSValidSpecs& specs, const IFSAlgorithm& algorithm);
