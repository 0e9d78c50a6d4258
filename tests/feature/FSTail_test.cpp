#include "feature/distributions/FSTail.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "feature/distributions/FSDistFun.h"
#include "tests/feature/References.h"

namespace {

constexpr double kMissing = FSDistFun::fMissing;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

double Evaluate(const Reference& r) {
  if (r.fFunction == "chi") return FSTail::LogUpperChi(r.fX, r.fDf1);
  if (r.fFunction == "t") return FSTail::LogTwoSidedT(r.fX, r.fDf1);
  if (r.fFunction == "f") return FSTail::LogUpperF(r.fX, r.fDf1, r.fDf2);
  return FSTail::LogUpperNorm(r.fX);
}

// Of p down to 1e-300, of ln p beyond, and of ln p where it is near 0 (that is of 1 - p).
double RelativeError(double logP, double expected) {
  const double difference = std::fabs(logP - expected);
  return expected > -1.0 || expected < -691.0 ? difference / -expected : difference;
}

TEST(FSTail, AgreesWithHighPrecisionReferencesAtEverySizeOfTail) {
  const std::vector<Reference> references = ReadReferences("tail_reference.csv");
  ASSERT_GT(references.size(), 550u);
  std::map<std::string, double> worst;
  for (const Reference& r : references) {
    const double error = RelativeError(Evaluate(r), r.fValue);
    EXPECT_LE(error, 5e-12) << r.fFunction << " x " << r.fX << " df " << r.fDf1 << ", " << r.fDf2;
    worst[r.fFunction] = std::max(worst[r.fFunction], error);
  }
  for (const auto& [function, error] : worst) RecordProperty(function, std::to_string(error));
}

TEST(FSTail, ClosedFormsHold) {
  for (const double x : {1e-8, 0.3, 2.0, 45.0, 1e3, 1e7}) {
    EXPECT_NEAR(FSTail::LogUpperChi(x, 2.0) / (-x / 2.0), 1.0, 1e-12) << x;
    for (const double df : {0.01, 1.0, 6.5, 1e4, 1e9}) {
      const double expected = -df / 2.0 * std::log1p(2.0 * x / df);
      EXPECT_NEAR(FSTail::LogUpperF(x, 2.0, df) / expected, 1.0, 1e-12) << x << " " << df;
      EXPECT_NEAR(FSTail::LogTwoSidedT(x, df) / FSTail::LogUpperF(x * x, 1.0, df), 1.0, 1e-12);
      EXPECT_EQ(FSTail::LogTwoSidedT(-x, df), FSTail::LogTwoSidedT(x, df));
    }
  }
}

TEST(FSTail, ProbabilitiesAreThoseOfTheLogarithmsAndEndAtZero) {
  EXPECT_NEAR(FSTail::UpperChi(1300.0, 1.0) / std::exp(FSTail::LogUpperChi(1300.0, 1.0)), 1.0,
              1e-15);
  EXPECT_EQ(FSTail::UpperChi(1e6, 3.0), 0.0);
  EXPECT_EQ(FSTail::UpperF(1e200, 3.0, 1e5), 0.0);
  EXPECT_EQ(FSTail::TwoSidedT(1e3, 1e9), 0.0);
  EXPECT_EQ(FSTail::UpperNorm(1e300), 0.0);
  EXPECT_EQ(FSTail::UpperChi(0.0, 3.0), 1.0);
  EXPECT_EQ(FSTail::UpperF(-2.0, 3.0, 4.0), 1.0);
  EXPECT_EQ(FSTail::TwoSidedT(0.0, 4.0), 1.0);
  EXPECT_EQ(FSTail::UpperNorm(0.0), 0.5);
  EXPECT_EQ(FSTail::UpperNorm(-1e300), 1.0);
  // 1 - Phi(1), from published tables.
  EXPECT_NEAR(FSTail::UpperNorm(1.0), 0.158655253931457051, 1e-15);
  EXPECT_NEAR(FSTail::UpperNorm(-1.0), 0.841344746068542949, 1e-15);
}

TEST(FSTail, BadArgumentsAreMissing) {
  for (const double bad : {0.0, -1.0, std::nan(""), kInfinity, kMissing}) {
    for (const double value :
         {FSTail::LogUpperChi(1.0, bad), FSTail::LogUpperF(1.0, bad, 2.0),
          FSTail::UpperF(1.0, 2.0, bad), FSTail::TwoSidedT(1.0, bad), FSTail::UpperChi(1.0, bad)}) {
      EXPECT_EQ(value, kMissing) << bad;
    }
  }
  for (const double bad : {std::nan(""), kInfinity, kMissing}) {
    for (const double value : {FSTail::LogUpperChi(bad, 1.0), FSTail::UpperF(bad, 1.0, 2.0),
                               FSTail::LogTwoSidedT(bad, 1.0), FSTail::UpperNorm(bad)}) {
      EXPECT_EQ(value, kMissing) << bad;
    }
  }
}

// Along a grid finer at the borders between methods, and out to the ends of the doubles.
TEST(FSTail, FallsAsTheStatisticGrows) {
  const double dfs[] = {1e-3, 0.4, 1.0, 2.0, 19.0, 20.0, 21.0, 300.0, 1e6};
  const double steps[] = {1e-308, 1e-30, 1e-3, 0.3, 0.5,  0.9, 0.999, 1.0,  1.001,
                          1.1,    2.0,   3.0,  9.0, 100., 1e4, 1e30,  1e308};
  for (const double df1 : dfs) {
    for (const double df2 : dfs) {
      double before = 0.0;
      for (const double x : steps) {
        const double logP = FSTail::LogUpperF(x, df1, df2);
        EXPECT_TRUE(logP <= before && logP > kMissing) << x << " " << df1 << " " << df2;
        before = logP;
      }
    }
    double before = 0.0;
    for (const double step : steps) {
      const double logP = FSTail::LogUpperChi(std::min(step * df1, 1e308), df1);
      EXPECT_TRUE(logP <= before && logP > kMissing) << step << " " << df1;
      before = logP;
    }
  }
}

}  // namespace
