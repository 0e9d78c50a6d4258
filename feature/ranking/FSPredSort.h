// What one predictor is sorted by under one ranking criterion. Exact p-values come with ln p and
// the size of the statistic in place of the criterion's own tie-breaks.
//
// In every order a predictor whose value is missing never comes before another, and one with a
// value comes before one without.
#pragma once

#include <iosfwd>

#include "common/MissingValue.h"

struct FSOrder;

struct FSPredSort {
  double fValue = MCMV::gMissingValue;
  double fTie1 = MCMV::gMissingValue;
  double fTie2 = MCMV::gMissingValue;
  int fIndex = -1;

  // Whether `a` ranks before `b`.
  static bool ComesFirst(const FSPredSort& a, const FSPredSort& b, const FSOrder& order);

  // The same in the orders of the criteria: smaller p-value, then larger statistic, then smaller
  // second tie-break (chi-square), larger N (F and t); larger V, then larger chi-square; larger
  // lambda, then fewer predictor categories.
  static bool LessChisquare(const FSPredSort& a, const FSPredSort& b);
  static bool LessCramer(const FSPredSort& a, const FSPredSort& b);
  static bool LessLambda(const FSPredSort& a, const FSPredSort& b);
  static bool LessFStat(const FSPredSort& a, const FSPredSort& b);
  static bool LessTStat(const FSPredSort& a, const FSPredSort& b);

  // Saved state and Display: as for IFSPredTargetAccum.
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
  void Display(std::ostream& out) const;
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
};
