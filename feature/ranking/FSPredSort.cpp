#include "feature/ranking/FSPredSort.h"

#include <array>
#include <cstddef>

namespace {

enum Direction { kSmallerFirst, kLargerFirst, kIgnored };

// Below 0 when a comes first, above 0 when b does.
int Compare(double a, double b, Direction direction) {
  if (a == b || direction == kIgnored) return 0;
  return (a < b) == (direction == kSmallerFirst) ? -1 : 1;
}

bool ComesFirst(const FSPredSort& a, const FSPredSort& b, Direction value, Direction tie1,
                Direction tie2) {
  if (MCMV::IsMissing(a.fValue)) return false;
  if (MCMV::IsMissing(b.fValue)) return true;
  int order = Compare(a.fValue, b.fValue, value);
  if (order == 0) order = Compare(a.fTie1, b.fTie1, tie1);
  if (order == 0) order = Compare(a.fTie2, b.fTie2, tie2);
  return order < 0;
}

}  // namespace

bool FSPredSort::LessChisquare(const FSPredSort& a, const FSPredSort& b) {
  return ComesFirst(a, b, kSmallerFirst, kLargerFirst, kSmallerFirst);
}

bool FSPredSort::LessCramer(const FSPredSort& a, const FSPredSort& b) {
  return ComesFirst(a, b, kLargerFirst, kLargerFirst, kIgnored);
}

bool FSPredSort::LessLambda(const FSPredSort& a, const FSPredSort& b) {
  return ComesFirst(a, b, kLargerFirst, kSmallerFirst, kIgnored);
}

bool FSPredSort::LessFStat(const FSPredSort& a, const FSPredSort& b) {
  return ComesFirst(a, b, kSmallerFirst, kLargerFirst, kLargerFirst);
}

bool FSPredSort::LessTStat(const FSPredSort& a, const FSPredSort& b) {
  return ComesFirst(a, b, kSmallerFirst, kLargerFirst, kLargerFirst);
}

FSPredSort::Less FSPredSort::ComparisonOf(MCFSCommon::RankCriteria criterion) {
  static constexpr std::array<Less, MCFSCommon::kNCriteria> kComparisons = {
      LessChisquare, LessChisquare, LessCramer, LessLambda, LessFStat, LessTStat};
  return kComparisons[static_cast<std::size_t>(criterion)];
}
