// What one predictor is sorted by under one ranking criterion.
//
// In every order a predictor whose value is missing never comes before another, and one with a
// value comes before one without.
#pragma once

#include <iosfwd>

#include "common/MissingValue.h"
#include "feature/MCFSCommon.h"

struct FSPredSort {
  double fValue = MCMV::gMissingValue;
  double fTie1 = MCMV::gMissingValue;
  double fTie2 = MCMV::gMissingValue;
  int fIndex = -1;

  // Pearson and likelihood ratio: smaller p-value, then larger statistic, then smaller second
  // tie-break.
  static bool LessChisquare(const FSPredSort& a, const FSPredSort& b);
  // Larger V, then larger chi-square.
  static bool LessCramer(const FSPredSort& a, const FSPredSort& b);
  // Larger lambda, then fewer predictor categories.
  static bool LessLambda(const FSPredSort& a, const FSPredSort& b);
  // Smaller p-value, then larger F (r^2), then larger N.
  static bool LessFStat(const FSPredSort& a, const FSPredSort& b);
  static bool LessTStat(const FSPredSort& a, const FSPredSort& b);

  using Less = bool (*)(const FSPredSort& a, const FSPredSort& b);
  static Less ComparisonOf(MCFSCommon::RankCriteria criterion);

  // Saved state: as for IFSPredTargetAccum.
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
};
