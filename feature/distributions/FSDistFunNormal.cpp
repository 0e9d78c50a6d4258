// The error function and the normal distribution.

#include <cmath>

#include "feature/distributions/FSDistFun.h"
#include "feature/statistics/FSNumerics.h"

using namespace FSNumerics;

namespace {

// W. J. Cody's coefficients, lowest power first: erf below 0.46875 in x^2, erfc up to 4 in x, erfc
// beyond in 1 / x^2.
constexpr double kErfP[] = {3.20937758913846947e03, 3.77485237685302021e02, 1.13864154151050156e02,
                            3.16112374387056560e00, 1.85777706184603153e-1};
constexpr double kErfQ[] = {2.84423683343917062e03, 1.28261652607737228e03, 2.44024637934444173e02,
                            2.36012909523441209e01, 1.0};
constexpr double kMiddleP[] = {
    1.23033935479799725e03, 2.05107837782607147e03, 1.71204761263407058e03,
    8.81952221241769090e02, 2.98635138197400131e02, 6.61191906371416295e01,
    8.88314979438837594e00, 5.64188496988670089e-1, 2.15311535474403846e-8};
constexpr double kMiddleQ[] = {
    1.23033935480374942e03, 3.43936767414372164e03, 4.36261909014324716e03,
    3.29079923573345963e03, 1.62138957456669019e03, 5.37181101862009858e02,
    1.17693950891312499e02, 1.57449261107098347e01, 1.0};
constexpr double kFarP[] = {6.58749161529837803e-4, 1.60837851487422766e-2, 1.25781726111229246e-1,
                            3.60344899949804439e-1, 3.05326634961232344e-1, 1.63153871373020978e-2};
constexpr double kFarQ[] = {2.33520497626869185e-3, 6.05183413124413191e-2, 5.27905102951428412e-1,
                            1.87295284992346725e00, 2.56852019228982242e00, 1.0};

constexpr double kSmall = 0.46875;
constexpr double kFar = 4.0;
constexpr double kErfIsOne = 6.9;
constexpr double kInverseSqrtPi = 0.5641895835477563;

// exp(-x^2) with the square split, so that its rounding does not grow with x.
double ExpOfMinusSquare(double x) {
  const double head = std::trunc(x * 16.0) / 16.0;
  const double rest = (x - head) * (x + head);
  return GuardedExp(-head * head) * std::exp(-rest);
}

double ErfSmall(double x) {
  const double square = x * x;
  return x * Polynomial(kErfP, square) / Polynomial(kErfQ, square);
}

// erfc for x >= kSmall.
double ErfcTail(double x) {
  if (x <= kFar) return ExpOfMinusSquare(x) * Polynomial(kMiddleP, x) / Polynomial(kMiddleQ, x);
  const double inverse = 1.0 / (x * x);
  const double ratio = inverse * Polynomial(kFarP, inverse) / Polynomial(kFarQ, inverse);
  return ExpOfMinusSquare(x) * (kInverseSqrtPi - ratio) / x;
}

// M. J. Wichura's coefficients, lowest power first.
constexpr double kCentreP[] = {3.3871328727963666080e0, 1.3314166789178437745e2,
                               1.9715909503065514427e3, 1.3731693765509461125e4,
                               4.5921953931549871457e4, 6.7265770927008700853e4,
                               3.3430575583588128105e4, 2.5090809287301226727e3};
constexpr double kCentreQ[] = {1.0,
                               4.2313330701600911252e1,
                               6.8718700749205790830e2,
                               5.3941960214247511077e3,
                               2.1213794301586595867e4,
                               3.9307895800092710610e4,
                               2.8729085735721942674e4,
                               5.2264952788528545610e3};
constexpr double kNearP[] = {1.42343711074968357734e0,  4.63033784615654529590e0,
                             5.76949722146069140550e0,  3.64784832476320460504e0,
                             1.27045825245236838258e0,  2.41780725177450611770e-1,
                             2.27238449892691845833e-2, 7.74545014278341407640e-4};
constexpr double kNearQ[] = {1.0,
                             2.05319162663775882187e0,
                             1.67638483018380384940e0,
                             6.89767334985100004550e-1,
                             1.48103976427480074590e-1,
                             1.51986665636164571966e-2,
                             5.47593808499534494600e-4,
                             1.05075007164441684324e-9};
constexpr double kTailP[] = {6.65790464350110377720e0,  5.46378491116411436990e0,
                             1.78482653991729133580e0,  2.96560571828504891230e-1,
                             2.65321895265761230930e-2, 1.24266094738807843860e-3,
                             2.71155556874348757815e-5, 2.01033439929228813265e-7};
constexpr double kTailQ[] = {1.0,
                             5.99832206555887937690e-1,
                             1.36929880922735805310e-1,
                             1.48753612908506148525e-2,
                             7.86869131145613259100e-4,
                             1.84631831751005468180e-5,
                             1.42151175831644588870e-7,
                             2.04426310338993978564e-15};

}  // namespace

double FSDistFun::derf(const double& x) {
  const double size = std::fabs(x);
  if (size <= kSmall) return ErfSmall(x);
  const double value = size >= kErfIsOne ? 1.0 : 1.0 - ErfcTail(size);
  return x < 0.0 ? -value : value;
}

double FSDistFun::derfc(const double& x) {
  if (std::fabs(x) <= kSmall) return 1.0 - ErfSmall(x);
  return x < 0.0 ? 1.0 + derf(-x) : ErfcTail(x);
}

double FSDistFun::prbnrm(const double& z) {
  constexpr double kSqrtHalf = 0.7071067811865476;
  if (z == 0.0) return 0.5;
  if (z > 0.0) return (1.0 + derf(z * kSqrtHalf)) / 2.0;
  return derfc(-z * kSqrtHalf) / 2.0;
}

double FSDistFun::probit(const double& p, long& error) {
  error = p > 0.0 && p < 1.0 ? 0 : 1;
  if (error != 0) return 0.0;
  const double q = p - 0.5;
  if (std::fabs(q) <= 0.425) {
    const double r = 0.180625 - q * q;
    return q * Polynomial(kCentreP, r) / Polynomial(kCentreQ, r);
  }
  double r = std::sqrt(-std::log(q < 0.0 ? p : 1.0 - p));
  double z = 0.0;
  if (r <= 5.0) {
    r -= 1.6;
    z = Polynomial(kNearP, r) / Polynomial(kNearQ, r);
  } else {
    r -= 5.0;
    z = Polynomial(kTailP, r) / Polynomial(kTailQ, r);
  }
  return q < 0.0 ? -z : z;
}
