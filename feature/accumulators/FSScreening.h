// The screening rules as functions of what was counted. Each appends every reason that applies
// (MCFSCommon::PredictorDelReason), in the order of the rules, to `reasons`. All comparisons are
// strict; a rule that is switched off, or whose threshold is 100 percent, never applies.
#pragma once

#include <vector>

class FSMapICnt;
class FSPredictorState;
class FSSettings;

namespace FSScreening {

// Many missing, many in a single category, many categories, many categories with one case (only
// when `oneCaseRule`).
void CheckCategorical(const FSSettings& settings, const FSPredictorState& state,
                      const FSMapICnt& counts, bool oneCaseRule, std::vector<int>& reasons);

// Many missing, small standard deviation, small coefficient of variation. A standard deviation of 0
// is never too small a variation; a value equal to its threshold up to rounding is kept.
void CheckContinuous(const FSSettings& settings, const FSPredictorState& state, double mean,
                     double stddev, std::vector<int>& reasons);

}  // namespace FSScreening
