// 95 % intervals, each a formula of numbers. docs/methods.md names their sources.
#pragma once

#include <vector>

#include "common/evaluation/Evaluation.h"

namespace MCCommon::Intervals {

// The quantile of the normal distribution for 95 %.
inline constexpr double kNormal = 1.959963984540054;

// A share of n cases: Wilson's score interval. Without cases the share is missing.
Estimate Wilson(double hits, double n);

// A value with its standard error, by the normal distribution, cut off at the ends of what it may
// be. No interval without an error above 0: such a sample does not say how sure it is.
Estimate Normal(double value, double error, double least, double most);

// The same on the scale of log odds, for values from 0 to 1.
Estimate Logit(double value, double error);

// The mean of shares of independent samples, each with its interval (MOVER).
Estimate MeanOf(const std::vector<Estimate>& shares);

// The quantile of Student's distribution for 95 %. REQUIRES: degrees >= 1.
double Student(int degrees);

}  // namespace MCCommon::Intervals
