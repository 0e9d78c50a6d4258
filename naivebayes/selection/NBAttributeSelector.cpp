#include "naivebayes/selection/NBAttributeSelector.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <tuple>
#include <utility>

#include "common/MissingValue.h"
#include "naivebayes/selection/NBAttribSelectReporter.h"
#include "naivebayes/selection/NBFormulas.h"
#include "naivebayes/store/NBDataPreparator.h"
#include "naivebayes/store/NBInternalAdapter.h"
#include "naivebayes/variables/NBVarList.h"

using MCCommon::MultiPassRecordIter;
using MCCommon::Record;
using MCCommon::RecordBlock;
using MCCommon::RecordIterator;
using MCNaive::MCStatus;

namespace {

// sum over k of values[k] * factors[k], in the order of k.
inline double Dot(const double* values, const double* factors, std::size_t n) {
  double sum = 0;
  for (std::size_t k = 0; k < n; ++k) sum += values[k] * factors[k];
  return sum;
}

// Sum over records of weight * log(products times the input's factors), the number of target
// categories known to the compiler where it is small.
template <int kCategories>
double SumLogs(const NBScaledProducts& products, const NBayesInputBase& input,
               const std::int32_t* codes, const double* weights) {
  const std::size_t n = kCategories > 0 ? kCategories : products.Categories();
  NBLogSum sum;
  for (std::size_t i = 0; i < products.Records(); ++i) {
    const double term = Dot(products.Values(i), input.GetFactors(codes[i]), n);
    sum.Add(term, products.Exponent(i), weights[i]);
  }
  return sum.Total();
}

}  // namespace

// What the test criterion needs beside the D terms: test weights by category, for each input in
// order of entry.
struct NBAttributeSelector::TestCounts {
  TestCounts(const std::vector<NBayesInput>& inputs, const std::vector<int>& order, int targets)
      : fvTargets(targets, 0.0), fvInputs(order.size()) {
    for (std::size_t s = 0; s < order.size(); ++s) {
      fvInputs[s].Setup(inputs[order[s]].GetNCategories(), targets);
    }
  }
  double Weight() const {
    NBSum sum;
    for (double weight : fvTargets) sum.Add(weight);
    return sum.Total();
  }
  std::vector<double> fvTargets;
  std::vector<NBayesInputBase> fvInputs;
};

NBAttributeSelector::NBAttributeSelector(std::vector<NBayesInput>& inputs, NBayesOutput& output,
                                         NBVarList& varList, NaiveBayesSettings& settings,
                                         NBCancelInfo& cancel, double totalWeight)
    : fInputs(inputs),
      fOutput(output),
      fVarList(varList),
      fSettings(settings),
      fCancel(cancel),
      fTotalWeight(totalWeight),
      fbHasWeight(varList.GetWeightIndex() >= 0) {}

double NBAttributeSelector::ComputeAJTerm(int input, double n) const {
  return NBFormulas::ComputeAJTerm(fInputs[input], fInputs[input], n);
}

double NBAttributeSelector::StartSequence(int maxSize, std::vector<int>& candidates) {
  fvLogLikelihood.assign(maxSize, MCMV::gMissingValue);
  fvAPart.assign(maxSize, MCMV::gMissingValue);
  const int nInputs = static_cast<int>(fInputs.size());
  fvA.assign(nInputs, 0.0);
  std::vector<double> counts(fOutput.GetNCategories());
  for (int k = 0; k < fOutput.GetNCategories(); ++k) counts[k] = fOutput.GetCount(k);
  double running = NBFormulas::ComputeBase(counts, fOutput.GetPriors(), fTotalWeight);
  for (int j = 0; j < nInputs && !fCancel.IsCancel(); ++j) {
    fvA[j] = ComputeAJTerm(j, fTotalWeight);
    if (fVarList.GetVariableRole(fInputs[j].GetVarIndex()) == INBVariable::kInput) {
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

// Takes all records in, and the forced predictors' products; these give the first log-likelihood.
bool NBAttributeSelector::StartFromData(MultiPassRecordIter& data, double running) {
  if (!data.NewPass()) return false;
  for (;;) {
    const RecordBlock& block = data.NextBlock(RecordBlock::kMaxCases);
    if (block.Cases() == 0) break;
    fTraining.Append(block, fbHasWeight, NBCodeBlock::kSelectionOffset);
  }
  if (data.GetFailReason() == RecordIterator::kReadError) return false;
  fProducts.Reset(fOutput.GetPriors(), fTraining.Cases());
  for (int j : fvOrder) fProducts.Multiply(fInputs[j], fTraining.Codes(j));
  fProducts.Align();
  if (fNForced > 0) {
    NBLogSum sum;
    for (std::size_t i = 0; i < fTraining.Cases(); ++i) {
      sum.Add(fProducts.SumOf(i), fProducts.Exponent(i), fTraining.Weights()[i]);
    }
    fvLogLikelihood[fNForced - 1] = running - sum.Total() / fTotalWeight;
  }
  return true;
}

int NBAttributeSelector::BuildSubsetSequence(int maxSize, MultiPassRecordIter& data, int nRecords,
                                             bool fromData) {
  if (fCancel.IsCancel()) return -1;
  fbSimulated = !fromData;
  const std::clock_t start = std::clock();
  std::vector<int> candidates;
  double running = StartSequence(maxSize, candidates);
  if (fromData && !StartFromData(data, running)) {
    fbReadError = true;
    return -1;
  }
  std::vector<int> current = fvOrder;
  const NaiveBayesSettings::RNGChoice choice = fSettings.GetRNGOption();
  MCNaiveBayes::MCRandom random(
      fSettings.GetRandomSeed(), choice != NaiveBayesSettings::kLibrary,
      choice == NaiveBayesSettings::kMersenneTwister,
      choice == NaiveBayesSettings::kUserProvided ? fSettings.GetUserRNG() : nullptr);
  std::vector<double> b;
  while (NSizes() < maxSize && !candidates.empty() && !fCancel.IsCancel()) {
    if (fromData) {
      ComputeBJ(candidates, b);
    } else {
      ComputeBJ(current, candidates, b, random);
    }
    if (fCancel.IsCancel()) return -1;
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
    current.insert(std::upper_bound(current.begin(), current.end(), winner), winner);
    running += fvA[winner];
    Enter(winner, running, bestScore);
    Report(maxSize, static_cast<int>(candidates.size()), nRecords,
           static_cast<double>(std::clock() - start) / 1e6);
  }
  return fCancel.IsCancel() ? -1 : 0;
}

void NBAttributeSelector::Enter(int candidate, double running, double score) {
  fvOrder.push_back(candidate);
  fvLogLikelihood[NSizes() - 1] = score;
  fvAPart[NSizes() - 1] = running;
  if (fbSimulated) return;
  fProducts.Multiply(fInputs[candidate], fTraining.Codes(candidate));
  fProducts.Align();
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

double NBAttributeSelector::ComputeB(int candidate) const {
  const NBayesInputBase& input = fInputs[candidate];
  const std::int32_t* codes = fTraining.Codes(candidate);
  const double* weights = fTraining.Weights();
  double sum;
  switch (fProducts.Categories()) {
    case 2:
      sum = SumLogs<2>(fProducts, input, codes, weights);
      break;
    case 3:
      sum = SumLogs<3>(fProducts, input, codes, weights);
      break;
    default:
      sum = SumLogs<0>(fProducts, input, codes, weights);
  }
  return -sum / fTotalWeight;
}

void NBAttributeSelector::ComputeBJ(const std::vector<int>& candidates, std::vector<double>& out) {
  out.assign(candidates.size(), 0.0);
  for (std::size_t c = 0; c < candidates.size() && !fCancel.IsCancel(); ++c) {
    out[c] = ComputeB(candidates[c]);
  }
}

void NBAttributeSelector::ComputeBJ(const std::vector<int>& current,
                                    const std::vector<int>& candidates, std::vector<double>& out,
                                    MCNaiveBayes::MCRandom& random) {
  const int n = std::max(fSettings.GetSampleSize4SimData(), 1);
  std::vector<NBSum> sums(candidates.size());
  std::vector<double> terms;
  Record record(fInputs.size() + 1);
  for (int i = 0; i < n && !fCancel.IsCancel(); ++i) {
    GenerateSimulatedRecord(record, random);
    ComputeOneTermBJ(current, candidates, record, terms);
    for (std::size_t c = 0; c < terms.size(); ++c) sums[c].Add(terms[c]);
  }
  out.clear();
  for (const NBSum& sum : sums) out.push_back(-sum.Total() / n);
}

void NBAttributeSelector::ComputeOneTermBJ(const std::vector<int>& current,
                                           const std::vector<int>& candidates, const Record& record,
                                           std::vector<double>& out) const {
  const std::size_t first = record.Size() - fInputs.size();
  const auto codeOf = [&](int j) {
    return CategoryOf(record[first + j], NBCodeBlock::kSelectionOffset);
  };
  NBScaledProducts products;
  products.Reset(fOutput.GetPriors(), 1);
  for (int j : current) {
    const std::int32_t code = codeOf(j);
    products.Multiply(fInputs[j], &code);
  }
  products.Align();
  out.clear();
  for (int c : candidates) {
    NBLogSum term;
    term.Add(Dot(products.Values(0), fInputs[c].GetFactors(codeOf(c)), products.Categories()),
             products.Exponent(0), 1.0);
    out.push_back(term.Total());
  }
}

void NBAttributeSelector::GenerateSimulatedRecord(Record& record,
                                                  MCNaiveBayes::MCRandom& random) const {
  // Inversion: walk down the probabilities until the draw is used up, at most to the last category.
  const auto walk = [&](int categories, auto probability) {
    double u = random.GetRandom();
    int category = 0;
    while (category < categories - 1 && u > probability(category)) u -= probability(category++);
    return category;
  };
  const int target = walk(fOutput.GetNCategories(), [&](int k) { return fOutput.GetPriors()[k]; });
  record[0] = target;
  for (std::size_t j = 0; j < fInputs.size(); ++j) {
    const NBayesInput& input = fInputs[j];
    const int categories = input.GetNCategories();
    record[j + 1] = walk(categories, [&](int m) { return input.GetProbability(m, target); });
    if (categories < 1) record[j + 1] = INBEncoder::kMissingCode;
  }
}

bool NBAttributeSelector::SumTerms(RecordIterator& records, int first, int last,
                                   std::vector<NBLogSum>& sums, TestCounts* counts) const {
  sums.assign(last - first + 1, {});
  NBCodeBlock codes;
  NBScaledProducts products;
  while (!fCancel.IsCancel()) {
    const RecordBlock& block = records.NextBlock(RecordBlock::kMaxCases);
    if (block.Cases() == 0) return records.GetFailReason() != RecordIterator::kReadError;
    codes.Load(block, fbHasWeight, NBCodeBlock::kSelectionOffset);
    products.Reset(fOutput.GetPriors(), codes.Cases());
    for (std::size_t i = 0; counts != nullptr && i < codes.Cases(); ++i) {
      counts->fvTargets[codes.Targets()[i]] += codes.Weights()[i];
    }
    for (int s = 1; s <= last; ++s) {
      const int j = fvOrder[s - 1];
      products.Multiply(fInputs[j], codes.Codes(j));
      if (counts != nullptr) {
        counts->fvInputs[s - 1].AddCases(codes.Codes(j), codes.Targets(), codes.Weights(),
                                         codes.Cases());
      }
      if (s < first) continue;
      products.Align();
      for (std::size_t i = 0; i < codes.Cases(); ++i) {
        sums[s - first].Add(products.SumOf(i), products.Exponent(i), codes.Weights()[i]);
      }
    }
  }
  return false;
}

bool NBAttributeSelector::CompleteLogLikelihoods(MultiPassRecordIter& data, int lastSize) {
  const int first = FirstSize();
  if (!fbSimulated || lastSize < first) return true;
  std::vector<NBLogSum> sums;
  if (!data.NewPass() || !SumTerms(data, first, lastSize, sums, nullptr)) {
    fbReadError = !fCancel.IsCancel();
    return false;
  }
  for (int s = first; s <= lastSize; ++s) {
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

int NBAttributeSelector::SortAndRankTest(RecordIterator& test, Results& results, int nReport) {
  const int first = FirstSize();
  TestCounts counts(fInputs, fvOrder, fOutput.GetNCategories());
  std::vector<NBLogSum> sums;
  if (!SumTerms(test, std::min(first, NSizes()), NSizes(), sums, &counts)) return -1;
  const double weight = counts.Weight();
  if (!(weight > 0)) return -1;
  double terms = NBFormulas::ComputeBase(counts.fvTargets, fOutput.GetPriors(), weight);
  std::vector<std::pair<double, int>> ranked;
  for (int s = 1; s <= NSizes(); ++s) {
    terms += NBFormulas::ComputeAJTerm(counts.fvInputs[s - 1], fInputs[fvOrder[s - 1]], weight);
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
  for (int j : fvOrder) selected.push_back(fInputs[j].GetVarIndex());
}

int NBAttributeSelector::UpdateVarlist(int size) {
  const int last = std::min(size, NSizes());
  for (int s = fNForced; s < last; ++s) {
    fVarList.SetVariableRole(fInputs[fvOrder[s]].GetVarIndex(), INBVariable::kInput);
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

MCStatus NBAttributeSelector::SelectExact(int size, MultiPassRecordIter& data, int nRecords,
                                          bool fromData, std::vector<int>& selected) {
  if (BuildSubsetSequence(size, data, nRecords, fromData) < 0) return FailureStatus();
  if (!CompleteLogLikelihoods(data, fNForced)) return FailureStatus();
  ConvertSelectedPredictors(selected);
  UpdateVarlist(size);
  return {};
}

MCStatus NBAttributeSelector::SelectMaxBIC(int maxSize, MultiPassRecordIter& data, int nRecords,
                                           bool fromData, std::vector<int>& selected,
                                           Results& results, int nReport) {
  if (BuildSubsetSequence(maxSize, data, nRecords, fromData) < 0) return FailureStatus();
  if (!CompleteLogLikelihoods(data, NSizes())) return FailureStatus();
  const int size = SortAndRankBIC(results, nReport);
  ConvertSelectedPredictors(selected);
  UpdateVarlist(size);
  return {};
}

MCStatus NBAttributeSelector::SelectMaxTestData(int maxSize, MultiPassRecordIter& data,
                                                int nRecords, bool fromData,
                                                MultiPassRecordIter& test, int nTest,
                                                std::vector<int>& selected, Results& results,
                                                int nReport, NBDataPreparator* preparator) {
  if (BuildSubsetSequence(maxSize, data, nRecords, fromData) < 0) return FailureStatus();
  if (!CompleteLogLikelihoods(data, fNForced)) return FailureStatus();
  if (!test.NewPass()) return MCNaive::Error(MCNaive::kNoTestRecords);
  NBInternalAdapter records(test, nTest, *preparator);
  if (!records.HasMore() && !records.GetStatus().IsError() && !fCancel.IsCancel()) {
    return MCNaive::Error(MCNaive::kNoTestRecords);
  }
  const int size = SortAndRankTest(records, results, nReport);
  if (records.GetStatus().IsError()) return records.GetStatus();
  if (size < 0 || fCancel.IsCancel()) return FailureStatus();
  ConvertSelectedPredictors(selected);
  UpdateVarlist(size);
  return {};
}
