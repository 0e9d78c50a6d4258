// Pieces of ln Gamma and of logarithms that keep their digits where the plain formulas cancel. Used
// by FSTail; not part of the interface.
#pragma once

namespace FSLogGamma {

// Arguments from here on need no shift for Stirling's series.
inline constexpr double kStirlingFrom = 10.0;

// ln Gamma(a) - ((a - 0.5) ln a - a + ln sqrt(2 pi)). REQUIRES: a >= kStirlingFrom.
double StirlingRest(double a);
// ln Gamma(a + b) - ln Gamma(b), with a relative error even where a is small. REQUIRES: a > 0,
// b > 0.
double Rise(double a, double b);
// ln Gamma(a). REQUIRES: a > 0.
double LogGamma(double a);
// ln(1 + v) - v, given ln(1 + v) as it is known where v is near -1. REQUIRES: v >= -1.
double LogRest(double v, double logOf1PlusV);
// ln(1 + v) - v. REQUIRES: v > -0.5.
double LogRest(double v);
// ln(1 - e^l): the other side of a probability given by its logarithm. REQUIRES: l <= 0.
double OtherSide(double l);

}  // namespace FSLogGamma
