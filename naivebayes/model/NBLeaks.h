// What the rules about leaks (common/LeakCheck.h) look at, from a predictor's table of counts.
#pragma once

#include "common/LeakCheck.h"

class NBayesInput;
class NBayesInputBase;

// The traits of one predictor of a model, which stands in its variable list at a place.
struct NBInputTraits {
  int fVarIndex = -1;
  MCCommon::LeakTraits fTraits;
};

namespace NBLeaks {

// `unit` is the weight of one case. The variance of a continuous predictor is that of its bins,
// taken as equally wide from its lowest to its highest value.
NBInputTraits TraitsOf(const NBayesInput& input, double unit);

// By how much a model of this predictor alone raises the average log-likelihood of the target over
// that of the priors alone, each case being judged by the model of all others. Every weight is
// taken as cases of one unit. Below 0 the predictor fits the cases that it was counted from, and
// misleads on others.
double GainOnOthers(const NBayesInputBase& counts, double unit);

}  // namespace NBLeaks
