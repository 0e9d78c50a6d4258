#include "feature/distributions/FSDistFun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/feature/References.h"

namespace {

constexpr double kMissing = FSDistFun::fMissing;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

double Evaluate(const Reference& r) {
  if (r.fFunction == "chi") return FSDistFun::CdfChi(r.fX, r.fDf1);
  if (r.fFunction == "t") return FSDistFun::CdfT(r.fX, r.fDf1);
  return FSDistFun::CdfF(r.fX, r.fDf1, r.fDf2);
}

TEST(FSDistFun, AgreesWithHighPrecisionReferencesDownTo1e300) {
  std::map<std::string, std::pair<double, double>> worst;  // df up to 1e4, beyond
  const std::vector<Reference> references = ReadReferences("distribution_reference.csv");
  ASSERT_GT(references.size(), 250u);
  for (const Reference& r : references) {
    const bool large = std::max(r.fDf1, r.fDf2) > 1e4;
    const double error = std::fabs(Evaluate(r) / r.fValue - 1.0);
    EXPECT_LE(error, large ? 1e-8 : 1e-10)
        << r.fFunction << " x " << r.fX << " df " << r.fDf1 << ", " << r.fDf2;
    double& reached = large ? worst[r.fFunction].second : worst[r.fFunction].first;
    reached = std::max(reached, error);
  }
  for (const auto& [function, errors] : worst) {
    RecordProperty(function, std::to_string(std::log10(errors.first)) + " " +
                                 std::to_string(std::log10(errors.second)));
  }
}

TEST(FSDistFun, SpecialCasesAreExact) {
  EXPECT_EQ(FSDistFun::CdfChi(0, 3), 0.0);
  EXPECT_EQ(FSDistFun::CdfChi(-1, 3), 0.0);
  EXPECT_EQ(FSDistFun::CdfT(0, 10), 0.5);
  EXPECT_EQ(FSDistFun::CdfT(1, 1), 0.75);
  EXPECT_EQ(FSDistFun::CdfF(-1, 2, 3), 0.0);
  EXPECT_EQ(FSDistFun::CdfNorm(3, 3, 2), 0.5);
  EXPECT_EQ(FSDistFun::IdfNorm(0.5, 3, 2), 3.0);
  EXPECT_EQ(FSDistFun::IdfF(0, 2, 3), 0.0);
  EXPECT_EQ(FSDistFun::IdfT(0.5, 7), 0.0);
  EXPECT_EQ(FSDistFun::CdfF(kInfinity, 2, 3), 1.0);
  EXPECT_DOUBLE_EQ(FSDistFun::CdfChi(3.0, 2), -std::expm1(-1.5));
  long error = 0;
  EXPECT_EQ(FSDistFun::gammad(0.0, 2.0, true, error), 1.0);
  EXPECT_EQ(FSDistFun::gammad(kInfinity, 2.0, true, error), 0.0);
  EXPECT_DOUBLE_EQ(FSDistFun::gammad(3.0, 1.0, true, error), std::exp(-3.0));
  EXPECT_EQ(FSDistFun::betinv(0.0, 2.0, 3.0, error), 0.0);
  EXPECT_EQ(FSDistFun::betinv(1.0, 2.0, 3.0, error), 1.0);
  EXPECT_EQ(FSDistFun::derf(-7.0), -1.0);
  EXPECT_EQ(error, 0);
}

TEST(FSDistFun, BadParametersAreMissing) {
  const double nan = std::nan("");
  for (const double value : {FSDistFun::CdfChi(5, 0),        FSDistFun::CdfChi(nan, 3),
                             FSDistFun::CdfChi(1, nan),      FSDistFun::CdfT(2, 0),
                             FSDistFun::CdfT(nan, 2),        FSDistFun::CdfF(0.5, 0, 3),
                             FSDistFun::CdfF(0.5, 3, -1),    FSDistFun::CdfNorm(1, 0, 0),
                             FSDistFun::IdfNorm(0, 0, 1),    FSDistFun::IdfNorm(1, 0, 1),
                             FSDistFun::IdfNorm(0.2, 0, -1), FSDistFun::IdfChi(1, 3),
                             FSDistFun::IdfChi(0.5, 0),      FSDistFun::IdfT(0, 3),
                             FSDistFun::IdfF(1, 2, 3),       FSDistFun::IdfF(0.5, 2, 0),
                             FSDistFun::IdfF(0.5, 0, 2),     FSDistFun::IdfF(-0.1, 2, 3),
                             FSDistFun::IdfF(0, 0, 2),       FSDistFun::IdfF(0, 2, 0),
                             FSDistFun::IdfChi(1e-6, 3),     FSDistFun::IdfChi(0.5, kInfinity),
                             FSDistFun::IdfT(1, 3),          FSDistFun::IdfT(0.3, 0),
                             FSDistFun::CdfF(nan, 2, 3)}) {
    EXPECT_EQ(value, kMissing);
  }
  const auto errorOf = [](const auto& routine) {
    long error = 0;
    static_cast<void>(routine(error));
    return error;
  };
  EXPECT_NE(errorOf([](long& e) { return FSDistFun::dnlgam(0.0, e); }), 0);
  for (const double p : {0.0, 1.0}) {
    EXPECT_NE(errorOf([p](long& e) { return FSDistFun::probit(p, e); }), 0);
  }
  const double beta[][3] = {{-0.1, 2, 3}, {1.1, 2, 3}, {0.5, 0, 3}, {0.5, 2, 0}};
  for (const auto& b : beta) {
    EXPECT_NE(errorOf([&b](long& e) { return FSDistFun::betinv(b[0], b[1], b[2], e); }), 0) << b[0];
  }
}

TEST(FSDistFun, ExtremesEndWithAProbabilityOrMissing) {
  const double extremes[] = {5e-324, 1e-300, 1e-10, 1.0, 1e10, 1e300, 1.7e308, kInfinity};
  for (const double x : extremes) {
    for (const double a : extremes) {
      for (const double b : extremes) {
        for (const double p : {FSDistFun::CdfChi(x, a), FSDistFun::CdfT(x, a),
                               FSDistFun::CdfT(-x, a), FSDistFun::CdfF(x, a, b)}) {
          EXPECT_TRUE(p == kMissing || (p >= 0.0 && p <= 1.0)) << x << " " << a << " " << b;
        }
      }
    }
  }
}

TEST(FSDistFun, TailsComplementAndMirrorEachOther) {
  for (const double df : {0.3, 1.0, 4.0, 77.0, 1e4}) {
    for (const double x : {0.02, 0.7, 1.0, 1.9, 30.0}) {
      EXPECT_NEAR(FSDistFun::CdfT(x, df) + FSDistFun::CdfT(-x, df), 1.0, 1e-14);
      EXPECT_NEAR(FSDistFun::CdfF(x, df, 6.0) + FSDistFun::CdfF(1.0 / x, 6.0, df), 1.0, 1e-11);
      EXPECT_NEAR(FSDistFun::CdfF(x * x, 1.0, df), 1.0 - 2.0 * FSDistFun::CdfT(-x, df), 1e-11);
      long error = 0;
      const double lower = FSDistFun::gammad(x, df / 2, false, error);
      EXPECT_NEAR(lower + FSDistFun::gammad(x, df / 2, true, error), 1.0, 1e-11);
    }
  }
}

TEST(FSDistFun, NormalAgreesWithTheLibrarysErrorFunction) {
  for (double z = -37.0; z <= 9.0; z += 0.0625) {
    const double expected = 0.5 * std::erfc(-z * std::sqrt(0.5));
    EXPECT_NEAR(FSDistFun::CdfNorm(z, 0, 1) / expected, 1.0, 1e-13) << z;
  }
  for (const double x : {-3.0, -0.4, 0.1, 0.46875, 1.0, 3.9, 6.0}) {
    EXPECT_NEAR(FSDistFun::derf(x), std::erf(x), 2e-16);
    EXPECT_NEAR(FSDistFun::derfc(x) / std::erfc(x), 1.0, 1e-14);
  }
}

TEST(FSDistFun, QuantilesInvertTheDistributions) {
  for (const double p : {1e-20, 1e-12, 1e-9}) {
    EXPECT_NEAR(FSDistFun::CdfNorm(FSDistFun::IdfNorm(p, 0, 1), 0, 1) / p, 1.0, 1e-13);
  }
  for (const double p : {1e-5, 0.01, 0.3, 0.5, 0.8, 0.999}) {
    EXPECT_NEAR(FSDistFun::CdfNorm(FSDistFun::IdfNorm(p, 2, 3), 2, 3) / p, 1.0, 1e-13);
    for (const double df : {0.9, 3.0, 25.0, 2000.0}) {
      const auto check = [p, df](const char* name, double back) {
        EXPECT_NEAR(back / p, 1.0, 2e-5) << name << " " << p << " " << df;
      };
      check("chi", FSDistFun::CdfChi(FSDistFun::IdfChi(p, df), df));
      check("t", FSDistFun::CdfT(FSDistFun::IdfT(p, df), df));
      check("F", FSDistFun::CdfF(FSDistFun::IdfF(p, df, 8.0), df, 8.0));
    }
  }
  // Few degrees of freedom, the ends, and shapes of which the starting value lies at an end.
  const std::pair<double, double> chi[] = {
      {0.95, 0.1}, {0.999, 0.1}, {0.95, 0.3}, {0.999, 0.3}, {2e-6, 20.0}};
  for (const auto& [p, df] : chi) {
    EXPECT_NEAR(FSDistFun::CdfChi(FSDistFun::IdfChi(p, df), df) / p, 1.0, 2e-5) << p << " " << df;
  }
  const double shapes[][3] = {{0.3, 0.5, 0.05}, {0.3, 0.5, 0.3}, {0.3, 0.5, 4}, {0.5, 0.2, 500}};
  for (const auto& [p, a, b] : shapes) {
    long error = 0;
    const double x = FSDistFun::betinv(p, a, b, error);
    EXPECT_NEAR(FSDistFun::cdfbet(x, a, b, error), p, 1e-6) << a << " " << b;
    EXPECT_EQ(error, 0);
  }
}

}  // namespace
