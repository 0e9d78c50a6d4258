#include "feature/FSDistFun.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(FSDistFun, GivesExactSpecialCasesAndMissingForBadParameters) {
  EXPECT_EQ(FSDistFun::CdfChi(0, 3), 0);
  EXPECT_EQ(FSDistFun::CdfChi(5, 0), FSDistFun::fMissing);
  EXPECT_EQ(FSDistFun::CdfChi(std::nan(""), 3), FSDistFun::fMissing);
  EXPECT_EQ(FSDistFun::CdfT(0, 10), 0.5);
  EXPECT_EQ(FSDistFun::CdfT(1, 1), 0.75);
  EXPECT_EQ(FSDistFun::CdfT(2, 0), FSDistFun::fMissing);
  EXPECT_EQ(FSDistFun::CdfF(0.5, 0, 3), FSDistFun::fMissing);
  EXPECT_EQ(FSDistFun::CdfF(-1, 2, 3), 0);
}

// References from SciPy, 13 digits or more.
TEST(FSDistFun, AgreesWithReferenceProbabilities) {
  const double pairs[][2] = {{FSDistFun::CdfChi(3, 5), 0.3000141641213724},
                             {FSDistFun::CdfF(2.5, 3, 10), 0.8809604373417219},
                             {FSDistFun::CdfT(-30, 7.5), 2.1873667050518222e-09},
                             {FSDistFun::CdfChi(9900, 1e4), 0.2404799143160207}};
  for (const auto& [actual, expected] : pairs) EXPECT_NEAR(actual / expected, 1, 1e-10);
}
