#include "naivebayes/selection/NBAttributeSelector.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <tuple>
#include <utility>

#include "common/MissingValue.h"
#include "naivebayes/parts/NBPartsOfSelection.h"
#include "naivebayes/selection/NBAttribSelectReporter.h"
#include "naivebayes/selection/NBDataSteps.h"
#include "naivebayes/selection/NBFormulas.h"
#include "naivebayes/selection/NBSampleCounts.h"
#include "naivebayes/selection/NBSimulatedSteps.h"
#include "naivebayes/selection/NBSizeTerms.h"
#include "naivebayes/selection/NBTerms.h"
#include "naivebayes/store/NBInternalAdapter.h"
#include "naivebayes/variables/NBVarList.h"

using MCCommon::MultiPassRecordIter;
using MCCommon::Record;
using MCNaive::MCStatus;

NBAttributeSelector::NBAttributeSelector(std::vector<NBayesInput>& inputs, NBayesOutput& output,
                                         NBVarList& varList, NaiveBayesSettings& settings,
                                         NBCancelInfo& cancel, double totalWeight,
                                         MCCommon::Workers& workers)
    : fModel{output, inputs},
      fVarList(varList),
      fSettings(settings),
      fCancel(cancel),
      fTotalWeight(totalWeight),
      fWorkers(workers) {}

double NBAttributeSelector::ComputeAJTerm(int input, double n) const {
  return NBFormulas::ComputeAJTerm(fModel.fInputs[input], n);
}

void NBAttributeSelector::StartSequence(int maxSize, std::vector<int>& candidates) {
  fvLogLikelihood.assign(maxSize, MCMV::gMissingValue);
  for (int j = 0; j < static_cast<int>(fModel.fInputs.size()); ++j) {
    const INBVariable::VariableRole role =
        fVarList.GetVariableRole(fModel.fInputs[j].GetVarIndex());
    (role == INBVariable::kInput ? fvOrder : candidates).push_back(j);
  }
  fNForced = NSizes();
}

bool NBAttributeSelector::ComputeParts(const Training& training) {
  const int nInputs = static_cast<int>(fModel.fInputs.size());
  fRecordParts.fvA.assign(nInputs, 0.0);
  std::vector<double> counts(fModel.fOutput.GetNCategories());
  for (int k = 0; k < fModel.fOutput.GetNCategories(); ++k) counts[k] = fModel.fOutput.GetCount(k);
  if (!training.fbCounted) {
    NBSampleCounts sample(fModel);
    if (!training.fCodes.NewPass()) return false;
    while (const NBCodeBlock* codes = training.fCodes.NextCodes()) sample.Add(*codes);
    if (training.fCodes.HasFailed()) return false;
    std::vector<double> left = counts;
    for (std::size_t k = 0; k < left.size(); ++k) left[k] -= sample.GetTargets()[k];
    const std::vector<double>& priors = fModel.fOutput.GetPriors();
    fRecordParts.fBase = NBFormulas::ComputeBase(left, priors, fTotalWeight);
    for (int j = 0; j < nInputs; ++j) fRecordParts.fvA[j] = ComputePart(j, &sample.GetInput(j));
  }
  fStepParts = fRecordParts;
  if (!fbSimulated) return true;
  fStepParts.fBase = NBFormulas::ComputeBase(counts, fModel.fOutput.GetPriors(), fTotalWeight);
  for (int j = 0; j < nInputs; ++j) fStepParts.fvA[j] = ComputePart(j, nullptr);
  return true;
}

double NBAttributeSelector::ComputePart(int input, const NBayesInputBase* less) const {
  const NBayesInput& model = fModel.fInputs[input];
  NBSum sum;
  for (int m = 0; m < model.GetNCategories() && !fCancel.IsCancel(); ++m) {
    NBFormulas::AddAJTerms(model, m, fTotalWeight, less, sum);
  }
  return sum.Total();
}

MCNaiveBayes::MCRandom NBAttributeSelector::MakeRandom() const {
  const NaiveBayesSettings::RNGChoice choice = fSettings.GetRNGOption();
  return {fSettings.GetRandomSeed(), choice != NaiveBayesSettings::kLibrary,
          choice == NaiveBayesSettings::kMersenneTwister,
          choice == NaiveBayesSettings::kUserProvided ? fSettings.GetUserRNG() : nullptr};
}

int NBAttributeSelector::BuildSubsetSequence(int maxSize, const Training& training) {
  if (fCancel.IsCancel()) return -1;
  fbSimulated = !training.fbFromData;
  fbReadError = !ComputeParts(training);
  if (fbReadError) return -1;
  if (fbSimulated) {
    MCNaiveBayes::MCRandom random = MakeRandom();
    const int records = std::max(fSettings.GetSampleSize4SimData(), 1);
    NBSimulatedSteps steps(fModel, records, random, fCancel, fWorkers);
    return TakeSteps(maxSize, training.fNRecords, steps);
  }
  if (training.fpParts != nullptr) return TakeSteps(maxSize, training.fNRecords, *training.fpParts);
  NBDataSteps steps(fModel, fTotalWeight, training.fCodes, fCancel, fWorkers);
  return TakeSteps(maxSize, training.fNRecords, steps);
}

namespace {

// The place of the largest value, the first of equal ones.
std::size_t FindBest(const std::vector<double>& values) {
  std::size_t best = 0;
  for (std::size_t c = 1; c < values.size(); ++c) {
    if (values[c] > values[best]) best = c;
  }
  return best;
}

}  // namespace

int NBAttributeSelector::TakeSteps(int maxSize, int nRecords, NBSteps& steps) {
  const std::clock_t start = std::clock();
  std::vector<int> candidates;
  StartSequence(maxSize, candidates);
  NBSum running;
  running.Add(fStepParts.fBase);
  for (int j : fvOrder) {
    running.Add(fStepParts.fvA[j]);
    steps.Enter(j);
  }
  std::vector<double> b;
  double common = 0;
  while (NSizes() < maxSize && !candidates.empty() && !fCancel.IsCancel()) {
    fbReadError = !steps.ComputeBJ(candidates, b, common);
    if (fbReadError || fCancel.IsCancel()) return -1;
    for (std::size_t c = 0; c < b.size(); ++c) b[c] += fStepParts.fvA[candidates[c]];
    const std::size_t best = FindBest(b);
    NBSum score = running;
    score.Add(common);
    score.Add(b[best]);
    const int winner = candidates[best];
    candidates.erase(candidates.begin() + static_cast<std::ptrdiff_t>(best));
    steps.Enter(winner);
    running.Add(fStepParts.fvA[winner]);
    fvOrder.push_back(winner);
    fvLogLikelihood[NSizes() - 1] = score.Total();
    Report(maxSize, static_cast<int>(candidates.size()), nRecords,
           static_cast<double>(std::clock() - start) / 1e6);
  }
  return fCancel.IsCancel() ? -1 : 0;
}

void NBAttributeSelector::Report(int maxSize, int nCandidates, int nRecords, double seconds) {
  ProgressListener* listener = fSettings.GetProgressListener();
  const int steps = NSizes() - fNForced;
  if (listener == nullptr || steps % (std::int64_t{fSettings.GetNSkippedReports()} + 1) != 0)
    return;
  NBAttribSelectReporter report;
  report.SetValues(NSizes(), nCandidates, maxSize, nRecords, seconds);
  listener->Report(report);
}

void NBAttributeSelector::ComputeOneTermBJ(const std::vector<int>& current,
                                           const std::vector<int>& candidates, const Record& record,
                                           std::vector<double>& out) const {
  NBCodeBuffer codes;
  codes.Resize(fModel.fInputs.size(), 1);
  const std::size_t first = record.Size() - fModel.fInputs.size();
  for (std::size_t j = 0; j < fModel.fInputs.size(); ++j) {
    codes.fvCodes[j][0] = CategoryOf(record[first + j], NBCodeBlock::kSelectionOffset);
  }
  std::vector<NBSum> terms(candidates.size());
  NBTerms::Add(fModel, current, candidates, codes.View(), terms);
  out.clear();
  for (const NBSum& term : terms) out.push_back(term.Total());
}

void NBAttributeSelector::GenerateSimulatedRecord(Record& record,
                                                  MCNaiveBayes::MCRandom& random) const {
  NBCodeBuffer drawn;
  drawn.Resize(fModel.fInputs.size(), 1);
  NBSimulatedSteps::Draw(fModel, random, 0, drawn);
  record[0] = drawn.fvTargets[0];
  for (std::size_t j = 0; j < fModel.fInputs.size(); ++j) record[j + 1] = drawn.fvCodes[j][0];
}

std::vector<int> NBAttributeSelector::FirstOf(int size) const {
  return {fvOrder.begin(), fvOrder.begin() + std::min(std::max(size, 0), NSizes())};
}

bool NBAttributeSelector::SumTraining(const Training& training, int first, int last,
                                      std::vector<double>& totals) {
  NBSum weight;
  if (training.fpParts != nullptr) {
    return training.fpParts->SumTerms(FirstOf(last), first, false, totals, weight);
  }
  return training.fCodes.NewPass() &&
         NBSizeTerms::Sum(fModel, FirstOf(last), first, training.fCodes, fCancel, totals, weight);
}

bool NBAttributeSelector::CompleteLogLikelihoods(const Training& training, int lastSize) {
  const int first = FirstSize(), last = fbSimulated ? lastSize : fNForced;
  if (last < first) return true;
  std::vector<double> totals;
  if (!SumTraining(training, first, last, totals)) {
    fbReadError = !fCancel.IsCancel();
    return false;
  }
  NBSum parts;
  parts.Add(fRecordParts.fBase);
  for (int s = 1; s <= last; ++s) {
    parts.Add(fRecordParts.fvA[fvOrder[s - 1]]);
    if (s < first) continue;
    fvLogLikelihood[s - 1] = parts.Total() - totals[s - first] / fTotalWeight;
  }
  return true;
}

int NBAttributeSelector::SortAndRankBIC(Results& results, int nReport) {
  std::vector<std::pair<double, int>> ranked;
  for (int s = FirstSize(); s <= NSizes(); ++s) {
    ranked.emplace_back(NBFormulas::ComputePseudoBIC(s, fTotalWeight, fvLogLikelihood[s - 1]), s);
  }
  return FillSelectionResults(std::move(ranked), nReport, results);
}

int NBAttributeSelector::SortAndRankTest(const std::vector<double>& totals, double weight,
                                         Results& results, int nReport) {
  std::vector<std::pair<double, int>> ranked;
  for (std::size_t i = 0; i < totals.size(); ++i) {
    ranked.emplace_back(totals[i] / weight, FirstSize() + static_cast<int>(i));
  }
  return FillSelectionResults(std::move(ranked), nReport, results);
}

int NBAttributeSelector::FillSelectionResults(std::vector<std::pair<double, int>> ranked,
                                              int nReport, Results& results) {
  // By criterion, then by size: the smaller of two equal sizes wins. What is not a number, since
  // weights were beyond all measure, comes last.
  const auto key = [](const std::pair<double, int>& entry) {
    const bool isNaN = std::isnan(entry.first);
    return std::tuple(isNaN, isNaN ? 0.0 : entry.first, entry.second);
  };
  std::sort(ranked.begin(), ranked.end(),
            [&key](const auto& a, const auto& b) { return key(a) < key(b); });
  if (ranked.size() > static_cast<std::size_t>(nReport)) ranked.resize(nReport);
  fvResults = std::move(ranked);
  results.clear();
  for (const auto& [criterion, size] : fvResults) results.emplace_back(size, criterion);
  return results.empty() ? 0 : results.front().first;
}

void NBAttributeSelector::ConvertSelectedPredictors(std::vector<int>& selected) const {
  selected = fvOrder;
  for (int& j : selected) j = fModel.fInputs[j].GetVarIndex();
}

NBRecordStore NBAttributeSelector::MakeStore(MultiPassRecordIter& data) const {
  return {data, static_cast<int>(fModel.fInputs.size()), fVarList.GetWeightIndex() >= 0};
}

int NBAttributeSelector::UpdateVarlist(int size) {
  const int last = std::min(size, NSizes());
  for (int s = fNForced; s < last; ++s) {
    fVarList.SetVariableRole(fModel.fInputs[fvOrder[s]].GetVarIndex(), INBVariable::kInput);
  }
  return last - fNForced;
}

int NBAttributeSelector::GetLoglikelihood(std::vector<double>& logLikelihoods) const {
  logLikelihoods.assign(fvLogLikelihood.begin(), fvLogLikelihood.begin() + NSizes());
  return NSizes();
}

MCStatus NBAttributeSelector::FailureStatus() const {
  return MCNaive::Error(fbReadError ? MCNaive::kTemporaryFile : MCNaive::kCancelled);
}

MCStatus NBAttributeSelector::SelectExact(int size, const Training& training,
                                          NBSelectionResult& result) {
  if (BuildSubsetSequence(size, training) < 0) return FailureStatus();
  if (!CompleteLogLikelihoods(training, fNForced)) return FailureStatus();
  ConvertSelectedPredictors(result.fvSelected);
  UpdateVarlist(size);
  return {};
}

MCStatus NBAttributeSelector::SelectMaxBIC(int maxSize, const Training& training, int nReport,
                                           NBSelectionResult& result) {
  if (BuildSubsetSequence(maxSize, training) < 0) return FailureStatus();
  if (!CompleteLogLikelihoods(training, NSizes())) return FailureStatus();
  const int size = SortAndRankBIC(result.fvResults, nReport);
  ConvertSelectedPredictors(result.fvSelected);
  UpdateVarlist(size);
  return {};
}

MCStatus NBAttributeSelector::SelectMaxTestData(int maxSize, const Training& training,
                                                const TestSample& test, int nReport,
                                                NBSelectionResult& result) {
  if (BuildSubsetSequence(maxSize, training) < 0) return FailureStatus();
  if (!CompleteLogLikelihoods(training, fNForced)) return FailureStatus();
  if (!test.fRecords.NewPass()) return MCNaive::Error(MCNaive::kNoTestRecords);
  NBInternalAdapter codes(test.fRecords, test.fNRecords, test.fPreparator);
  NBSum weight;
  std::vector<double> totals;
  const bool isSummed =
      NBSizeTerms::Sum(fModel, fvOrder, FirstSize(), codes, fCancel, totals, weight);
  if (codes.GetStatus().IsError()) return codes.GetStatus();
  return FinishByTest(isSummed, totals, weight, nReport, result);
}

MCStatus NBAttributeSelector::SelectMaxTestParts(int maxSize, const Training& training, int nReport,
                                                 NBSelectionResult& result) {
  if (BuildSubsetSequence(maxSize, training) < 0) return FailureStatus();
  if (!CompleteLogLikelihoods(training, fNForced)) return FailureStatus();
  NBSum weight;
  std::vector<double> totals;
  const bool isSummed = training.fpParts->SumTerms(fvOrder, FirstSize(), true, totals, weight);
  fbReadError = !isSummed;
  return FinishByTest(isSummed, totals, weight, nReport, result);
}

MCStatus NBAttributeSelector::FinishByTest(bool isSummed, const std::vector<double>& totals,
                                           const NBSum& weight, int nReport,
                                           NBSelectionResult& result) {
  if (fCancel.IsCancel()) return FailureStatus();
  if (weight.Total() == 0 && isSummed) return MCNaive::Error(MCNaive::kNoTestRecords);
  if (!isSummed || !(weight.Total() > 0)) return FailureStatus();
  const int size = SortAndRankTest(totals, weight.Total(), result.fvResults, nReport);
  ConvertSelectedPredictors(result.fvSelected);
  UpdateVarlist(size);
  return {};
}

MCStatus NBAttributeSelector::SelectExact(int size, MultiPassRecordIter& data, int nRecords,
                                          bool fromData, std::vector<int>& selected) {
  NBRecordStore codes = MakeStore(data);
  NBSelectionResult result;
  const MCStatus status = SelectExact(size, {codes, nRecords, fromData, false}, result);
  selected = std::move(result.fvSelected);
  return status;
}

MCStatus NBAttributeSelector::SelectMaxBIC(int maxSize, MultiPassRecordIter& data, int nRecords,
                                           bool fromData, std::vector<int>& selected,
                                           Results& results, int nReport) {
  NBRecordStore codes = MakeStore(data);
  NBSelectionResult result;
  const MCStatus status =
      SelectMaxBIC(maxSize, {codes, nRecords, fromData, false}, nReport, result);
  selected = std::move(result.fvSelected);
  results = std::move(result.fvResults);
  return status;
}

MCStatus NBAttributeSelector::SelectMaxTestData(int maxSize, MultiPassRecordIter& data,
                                                int nRecords, bool fromData,
                                                MultiPassRecordIter& test, int nTest,
                                                std::vector<int>& selected, Results& results,
                                                int nReport, NBDataPreparator* preparator) {
  NBRecordStore codes = MakeStore(data);
  NBSelectionResult result;
  const MCStatus status = SelectMaxTestData(maxSize, {codes, nRecords, fromData, false},
                                            {test, nTest, *preparator}, nReport, result);
  selected = std::move(result.fvSelected);
  results = std::move(result.fvResults);
  return status;
}
