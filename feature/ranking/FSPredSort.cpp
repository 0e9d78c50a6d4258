#include "feature/ranking/FSPredSort.h"

#include <ostream>

#include "feature/FSCriterion.h"
#include "feature/accumulators/FSDisplay.h"

namespace {

// Below 0 when a comes first, above 0 when b does.
int Compare(double a, double b, FSDirection direction) {
  if (a == b || direction == FSDirection::kIgnored) return 0;
  return (a < b) == (direction == FSDirection::kSmallerFirst) ? -1 : 1;
}

bool ComesFirstBy(MCFSCommon::RankCriteria criterion, const FSPredSort& a, const FSPredSort& b) {
  return FSPredSort::ComesFirst(a, b, FSCriterion::Of(criterion).fOrder);
}

}  // namespace

bool FSPredSort::ComesFirst(const FSPredSort& a, const FSPredSort& b, const FSOrder& by) {
  if (MCMV::IsMissing(a.fValue)) return false;
  if (MCMV::IsMissing(b.fValue)) return true;
  int order = Compare(a.fValue, b.fValue, by.fValue);
  if (order == 0) order = Compare(a.fTie1, b.fTie1, by.fTie1);
  if (order == 0) order = Compare(a.fTie2, b.fTie2, by.fTie2);
  return order < 0;
}

bool FSPredSort::LessChisquare(const FSPredSort& a, const FSPredSort& b) {
  return ComesFirstBy(MCFSCommon::kPearson, a, b);
}

bool FSPredSort::LessCramer(const FSPredSort& a, const FSPredSort& b) {
  return ComesFirstBy(MCFSCommon::kCramer, a, b);
}

bool FSPredSort::LessLambda(const FSPredSort& a, const FSPredSort& b) {
  return ComesFirstBy(MCFSCommon::kLambda, a, b);
}

bool FSPredSort::LessFStat(const FSPredSort& a, const FSPredSort& b) {
  return ComesFirstBy(MCFSCommon::kFStat, a, b);
}

bool FSPredSort::LessTStat(const FSPredSort& a, const FSPredSort& b) {
  return ComesFirstBy(MCFSCommon::kTStat, a, b);
}

void FSPredSort::Display(std::ostream& out) const {
  out << "  Predictor " << fIndex << '\n';
  FSDisplay::Value(out, "Value", fValue);
  FSDisplay::Value(out, "First tie-break", fTie1);
  FSDisplay::Value(out, "Second tie-break", fTie2);
}
