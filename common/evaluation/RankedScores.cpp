#include "common/evaluation/RankedScores.h"

#include <algorithm>
#include <cmath>

namespace MCCommon {

namespace {

// The log odds of a score to whole steps; what is beyond 64 counts as 64.
double StepOf(double score) {
  constexpr double kEnd = 64.0;
  constexpr double kSteps = 256.0;
  const double odds = std::log(score / (1.0 - score));
  return std::isnan(odds) ? 0.0 : std::round(std::clamp(odds, -kEnd, kEnd) * kSteps);
}

}  // namespace

RankedScores::RankedScores(std::size_t most) : fMost(std::max(most, kFewest)), fLimit(2 * fMost) {}

void RankedScores::Add(double score, bool isOfClass, double weight) {
  const double kept = fbRounded ? StepOf(score) : score;
  fScores.push_back({kept, isOfClass ? weight : 0.0, isOfClass ? 0.0 : weight});
  if (fScores.size() < fLimit) return;
  Merge();
  if (fScores.size() <= fMost) return;
  Round();
  Merge();
}

void RankedScores::Round() {
  fbRounded = true;
  for (Score& score : fScores) score.fScore = StepOf(score.fScore);
}

void RankedScores::Merge() {
  std::ranges::stable_sort(fScores, {}, &Score::fScore);
  std::size_t last = 0;
  for (std::size_t i = 1; i < fScores.size(); ++i) {
    if (fScores[i].fScore == fScores[last].fScore) {
      fScores[last].fOfClass += fScores[i].fOfClass;
      fScores[last].fOthers += fScores[i].fOthers;
    } else {
      fScores[++last] = fScores[i];
    }
  }
  if (!fScores.empty()) fScores.resize(last + 1);
}

RankedScores::Area RankedScores::Find() {
  Merge();
  double nOf = 0.0;
  double nOthers = 0.0;
  for (const Score& score : fScores) {
    nOf += score.fOfClass;
    nOthers += score.fOthers;
  }
  if (!(nOf > 0.0) || !(nOthers > 0.0)) return {};
  // For each case the share of those of the other kind that it stands rightly to.
  const auto visit = [&](auto visitScore) {
    double of = 0.0;
    double others = 0.0;
    for (const Score& score : fScores) {
      const double above = nOf - of - score.fOfClass;
      visitScore(score, (others + score.fOthers / 2.0) / nOthers,
                 (above + score.fOfClass / 2.0) / nOf);
      of += score.fOfClass;
      others += score.fOthers;
    }
  };
  double area = 0.0;
  visit([&](const Score& score, double ofClass, double) { area += score.fOfClass * ofClass; });
  area /= nOf;
  if (!(nOf > 1.0) || !(nOthers > 1.0)) return {area, 0.0};
  double spreadOf = 0.0;
  double spreadOthers = 0.0;
  visit([&](const Score& score, double ofClass, double others) {
    spreadOf += score.fOfClass * (ofClass - area) * (ofClass - area);
    spreadOthers += score.fOthers * (others - area) * (others - area);
  });
  return {area, std::sqrt(spreadOf / (nOf - 1.0) / nOf + spreadOthers / (nOthers - 1.0) / nOthers)};
}

}  // namespace MCCommon
