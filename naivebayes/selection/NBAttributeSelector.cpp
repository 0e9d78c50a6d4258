#include "naivebayes/selection/NBAttributeSelector.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <tuple>
#include <utility>

#include "common/MissingValue.h"
#include "naivebayes/selection/NBAttribSelectReporter.h"
#include "naivebayes/selection/NBDataSteps.h"
#include "naivebayes/selection/NBFormulas.h"
#include "naivebayes/selection/NBSimulatedSteps.h"
#include "naivebayes/selection/NBTerms.h"
#include "naivebayes/store/NBInternalAdapter.h"
#include "naivebayes/variables/NBVarList.h"

using MCCommon::MultiPassRecordIter;
using MCCommon::Record;
using MCNaive::MCStatus;

NBAttributeSelector::NBAttributeSelector(std::vector<NBayesInput>& inputs, NBayesOutput& output,
                                         NBVarList& varList, NaiveBayesSettings& settings,
                                         NBCancelInfo& cancel, double totalWeight)
    : fModel{output, inputs},
      fVarList(varList),
      fSettings(settings),
      fCancel(cancel),
      fTotalWeight(totalWeight) {}

double NBAttributeSelector::ComputeAJTerm(int input, double n) const {
  return NBFormulas::ComputeAJTerm(fModel.fInputs[input], fModel.fInputs[input], n);
}

double NBAttributeSelector::StartSequence(int maxSize, std::vector<int>& candidates) {
  fvLogLikelihood.assign(maxSize, MCMV::gMissingValue);
  fvAPart.assign(maxSize, MCMV::gMissingValue);
  const int nInputs = static_cast<int>(fModel.fInputs.size());
  fvA.assign(nInputs, 0.0);
  std::vector<double> counts(fModel.fOutput.GetNCategories());
  for (int k = 0; k < fModel.fOutput.GetNCategories(); ++k) counts[k] = fModel.fOutput.GetCount(k);
  double running = NBFormulas::ComputeBase(counts, fModel.fOutput.GetPriors(), fTotalWeight);
  for (int j = 0; j < nInputs && !fCancel.IsCancel(); ++j) {
    fvA[j] = ComputeAJTerm(j, fTotalWeight);
    if (fVarList.GetVariableRole(fModel.fInputs[j].GetVarIndex()) == INBVariable::kInput) {
      fvOrder.push_back(j);
      running += fvA[j];
    } else {
      candidates.push_back(j);
    }
  }
  fNForced = NSizes();
  if (fNForced >= 1 && fNForced <= maxSize) fvAPart[fNForced - 1] = running;
  return running;
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
  if (fbSimulated) {
    MCNaiveBayes::MCRandom random = MakeRandom();
    const int records = std::max(fSettings.GetSampleSize4SimData(), 1);
    NBSimulatedSteps steps(fModel, records, random, fCancel);
    return TakeSteps(maxSize, training.fNRecords, steps);
  }
  NBDataSteps steps(fModel, fTotalWeight, training.fCodes, fCancel);
  return TakeSteps(maxSize, training.fNRecords, steps);
}

int NBAttributeSelector::TakeSteps(int maxSize, int nRecords, NBSteps& steps) {
  const std::clock_t start = std::clock();
  std::vector<int> candidates;
  double running = StartSequence(maxSize, candidates);
  for (int j : fvOrder) steps.Enter(j);
  std::vector<double> b;
  while (NSizes() < maxSize && !candidates.empty() && !fCancel.IsCancel()) {
    fbReadError = !steps.ComputeBJ(candidates, b);
    if (fbReadError || fCancel.IsCancel()) return -1;
    std::size_t best = 0;
    double bestScore = running + fvA[candidates[0]] + b[0];
    for (std::size_t c = 1; c < candidates.size(); ++c) {
      const double score = running + fvA[candidates[c]] + b[c];
      if (score > bestScore) {
        best = c;
        bestScore = score;
      }
    }
    const int winner = candidates[best];
    candidates.erase(candidates.begin() + static_cast<std::ptrdiff_t>(best));
    steps.Enter(winner);
    running += fvA[winner];
    fvOrder.push_back(winner);
    fvLogLikelihood[NSizes() - 1] = bestScore;
    fvAPart[NSizes() - 1] = running;
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

bool NBAttributeSelector::SumTerms(NBCodeSource& source, int first, std::vector<NBLogSum>& sums,
                                   NBTestCounts* counts) const {
  const int last = first + static_cast<int>(sums.size()) - 1;
  NBScaledProducts products;
  while (!fCancel.IsCancel()) {
    const NBCodeBlock* codes = source.NextCodes();
    if (codes == nullptr) return !source.HasFailed();
    if (counts != nullptr) counts->Add(*codes);
    products.Reset(fModel.fOutput.GetPriors(), codes->Cases());
    for (int s = 1; s <= last; ++s) {
      const int j = fvOrder[s - 1];
      products.Multiply(fModel.fInputs[j], codes->Codes(j));
      if (s < first) continue;
      products.Align();
      for (std::size_t i = 0; i < codes->Cases(); ++i) {
        sums[s - first].Add(products.SumOf(i), products.Exponent(i), codes->Weights()[i]);
      }
    }
  }
  return false;
}

bool NBAttributeSelector::CompleteLogLikelihoods(NBCodeStore& records, int lastSize) {
  const int first = FirstSize(), last = fbSimulated ? lastSize : fNForced;
  if (last < first) return true;
  std::vector<NBLogSum> sums(last - first + 1);
  if (!records.NewPass() || !SumTerms(records, first, sums, nullptr)) {
    fbReadError = !fCancel.IsCancel();
    return false;
  }
  for (int s = first; s <= last; ++s) {
    fvLogLikelihood[s - 1] = fvAPart[s - 1] - sums[s - first].Total() / fTotalWeight;
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

int NBAttributeSelector::SortAndRankTest(NBCodeSource& test, NBTestCounts& counts, Results& results,
                                         int nReport) {
  const int first = FirstSize();
  std::vector<NBLogSum> sums(std::max(NSizes() - first + 1, 0));
  if (!SumTerms(test, first, sums, &counts)) return -1;
  const double weight = counts.GetWeight();
  if (!(weight > 0)) return -1;
  double terms = NBFormulas::ComputeBase(counts.GetTargets(), fModel.fOutput.GetPriors(), weight);
  std::vector<std::pair<double, int>> ranked;
  for (int s = 1; s <= NSizes(); ++s) {
    terms +=
        NBFormulas::ComputeAJTerm(counts.GetInput(s - 1), fModel.fInputs[fvOrder[s - 1]], weight);
    if (s >= first) ranked.emplace_back(sums[s - first].Total() / weight - terms, s);
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
  selected.clear();
  for (int j : fvOrder) selected.push_back(fModel.fInputs[j].GetVarIndex());
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
  if (!CompleteLogLikelihoods(training.fCodes, fNForced)) return FailureStatus();
  ConvertSelectedPredictors(result.fvSelected);
  UpdateVarlist(size);
  return {};
}

MCStatus NBAttributeSelector::SelectMaxBIC(int maxSize, const Training& training, int nReport,
                                           NBSelectionResult& result) {
  if (BuildSubsetSequence(maxSize, training) < 0) return FailureStatus();
  if (!CompleteLogLikelihoods(training.fCodes, NSizes())) return FailureStatus();
  const int size = SortAndRankBIC(result.fvResults, nReport);
  ConvertSelectedPredictors(result.fvSelected);
  UpdateVarlist(size);
  return {};
}

MCStatus NBAttributeSelector::SelectMaxTestData(int maxSize, const Training& training,
                                                const TestSample& test, int nReport,
                                                NBSelectionResult& result) {
  if (BuildSubsetSequence(maxSize, training) < 0) return FailureStatus();
  if (!CompleteLogLikelihoods(training.fCodes, fNForced)) return FailureStatus();
  if (!test.fRecords.NewPass()) return MCNaive::Error(MCNaive::kNoTestRecords);
  NBInternalAdapter codes(test.fRecords, test.fNRecords, test.fPreparator);
  NBTestCounts counts(fModel, fvOrder);
  const int size = SortAndRankTest(codes, counts, result.fvResults, nReport);
  if (codes.GetStatus().IsError()) return codes.GetStatus();
  if (fCancel.IsCancel()) return FailureStatus();
  if (counts.GetWeight() == 0) return MCNaive::Error(MCNaive::kNoTestRecords);
  if (size < 0) return FailureStatus();
  ConvertSelectedPredictors(result.fvSelected);
  UpdateVarlist(size);
  return {};
}

MCStatus NBAttributeSelector::SelectExact(int size, MultiPassRecordIter& data, int nRecords,
                                          bool fromData, std::vector<int>& selected) {
  NBRecordStore codes = MakeStore(data);
  NBSelectionResult result;
  const MCStatus status = SelectExact(size, {codes, nRecords, fromData}, result);
  selected = std::move(result.fvSelected);
  return status;
}

MCStatus NBAttributeSelector::SelectMaxBIC(int maxSize, MultiPassRecordIter& data, int nRecords,
                                           bool fromData, std::vector<int>& selected,
                                           Results& results, int nReport) {
  NBRecordStore codes = MakeStore(data);
  NBSelectionResult result;
  const MCStatus status = SelectMaxBIC(maxSize, {codes, nRecords, fromData}, nReport, result);
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
  const MCStatus status = SelectMaxTestData(maxSize, {codes, nRecords, fromData},
                                            {test, nTest, *preparator}, nReport, result);
  selected = std::move(result.fvSelected);
  results = std::move(result.fvResults);
  return status;
}
