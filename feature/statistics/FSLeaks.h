// What the rules about leaks (common/LeakCheck.h) look at, from what an accumulator has counted.
// `unit` is the weight of one case.
#pragma once

#include "common/LeakCheck.h"

class FSMapICnt;
class FSMapIStat;
class FSMapPiCnt;

namespace FSLeaks {

// A categorical predictor (first of the pairs) and a categorical target.
MCCommon::LeakTraits OfPairs(const FSMapICnt& targets, const FSMapPiCnt& pairs, double unit);

// A continuous target by the categories of the predictor.
MCCommon::LeakTraits OfTargetByCategory(const FSMapIStat& groups, double unit);

// A continuous predictor by the categories of the target: it determines the target when it has one
// value in each, and another one in every other.
MCCommon::LeakTraits OfPredictorByTarget(const FSMapIStat& groups, double unit, double variance);

// Two continuous variables: the one determines the other when their correlation r is one in size,
// but for rounding. A missing correlation determines nothing.
MCCommon::LeakTraits OfCorrelation(double r, double cases, double variance);

}  // namespace FSLeaks
