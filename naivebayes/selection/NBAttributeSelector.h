// Chooses which candidate predictors enter a Naive Bayes model.
//
// A nested sequence of subsets grows by forward steps, each taking the candidate that most raises
// the average conditional log-likelihood
//   loglik(S) = Base + sum of A(j) over S + B(S),   B(S) = -(1/N) sum over records of w D(x,S),
//   D(x,S) = log sum over k of Pi(k) * product over j in S of P(x_j|k);
// a size is then chosen: exactly as asked, by the smallest pseudo-BIC, or by test records. Records
// in memory serve the steps themselves; otherwise each step simulates records from the model and
// takes B with w = 1 and their number in place of N. Missing values add no factor.
//
// Over the records that were counted, Base, A and B together are the average of log P(own
// category), and so minus that of log(1 + odds against it): summed like this, case by case, a
// log-likelihood keeps its digits where the parts would cancel, and is never above zero.
//
// A selector lives for one selection. Input positions count the model's inputs (forced predictors
// have role input, candidates role possible input) from 0. Everything handed over stays the
// caller's.
#pragma once

#include <iosfwd>
#include <utility>
#include <vector>

#include "common/RecordIterator.h"
#include "common/Workers.h"
#include "naivebayes/MCStatus.h"
#include "naivebayes/NBCancelInfo.h"
#include "naivebayes/NBSelectionRequest.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/model/NBModelView.h"
#include "naivebayes/model/NBNumerics.h"
#include "naivebayes/selection/MCRandom.h"
#include "naivebayes/selection/NBSteps.h"
#include "naivebayes/store/NBRecordStore.h"

class NBDataPreparator;
class NBPartsOfSelection;
class NBVarList;
struct MCApplicInfo4XML;
namespace MCCommonXML {
class XMLElement;
}

class NBAttributeSelector {
 public:
  using Results = std::vector<std::pair<int, double>>;  // subset size, criterion

  // The records of a selection: processed ones to train on, of which the steps themselves are
  // served (fbFromData), or which only complete the log-likelihoods ...
  struct Training {
    NBCodeStore& fCodes;
    int fNRecords;
    bool fbFromData;
    bool fbCounted = true;  // they are the very ones that the model has counted
    // Where the records lie in parts: they serve the steps, have been counted, and fCodes has none.
    NBPartsOfSelection* fpParts = nullptr;
  };
  // ... and, for the test criterion, original records that the preparator encodes, no more than so
  // many accepted ones (below 0 all).
  struct TestSample {
    MCCommon::MultiPassRecordIter& fRecords;
    int fNRecords;
    NBDataPreparator& fPreparator;
  };

  // `totalWeight` is the model's N; the workers share out the candidates of a step.
  NBAttributeSelector(std::vector<NBayesInput>& inputs, NBayesOutput& output, NBVarList& varList,
                      NaiveBayesSettings& settings, NBCancelInfo& cancel, double totalWeight,
                      MCCommon::Workers& workers = MCCommon::Workers::Alone());

  // Each builds the sequence, picks a size, gives the chosen candidates the role of inputs in the
  // variable list, and hands back the whole order of entry as variable indices and, where sizes are
  // compared, the best nReport of them in rank order. REQUIRES: no size below the forced
  // predictors. Errors: 1 cancelled, 70001 the records could not be read; with test records also
  // 70003 when none is valid, and the errors of their encoding.
  MCNaive::MCStatus SelectExact(int size, const Training& training, NBSelectionResult& result);
  MCNaive::MCStatus SelectMaxBIC(int maxSize, const Training& training, int nReport,
                                 NBSelectionResult& result);
  MCNaive::MCStatus SelectMaxTestData(int maxSize, const Training& training, const TestSample& test,
                                      int nReport, NBSelectionResult& result);
  // The same by the test cases of the parts. REQUIRES: there are parts.
  MCNaive::MCStatus SelectMaxTestParts(int maxSize, const Training& training, int nReport,
                                       NBSelectionResult& result);

  // The same from processed records of doubles: a target, a weight when the list has a weight
  // variable, and a code per input. They need not be those that the model has counted.
  MCNaive::MCStatus SelectExact(int size, MCCommon::MultiPassRecordIter& data, int nRecords,
                                bool fromData, std::vector<int>& selected);
  MCNaive::MCStatus SelectMaxBIC(int maxSize, MCCommon::MultiPassRecordIter& data, int nRecords,
                                 bool fromData, std::vector<int>& selected, Results& results,
                                 int nReport);
  MCNaive::MCStatus SelectMaxTestData(int maxSize, MCCommon::MultiPassRecordIter& data,
                                      int nRecords, bool fromData,
                                      MCCommon::MultiPassRecordIter& test, int nTest,
                                      std::vector<int>& selected, Results& results, int nReport,
                                      NBDataPreparator* preparator);

  // Copies the log-likelihood by subset size (element s - 1 is size s; the missing value below the
  // number of forced predictors) and returns how many sizes there are.
  int GetLoglikelihood(std::vector<double>& logLikelihoods) const;

  // Writes the last selection as a NaiveBayesAttrSelection document: the order of entry, and the
  // sizes that were ranked (an exact size: the one subset). `testData` names the criterion. Status
  // 1 after a cancel, and nothing is written; warning 70006, with the variable as datum 0 (-1: the
  // application), for a text that XML cannot hold, and 70022 for weights beyond the range of a
  // double, and nothing is written either.
  MCNaive::MCStatus ExportXML(std::ostream& os, bool testData, MCApplicInfo4XML* appInfo) const;

  // A(j) = sum over k and m of N(j,m,k) / N * log P(m|k).
  double ComputeAJTerm(int input, double n) const;

  // D of the current subset with each candidate in turn, for one processed record.
  void ComputeOneTermBJ(const std::vector<int>& current, const std::vector<int>& candidates,
                        const MCCommon::Record& record, std::vector<double>& out) const;

  // Draws a processed record from the model: the target by the priors, each input by its column.
  void GenerateSimulatedRecord(MCCommon::Record& record, MCNaiveBayes::MCRandom& random) const;

 private:
  // Returns 0, or -1 when cancelled or when the records could not be read.
  int BuildSubsetSequence(int maxSize, const Training& training);
  int TakeSteps(int maxSize, int nRecords, NBSteps& steps);
  // The forced predictors and the candidates.
  void StartSequence(int maxSize, std::vector<int>& candidates);
  // What the counts of the model add to the terms of the records; false when these could not be
  // read.
  [[nodiscard]] bool ComputeParts(const Training& training);
  double ComputePart(int input, const NBayesInputBase* less) const;
  MCNaiveBayes::MCRandom MakeRandom() const;
  void Report(int maxSize, int nCandidates, int nRecords, double seconds);

  // The first so many of the order of entry.
  std::vector<int> FirstOf(int size) const;
  // Sums of w * log(1 + odds) over training cases, for the sizes from `first` to `last`. False
  // after a cancel or a read error.
  bool SumTraining(const Training& training, int first, int last, std::vector<double>& totals);
  // Log-likelihoods on the training data where the steps gave none, or only simulated ones.
  bool CompleteLogLikelihoods(const Training& training, int lastSize);

  // Each returns the chosen size (0 when there is no predictor), or a negative value.
  int SortAndRankBIC(Results& results, int nReport);
  int SortAndRankTest(const std::vector<double>& totals, double weight, Results& results,
                      int nReport);
  MCNaive::MCStatus FinishByTest(bool isSummed, const std::vector<double>& totals,
                                 const NBSum& weight, int nReport, NBSelectionResult& result);
  int FillSelectionResults(std::vector<std::pair<double, int>> ranked, int nReport,
                           Results& results);

  NBRecordStore MakeStore(MCCommon::MultiPassRecordIter& data) const;
  void ConvertSelectedPredictors(std::vector<int>& selected) const;
  // Returns how many candidates were chosen.
  int UpdateVarlist(int size);
  MCNaive::MCStatus FailureStatus() const;
  void AddSubset(MCCommonXML::XMLElement& root, int size, const double* criterion, int rank) const;
  int FirstSize() const { return fNForced > 1 ? fNForced : 1; }
  int NSizes() const { return static_cast<int>(fvOrder.size()); }

  NBModelView fModel;
  NBVarList& fVarList;
  NaiveBayesSettings& fSettings;
  NBCancelInfo& fCancel;
  double fTotalWeight;
  MCCommon::Workers& fWorkers;

  // Base and, by input, A: with simulated steps those of the model's counts. Terms of the very
  // records that were counted have them in, and nothing is left; terms of others have those of
  // their own counts in, and what is left is the difference.
  struct Parts {
    double fBase = 0;
    std::vector<double> fvA;
  };

  std::vector<int> fvOrder;  // input positions in order of entry, forced ones first
  int fNForced = 0;
  Parts fRecordParts;  // beside terms of records ...
  Parts fStepParts;    // ... and of the steps
  std::vector<double> fvLogLikelihood;
  bool fbSimulated = false;
  bool fbReadError = false;
  std::vector<std::pair<double, int>> fvResults;  // criterion and size, best first
};
