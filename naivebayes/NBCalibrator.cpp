#include "naivebayes/NBCalibrator.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "common/MissingValue.h"

namespace {

// Steele, Lea and Flood 2014: as good as drawn, and the same wherever the case is met.
std::uint64_t Mixed(std::uint64_t number) {
  number += 0x9e3779b97f4a7c15U;
  number = (number ^ (number >> 30U)) * 0xbf58476d1ce4e5b9U;
  number = (number ^ (number >> 27U)) * 0x94d049bb133111ebU;
  return number ^ (number >> 31U);
}

}  // namespace

NBCalibrator::NBCalibrator(const NBAlgorithm& model, std::uint64_t seed)
    : fModel(model), fSeed(seed), fNClasses(model.GetOutput().GetPriors().size()) {
  fEvidence.emplace_back(model.GetOutput(), model.GetInputs());
}

std::size_t NBCalibrator::FoldOf(std::size_t number) const {
  return static_cast<std::size_t>(Mixed(Mixed(fSeed) + number) % kFolds);
}

void NBCalibrator::Encode(const MCCommon::RecordBlock& block) {
  fBlock.Resize(fModel.GetInputs().size(), block.Cases());
  fModel.EncodeCases(block, fBlock.fvTargets.data(), fBlock.fvWeights.data());
  for (std::size_t j = 0; j < fBlock.fvCodes.size(); ++j) {
    fModel.EncodeInput(static_cast<int>(j), block, fBlock.fvCodes[j].data());
  }
}

void NBCalibrator::Divide(const MCCommon::RecordBlock& block) {
  if (fFolds.empty()) fFolds.assign(kFolds, {Whole(), fModel.GetTotalWeight()});
  Encode(block);
  std::vector<std::vector<std::size_t>> cases(fFolds.size());
  for (std::size_t i = 0; i < block.Cases(); ++i) {
    const std::size_t fold = FoldOf(fNSeen++);
    if (IsValid(i)) cases[fold].push_back(i);
  }
  const NBCodeBlock& codes = fBlock.View();
  for (std::size_t f = 0; f < fFolds.size(); ++f) fFolds[f].TakeOut(codes, cases[f]);
}

void NBCalibrator::SetFolds() {
  fEvidence.clear();
  fNSeen = 0;
  for (NBFoldModel& fold : fFolds) {
    // A fold that holds everything, but for rounding, is scored by the whole.
    if (fold.GetWeight() > 1e-9 * fModel.GetTotalWeight()) fold.Finish(Whole());
    fEvidence.emplace_back(fold.View().fOutput, fold.View().fInputs);
  }
  fFolds.clear();
}

void NBCalibrator::Add(const MCCommon::RecordBlock& block) {
  Encode(block);
  for (std::size_t i = 0; i < block.Cases(); ++i) {
    const std::size_t number = fNSeen++;
    if (!IsValid(i)) continue;
    const NBEvidence& evidence = fEvidence[fEvidence.size() > 1 ? FoldOf(number) : 0];
    const std::size_t first = fLogs.size();
    fLogs.insert(fLogs.end(), evidence.OfPriors(), evidence.OfPriors() + fNClasses);
    for (std::size_t j = 0; j < fBlock.fvCodes.size(); ++j) {
      const double* row = evidence.Of(j, fBlock.fvCodes[j][i]);
      for (std::size_t k = 0; k < fNClasses; ++k) fLogs[first + k] += row[k];
    }
    fTargets.push_back(fBlock.fvTargets[i]);
    fWeights.push_back(fBlock.fvWeights[i]);
  }
}

bool NBCalibrator::IsOneClass() const {
  return std::ranges::adjacent_find(fTargets, std::ranges::not_equal_to()) == fTargets.end();
}

NBCalibration NBCalibrator::Fit(NBCalibration::Method method) const {
  if (fTargets.size() < 2 || IsOneClass()) return {};
  return method == NBCalibration::kTemperature ? FitTemperature() : FitCurves();
}

std::pair<double, double> NBCalibrator::SlopeAt(double inverse) const {
  double slope = 0;
  double bend = 0;
  double weight = 0;
  std::vector<double> shares(fNClasses);
  for (std::size_t i = 0; i < fTargets.size(); ++i) {
    const double* logs = &fLogs[i * fNClasses];
    std::copy_n(logs, fNClasses, shares.begin());
    NBCalibration::Softmax(shares, 1 / inverse);
    double mean = 0;
    double square = 0;
    const double own = logs[fTargets[i]];
    for (std::size_t k = 0; k < fNClasses; ++k) {
      mean += shares[k] * (logs[k] - own);
      square += shares[k] * (logs[k] - own) * (logs[k] - own);
    }
    slope += fWeights[i] * mean;
    bend += fWeights[i] * (square - mean * mean);
    weight += fWeights[i];
  }
  return {slope / weight, bend / weight};
}

// The log-loss is convex in the inverse of the temperature: Newton's steps within a bracket.
NBCalibration NBCalibrator::FitTemperature() const {
  double low = std::exp(-10.0);
  double high = std::exp(10.0);
  if (SlopeAt(low).first >= 0 || SlopeAt(high).first <= 0) return {};
  double inverse = 1;
  for (int step = 0; step < 200; ++step) {
    const auto [slope, bend] = SlopeAt(inverse);
    (slope > 0 ? high : low) = inverse;
    double next = bend > 0 ? inverse - slope / bend : 0;
    if (!(next > low && next < high)) next = std::sqrt(low * high);
    const double moved = std::abs(next - inverse);
    inverse = next;
    if (moved <= 1e-14 * inverse || slope == 0) break;
  }
  return NBCalibration::ByTemperature(1 / inverse);
}

NBCalibration NBCalibrator::FitCurves() const {
  std::vector<NBCalibration::Curve> curves;
  for (std::size_t k = fNClasses == 2 ? 1 : 0; k < fNClasses; ++k) curves.push_back(CurveOf(k));
  return NBCalibration::ByCurves(std::move(curves));
}

namespace {

// Posteriors of which the odds are the same to six digits count as one, and the smallest as 0, so
// that no rounding, of whoever computes a posterior, leads from one level to the next.
bool IsSame(double x, double y) { return y - x <= 1e-6 * std::min(x, 1 - x); }
constexpr double kLeastPosterior = 1e-100;

// Posteriors that stand together: where a later mean were lower, neighbours become one.
struct Level {
  double fFirst;
  double fLast;
  double fSum;
  double fWeight;

  double Mean() const { return fSum / fWeight; }
};

void Join(std::vector<Level>& levels) {
  while (levels.size() > 1) {
    const Level last = levels.back();
    Level& before = levels[levels.size() - 2];
    if (before.Mean() < last.Mean()) return;
    before.fLast = last.fLast;
    before.fSum += last.fSum;
    before.fWeight += last.fWeight;
    levels.pop_back();
  }
}

}  // namespace

NBCalibration::Curve NBCalibrator::CurveOf(std::size_t k) const {
  std::vector<double> posteriors(fTargets.size());
  std::vector<double> shares(fNClasses);
  for (std::size_t i = 0; i < posteriors.size(); ++i) {
    std::copy_n(&fLogs[i * fNClasses], fNClasses, shares.begin());
    NBCalibration::Softmax(shares, 1);
    posteriors[i] = shares[k] < kLeastPosterior ? 0 : shares[k];
  }
  std::vector<std::size_t> order(posteriors.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(order, {}, [&posteriors](std::size_t i) { return posteriors[i]; });
  std::vector<Level> levels;
  for (std::size_t at = 0; at < order.size();) {
    Level level{posteriors[order[at]], posteriors[order[at]], 0, 0};
    for (; at < order.size() && IsSame(level.fFirst, posteriors[order[at]]); ++at) {
      const std::size_t i = order[at];
      level.fWeight += fWeights[i];
      if (static_cast<std::size_t>(fTargets[i]) == k) level.fSum += fWeights[i];
    }
    levels.push_back(level);
    Join(levels);
  }
  NBCalibration::Curve curve;
  for (const Level& level : levels) {
    for (const double x : {level.fFirst, level.fLast}) {
      if (!curve.fX.empty() && curve.fX.back() == x) continue;
      curve.fX.push_back(x);
      curve.fY.push_back(level.Mean());
    }
  }
  return curve;
}
