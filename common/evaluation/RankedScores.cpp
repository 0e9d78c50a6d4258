#include "common/evaluation/RankedScores.h"

#include <algorithm>
#include <cmath>

#include "common/state/StateFields.h"

namespace MCCommon {

namespace {

// The log odds of a score to whole steps.
double StepOf(double score) {
  constexpr double kEnd = RankedScores::kEnd;
  const double odds = std::log(score / (1.0 - score));
  return std::isnan(odds) ? 0.0
                          : std::round(std::clamp(odds, -kEnd, kEnd) * RankedScores::kStepsPerUnit);
}

}  // namespace

RankedScores::RankedScores(std::size_t most) : fMost(std::max(most, kFewest)), fLimit(2 * fMost) {}

void RankedScores::Add(double score, bool isOfClass, double weight) {
  const double kept = fbRounded ? StepOf(score) : score;
  Keep({kept, isOfClass ? weight : 0.0, isOfClass ? 0.0 : weight});
}

void RankedScores::Add(const RankedScores& other) {
  if (other.fbRounded && !fbRounded) Round();
  for (const Score& score : other.fScores) {
    const double kept = fbRounded && !other.fbRounded ? StepOf(score.fScore) : score.fScore;
    Keep({kept, score.fOfClass, score.fOthers});
  }
  Settle();
}

void RankedScores::Keep(const Score& score) {
  fScores.push_back(score);
  if (fScores.size() >= fLimit) Settle();
}

void RankedScores::Settle() {
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
  Settle();
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

template <class Archive, class Self>
void RankedScores::Fields(Archive& archive, Self& self) {
  auto most = static_cast<std::int64_t>(self.fMost);
  archive.Long(most);
  archive.Flag(self.fbRounded);
  archive.Check(most >= static_cast<std::int64_t>(kFewest) && most <= INT32_MAX);
  if constexpr (Archive::kReading) {
    self.fMost = static_cast<std::size_t>(most);
    self.fLimit = 2 * self.fMost;
  }
  archive.Size(self.fScores, 24);
  for (auto& score : self.fScores) {
    archive.Double(score.fScore);
    archive.Double(score.fOfClass);
    archive.Double(score.fOthers);
    archive.Check(score.fOfClass >= 0.0 && score.fOthers >= 0.0);
  }
  archive.Check(self.fScores.size() <= self.fMost);
}

MC_STATE_OPERATIONS(RankedScores, "PSSCORES", "RankedScores")

}  // namespace MCCommon
