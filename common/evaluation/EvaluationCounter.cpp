#include "common/evaluation/EvaluationCounter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "common/evaluation/Agreement.h"
#include "common/evaluation/Intervals.h"
#include "common/state/StateFields.h"

namespace MCCommon {

namespace {

// A probability of 0 would make a single case cost more than all others.
double LossOf(double probability) {
  constexpr double kLeast = std::numeric_limits<double>::epsilon();
  return -std::log(std::clamp(probability, kLeast, 1.0 - kLeast));
}

double DistanceOf(std::size_t observed, std::span<const double> probabilities) {
  double sum = observed < probabilities.size() ? 0.0 : 1.0;
  for (std::size_t k = 0; k < probabilities.size(); ++k) {
    const double difference = (k == observed ? 1.0 : 0.0) - probabilities[k];
    sum += difference * difference;
  }
  return sum;
}

}  // namespace

EvaluationCounter::EvaluationCounter(std::size_t classes) : fNModel(classes) {
  Grow(classes);
  if (classes > kMostAreas) return;
  fScores.assign(classes, RankedScores(kScores / std::max<std::size_t>(classes, 1)));
}

void EvaluationCounter::Grow(std::size_t classes) {
  fCases.resize(classes);
  for (std::vector<double>& row : fCases) row.resize(classes, 0.0);
}

void EvaluationCounter::Add(std::size_t observed, std::size_t predicted,
                            std::span<const double> probabilities, double weight) {
  if (observed >= fCases.size()) Grow(observed + 1);
  ++fNRows;
  fTotal += weight;
  fCases[observed][predicted] += weight;
  fLogLoss.Add(LossOf(observed < fNModel ? probabilities[observed] : 0.0), weight);
  fBrier.Add(DistanceOf(observed, probabilities), weight);
  const double sureness = probabilities[predicted];
  const double right = observed == predicted ? 1.0 : 0.0;
  Bin& bin = fBins[std::min(static_cast<std::size_t>(sureness * kNBins), kNBins - 1)];
  bin.fCases += weight;
  bin.fCorrect += weight * right;
  bin.fProbability.Add(weight * sureness);
  bin.fSquares.Add(weight * (right - sureness) * (right - sureness));
  AddScores(observed, probabilities, weight);
}

void EvaluationCounter::AddScores(std::size_t observed, std::span<const double> probabilities,
                                  double weight) {
  for (std::size_t k = 0; k < fScores.size(); ++k) {
    fScores[k].Add(probabilities[k], k == observed, weight);
  }
}

void EvaluationCounter::Bin::Add(const Bin& other) {
  fCases += other.fCases;
  fCorrect += other.fCorrect;
  fProbability.Add(other.fProbability);
  fSquares.Add(other.fSquares);
}

void EvaluationCounter::Add(const EvaluationCounter& other) {
  if (other.fCases.size() > fCases.size()) Grow(other.fCases.size());
  fNRows += other.fNRows;
  fTotal += other.fTotal;
  for (std::size_t i = 0; i < other.fCases.size(); ++i) {
    for (std::size_t j = 0; j < other.fCases.size(); ++j) fCases[i][j] += other.fCases[i][j];
  }
  fLogLoss.Add(other.fLogLoss);
  fBrier.Add(other.fBrier);
  for (std::size_t b = 0; b < kNBins; ++b) fBins[b].Add(other.fBins[b]);
  for (std::size_t k = 0; k < fScores.size(); ++k) fScores[k].Add(other.fScores[k]);
}

void EvaluationCounter::Settle() {
  for (RankedScores& scores : fScores) scores.Settle();
}

Estimate EvaluationCounter::Mean::Find(double n) const {
  if (!(n > 0.0)) return {};
  const double mean = fSum.Total() / n;
  if (!(n > 1.0)) return {.fValue = mean};
  const double variance = std::max(fSquares.Total() - n * mean * mean, 0.0) / (n - 1.0);
  return Intervals::Normal(mean, std::sqrt(variance / n), 0.0, std::numeric_limits<double>::max());
}

// Of two classes one alone is looked at, which gives half the sum over both.
Estimate EvaluationCounter::FindBrier(std::size_t observedClasses) const {
  Estimate brier = fBrier.Find(fTotal);
  if (observedClasses > 2) return brier;
  for (double* number : {&brier.fValue, &brier.fLow, &brier.fHigh}) {
    if (!MCMV::IsMissing(*number)) *number /= 2.0;
  }
  return brier;
}

// The signs of the bins' gaps are taken as they are.
Estimate EvaluationCounter::FindCalibrationError() const {
  if (!(fTotal > 0.0)) return {};
  double sum = 0.0;
  double squares = 0.0;
  for (const Bin& bin : fBins) {
    sum += std::abs(bin.fCorrect - bin.fProbability.Total());
    squares += bin.fSquares.Total();
  }
  const double error = sum / fTotal;
  const double variance = std::max(squares / fTotal - error * error, 0.0);
  return Intervals::Normal(error, std::sqrt(variance / fTotal), 0.0, 1.0);
}

void EvaluationCounter::FindAreas() {
  fAreas.clear();
  for (RankedScores& scores : fScores) fAreas.push_back(scores.Find());
}

// The areas of several classes are taken to go up and down together, as those of two do: the
// interval is then rather too wide than too narrow.
Estimate EvaluationCounter::FindArea() const {
  double weights = 0.0;
  double value = 0.0;
  double error = 0.0;
  for (std::size_t k = 0; k < fCases.size(); ++k) {
    double weight = 0.0;
    for (const double cases : fCases[k]) weight += cases;
    // Every case has the same probability, 0, of a class that the model does not know.
    RankedScores::Area area{0.5, 0.0};
    if (k < fNModel) area = k < fAreas.size() ? fAreas[k] : RankedScores::Area{};
    if (!(weight > 0.0)) continue;
    if (MCMV::IsMissing(area.fValue) || weight == fTotal) return {};
    weights += weight;
    value += weight * area.fValue;
    error += weight * area.fError;
  }
  return weights > 0.0 ? Intervals::Logit(value / weights, error / weights) : Estimate{};
}

Measures EvaluationCounter::FindMeasures() {
  const Agreement agreement(fCases);
  FindAreas();
  Measures measures;
  const auto set = [&measures](Measure measure, const Estimate& estimate) {
    measures[static_cast<std::size_t>(measure)] = estimate;
  };
  set(Measure::kAccuracy, agreement.Accuracy());
  set(Measure::kBalancedAccuracy, agreement.BalancedAccuracy());
  set(Measure::kAUC, FindArea());
  set(Measure::kLogLoss, fLogLoss.Find(fTotal));
  set(Measure::kBrier, FindBrier(fCases.size()));
  set(Measure::kKappa, agreement.Kappa());
  set(Measure::kMCC, agreement.Matthews());
  set(Measure::kCalibrationError, FindCalibrationError());
  return measures;
}

std::vector<CalibrationBin> EvaluationCounter::FindCalibration() const {
  std::vector<CalibrationBin> bins;
  for (std::size_t b = 0; b < kNBins; ++b) {
    const Bin& bin = fBins[b];
    if (!(bin.fCases > 0.0)) continue;
    bins.push_back({static_cast<double>(b) / kNBins, static_cast<double>(b + 1) / kNBins,
                    bin.fCases, bin.fProbability.Total() / bin.fCases, bin.fCorrect / bin.fCases});
  }
  return bins;
}

Measures EvaluationCounter::FindBaseline(std::size_t predicted,
                                         const std::vector<double>& probabilities) const {
  EvaluationCounter baseline(fNModel);
  if (fNModel == 0) return {};
  for (std::size_t k = 0; k < fCases.size(); ++k) {
    double weight = 0.0;
    for (const double cases : fCases[k]) weight += cases;
    if (weight > 0.0) baseline.Add(k, predicted, probabilities, weight);
  }
  Measures measures = baseline.FindMeasures();
  for (Estimate& measure : measures) measure = {.fValue = measure.fValue};
  return measures;
}

Evaluation EvaluationCounter::Find(const std::vector<double>& priors) {
  Evaluation found;
  found.fNRows = fNRows;
  found.fCases = fTotal;
  found.fMeasures = FindMeasures();
  const auto most = static_cast<std::size_t>(std::ranges::max_element(priors) - priors.begin());
  std::vector<double> certain(fNModel, 0.0);
  if (most < certain.size()) certain[most] = 1.0;
  found.fMajority = FindBaseline(most, certain);
  found.fPrior = FindBaseline(most, priors);
  found.fConfusions = fCases;
  found.fCalibration = FindCalibration();
  const Agreement agreement(found.fConfusions);
  for (std::size_t k = 0; k < fCases.size(); ++k) {
    ClassEvaluation& own = found.fClasses.emplace_back();
    own.fObserved = agreement.ObservedOf(k);
    own.fPredicted = agreement.PredictedOf(k);
    own.fRecall = agreement.Recall(k);
    own.fPrecision = agreement.Precision(k);
    if (k >= fAreas.size()) continue;
    own.fAUC = Intervals::Logit(fAreas[k].fValue, fAreas[k].fError);
    found.fbAUCRounded = found.fbAUCRounded || fScores[k].IsRounded();
  }
  return found;
}

template <class Archive, class Self>
void EvaluationCounter::Fields(Archive& archive, Self& self) {
  constexpr std::int64_t kMostClasses = 1 << 16;
  auto classes = static_cast<std::int64_t>(self.fNModel);
  archive.Long(classes);
  archive.Long(self.fNRows);
  archive.Double(self.fTotal);
  archive.Check(classes >= 0 && classes <= kMostClasses && self.fNRows >= 0 && self.fTotal >= 0.0);
  if constexpr (Archive::kReading) self.fNModel = static_cast<std::size_t>(classes);
  archive.Size(self.fCases, 4);
  for (auto& row : self.fCases) {
    StateDoubles(archive, row);
    archive.Check(row.size() == self.fCases.size());
    for (const double cases : row) archive.Check(cases >= 0.0);
  }
  for (auto* mean : {&self.fLogLoss, &self.fBrier}) {
    StateSum(archive, mean->fSum);
    StateSum(archive, mean->fSquares);
  }
  for (auto& bin : self.fBins) {
    archive.Double(bin.fCases);
    archive.Double(bin.fCorrect);
    StateSum(archive, bin.fProbability);
    StateSum(archive, bin.fSquares);
  }
  archive.Size(self.fScores, 20);
  for (auto& scores : self.fScores) archive.Object(scores);
  archive.Check(self.fCases.size() >= self.fNModel &&
                self.fScores.size() == (self.fNModel > kMostAreas ? 0 : self.fNModel));
}

MC_STATE_OPERATIONS(EvaluationCounter, "PSEVAL", "EvaluationCounter")

}  // namespace MCCommon
