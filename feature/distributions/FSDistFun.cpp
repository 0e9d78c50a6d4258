// The public functions: inner routines with their flags turned into the missing value.

#include "feature/distributions/FSDistFun.h"

#include <algorithm>
#include <cmath>

namespace {

double OrMissing(double value, long error) {
  return error != 0 || std::isnan(value) ? FSDistFun::fMissing : value;
}

// A probability; what lies outside 0 to 1 by more than rounding has failed.
double ProbabilityOrMissing(double p, long error) {
  constexpr double kRounding = 1e-8;
  if (error != 0 || !(p >= -kRounding && p <= 1.0 + kRounding)) return FSDistFun::fMissing;
  return std::clamp(p, 0.0, 1.0);
}

}  // namespace

double FSDistFun::CdfChi(double x, double df) {
  long error = 0;
  const double p = gammad(x / 2.0, df / 2.0, false, error);
  return ProbabilityOrMissing(p, error);
}

double FSDistFun::CdfF(double x, double df1, double df2) {
  long error = 0;
  const double p = kovacdff(x, df1, df2, error);
  return ProbabilityOrMissing(p, error);
}

double FSDistFun::CdfT(double x, double df) {
  long error = 0;
  const double p = kovacdft(x, df, error);
  return ProbabilityOrMissing(p, error);
}

double FSDistFun::CdfNorm(double x, double mean, double sd) {
  if (!(sd > 0.0)) return fMissing;
  return ProbabilityOrMissing(prbnrm((x - mean) / sd), 0);
}

double FSDistFun::IdfNorm(double p, double mean, double sd) {
  if (!(p > 0.0 && p < 1.0 && sd > 0.0)) return fMissing;
  if (p == 0.5) return mean;
  long error = 0;
  const double z = probit(p, error);
  return OrMissing(mean + sd * z, error);
}

double FSDistFun::IdfChi(double p, double df) {
  long error = 0;
  const double x = kovaidfchi(p, df, error);
  return OrMissing(x, error);
}

double FSDistFun::IdfT(double p, double df) {
  long error = 0;
  const double x = kovaidft(p, df, error);
  return OrMissing(x, error);
}

double FSDistFun::IdfF(double p, double df1, double df2) {
  long error = 0;
  const double x = kovaidff(p, df1, df2, error);
  return OrMissing(x, error);
}
