// The Naive Bayes component as its callers use it.
//
// Build a variable list and settings, have NBFactory create a component, then call SelectAttributes
// (which also builds the model of the chosen predictors) or BuildModel, and score. Records are the
// caller's: one value per variable of the list, in list order. Categorical values are codes 0, 1,
// 2, ...; the missing value and negative codes are missing. A missing target or weight leaves the
// record out of training; a missing input only adds no factor.
//
// Operations never throw; want of memory is the error 70021 of each. An error of an operation that
// changes the component sticks: later operations return it and do nothing. A warning stays readable
// in GetStatus(). One thread at a time; const scoring may be shared.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/Cancel.h"
#include "common/Progress.h"
#include "common/Record.h"
#include "common/RecordIterator.h"
#include "naivebayes/MCStatus.h"
#include "naivebayes/NBSelectionRequest.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/model/NBLeaks.h"
#include "naivebayes/model/NBOutput.h"
#include "naivebayes/model/NBOutputStatistics.h"
#include "naivebayes/variables/NBVarList.h"

class INBParts;
class NBPartCodes;
class NBScoredBlock;
struct NBPartClassified;
struct NBPartCounts;
struct MCApplicInfo4XML;

// The records of a part, all the caller's.
struct NBPartSource {
  MCCommon::MultiPassRecordIter& fData;
  int fNRecords = 0;
  MCCommon::MultiPassRecordIter* fpTest = nullptr;
  bool fbSelecting = true;  // candidates are counted, too
  bool fbKept = true;       // as codes
};

class INBAlgorithm {
 public:
  virtual ~INBAlgorithm() = default;

  // Begins "Naive Bayes Component Ver. 1.0"; empty for want of memory.
  virtual std::string GetComponentVersion() const = 0;

  // Trains on at most nRecords valid records, replacing earlier counts, and rewinds the data.
  // Errors: 1 cancelled, 70004, 70007, 70010, 70011, 70012, 70020. Warnings: 70010, 70015.
  virtual MCNaive::MCStatus BuildModel(MCCommon::MultiPassRecordIter& data, int nRecords) = 0;
  virtual bool IsModelBuilt() const = 0;

  // Adds at most nRecords valid records, from where the data stand, to the counts so far; several
  // batches give the counts of one, but an input that has fewer than two categories after a batch
  // is dropped for good. Bins stay as they are: only BuildModel, SelectAttributes and MergeModel
  // re-bin. Status as for BuildModel.
  virtual MCNaive::MCStatus Update(MCCommon::MultiPassRecordIter& data, int nRecords) = 0;

  // Classifies at most `limit` valid records (below 0: all) into `stats`, and rewinds the records
  // if they can be. Left out: a missing or unknown target, a missing weight, an input out of range.
  // Errors: 6, 70004, 70007 no record, 70012.
  virtual MCNaive::MCStatus ComputeOutputStats(MCCommon::RecordIterator& records,
                                               NBOutputStatistics& stats, int limit) const = 0;

  // Scores a record of one value per input of the model. Warnings: 70016 no valid input, the
  // probabilities are the normalised priors; 70010 an input out of range, nothing is scored.
  // Errors: 6, 70012.
  virtual MCNaive::MCStatus Score(const MCCommon::Record& inputs, NBOutput& output) const = 0;
  // The same for a record of one value per variable of the list.
  virtual MCNaive::MCStatus ScoreFullRecord(const MCCommon::Record& record,
                                            NBOutput& output) const = 0;
  // ScoreFullRecord, and counts the case in the training or the test statistics when it has a valid
  // target and weight.
  virtual MCNaive::MCStatus ScoreAndAccum(const MCCommon::Record& record, NBOutput& output,
                                          bool isTraining) = 0;
  // What ScoreAndAccum counted; null when it counted nothing.
  virtual const NBOutputStatistics* GetTrainOutStats() const = 0;
  virtual const NBOutputStatistics* GetTestOutStats() const = 0;

  // Writes the built model as a PMML 4.3 document; `info` fills its header and chooses the encoding
  // (null: what the component says of itself, in ASCII). A stream that fails is left failed, for
  // the caller to see. Nothing is written otherwise: 1 cancelled; warning 6 no model; 70005 a model
  // without inputs; 70006 a text or number that XML cannot hold, datum 0 its variable's index (-1:
  // it is the application's); 70022 weights beyond the range of a double.
  virtual MCNaive::MCStatus ExportModelXML(std::ostream& os, MCApplicInfo4XML* info) const = 0;

  virtual void SetCancelPtr(MCQueryCancel* cancel) = 0;
  // Write the built model and all that later operations need (NBFactory restores it), in binary and
  // as XML. Not part of it are what belongs to the caller (listener, cancel probe, user generator,
  // temporary directory), a warning, and what ScoreAndAccum counted. Errors: the component's own; 1
  // cancelled; 4 no model, a stream that failed, or estimates that are no numbers; 70022 and, in
  // XML, 70006 as for ExportModelXML. XML is written whole or not at all.
  virtual MCNaive::MCStatus SaveState(std::fstream& os) const = 0;
  virtual MCNaive::MCStatus SaveStateXML(std::ostream& os) const = 0;
  // Ends the running and every later operation.
  virtual void Cancel() = 0;
  virtual const MCNaive::MCStatus& GetStatus() const = 0;

  // Chooses a subset of the candidates and builds the model of it and the forced predictors, as
  // SelectAttributes(request, result) below: the request's and the result's fields one by one.
  virtual MCNaive::MCStatus SelectAttributes(MCCommon::MultiPassRecordIter& data, int nRecords,
                                             std::vector<int>& selected,
                                             std::vector<double>& logLikelihoods,
                                             std::vector<std::pair<int, double>>& results, int size,
                                             bool exact, MCCommon::MultiPassRecordIter* test,
                                             int nTest, int nReport, std::ostream* xml,
                                             MCApplicInfo4XML* appInfo) = 0;

  // Adds another built model's counts to this one, categories matched by their values. Without
  // `computeProbabilities` only counts are added, and a later merge with it brings the estimates up
  // to date; until then scores are those of before, for which a new category of an input is
  // missing and one of the target has probability 0. 70009 for a model of other variables, roles or
  // bins: this model is then unchanged and usable.
  virtual MCNaive::MCStatus MergeModel(const INBAlgorithm* other, bool computeProbabilities) = 0;

  // Weight and number of the training records used, and of those left out for want of a target or
  // a weight (a missing weight counts as 0): BuildModel and SelectAttributes count these to the end
  // of the data, Update in its batch. Valid records beyond the number asked for are neither.
  virtual void GetNValidNExcluded(double& validWeight, double& excludedWeight, int& nValid,
                                  int& nExcluded) const = 0;
  virtual int GetNTargetCategories() const = 0;
  // Training weight of a category; 0 <= category < GetNTargetCategories().
  virtual double GetTargetCategoryCount(int category) const = 0;
  // The model's predictors.
  virtual int GetNumberOfInputVars() const = 0;

  virtual void SetProgressListener(ProgressListener* listener) = 0;
  virtual const NaiveBayesSettings& GetSettings() const = 0;
  virtual const NBVarList& GetVarList() const = 0;
  virtual void Display(std::ostream& os) const = 0;

  // Chooses a subset of the candidates and builds the model of it and the forced predictors.
  // Errors as for BuildModel, and 70001, 70002, 70003, 70008, 70013. Warnings also 70014, and 70006
  // or 70022 when the document, and only it, could not be written.
  virtual MCNaive::MCStatus SelectAttributes(const NBSelectionRequest& request,
                                             NBSelectionResult& result) = 0;

  // ScoreFullRecord for the cases of a block of original records, of which only the columns of the
  // model's inputs are read; bit by bit the same results. `scored` says what each case comes with.
  // Errors: 6, 70012; nothing is scored then.
  virtual MCNaive::MCStatus ScoreBlock(const MCCommon::RecordBlock& block,
                                       NBScoredBlock& scored) const = 0;
  // The same, and counts as ScoreAndAccum does. REQUIRES: one flag per case.
  virtual MCNaive::MCStatus ScoreAndAccumBlock(const MCCommon::RecordBlock& block,
                                               NBScoredBlock& scored,
                                               const std::vector<char>& isTraining) = 0;

  // Training records of a category; -1 where only their weight is known: saved state does not hold
  // the number. 0 <= category < GetNTargetCategories().
  virtual int GetTargetCategoryRecords(int category) const = 0;

  // What the rules about leaks look at, of every predictor that was counted last, whether the model
  // kept it or not. Empty for a restored model.
  virtual const std::vector<NBInputTraits>& GetLeakTraits() const = 0;

  // BuildModel of records that lie in parts.
  virtual MCNaive::MCStatus BuildModelInParts(INBParts& parts) = 0;

  // The part's side of that, and of SelectAttributes with parts: counts at most nRecords valid
  // records of every candidate, and, where they are to be kept, makes codes of them and of the test
  // records, if there are any. No record is no error. The component is then to count no more, but
  // may build of counts. Errors: 1 cancelled, 70004, 70010, 70012.
  virtual MCNaive::MCStatus CountPart(const NBPartSource& source, NBPartCounts& counts,
                                      std::unique_ptr<NBPartCodes>& codes) = 0;

  // Adds what parts have classified to GetTrainOutStats and GetTestOutStats.
  virtual void AddClassified(const NBPartClassified& classified) = 0;
};
