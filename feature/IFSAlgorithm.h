// The feature selection component as its callers see it.
//
// A run with a target: AccumulateAndRank, or its steps one by one in their order (Accumulate, then
// ScreenAndRank, or its own: CheckPredAllMissConst, ScreenPredictors, SortAndRank), then the
// results. A run without a target: CheckPredictorsNoTarget. Every stage starts from the stored
// status, does nothing when that is an error or a cancel is seen, and stores its result. An error
// stays; a cancel empties the component and leaves the error 1. Nothing is thrown: a stage without
// the memory it needs empties the component and leaves the error 80015, a query or a writer gives
// that status and leaves the component as it was. Used by one thread.
//
// The order of the virtual operations is part of the interface: new ones go to the end.
// Predictors are numbered from 0 in the order of the settings; ranks from 0, the best.
#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "common/LeakCheck.h"
#include "feature/MCFSCommon.h"
#include "feature/MCStatus.h"
#include "feature/statistics/FSEffect.h"
#include "feature/statistics/FSProfile.h"

class FSSettings;
struct FSCategoryMaps;
class MCQueryCancel;
class ProgressListener;
namespace MCCommon {
class RecordIterator;
}

class IFSAlgorithm {
 public:
  virtual ~IFSAlgorithm() = default;

  // Begins with "Feature Selection Component Ver.1.0".
  virtual std::string GetComponentVersion() const = 0;
  virtual MCFeature::MCStatus GetStatus() const = 0;

  // The data pass over at most maxRecords cases (negative: all), by records or, if the settings say
  // so, by transactions.
  virtual MCFeature::MCStatus Accumulate(MCCommon::RecordIterator& source, int maxRecords) = 0;
  // Weighted and unweighted numbers of used and excluded cases.
  virtual void GetNValidNExcluded(double& validWeight, double& excludedWeight, int& validCases,
                                  int& excludedCases) const = 0;
  // Categories of a categorical target by position in ascending order.
  virtual int GetNTargetCategories() const = 0;
  virtual int GetTargetCategoryCount(int position) const = 0;
  virtual bool GetTargetCategoryInfo(int position, int& category,
                                     std::pair<int, double>& counts) const = 0;

  // Removes predictors that are all missing or constant. Warning 80010 when all are.
  virtual MCFeature::MCStatus CheckPredAllMissConst() = 0;
  // Removes predictors by the thresholds. Warning 80011 when none is left.
  virtual MCFeature::MCStatus ScreenPredictors() = 0;
  virtual int GetNDeletedPred() const = 0;
  // Indices and reasons (MCFSCommon::PredictorDelReason) of removed predictors, parallel.
  virtual const std::vector<int>& GetIndicesDelPred() const = 0;
  virtual const std::vector<int>& GetReasonsDelPred() const = 0;

  // Computes the criteria, sorts and ranks: the best nBest, or all when nBest is not above 0.
  // Error 80012 (datum: valid predictors) when nBest is more than there are; they are ranked then.
  virtual MCFeature::MCStatus SortAndRank(int nBest) = 0;
  // The whole run: Accumulate and, while the status is OK, ScreenAndRank.
  virtual MCFeature::MCStatus AccumulateAndRank(MCCommon::RecordIterator& source, int maxRecords,
                                                bool screen, int nBest) = 0;

  // Which predictors would be removed, and every reason for each, without a target. Sets the target
  // position of the settings to -1.
  virtual MCFeature::MCStatus CheckPredictorsNoTarget(MCCommon::RecordIterator& source,
                                                      std::vector<int>& indices,
                                                      std::vector<std::vector<int>>& reasons,
                                                      int maxRecords) = 0;

  // Writes the ranking by one criterion as an FSOutputOne document: the nBest best predictors, or
  // all when nBest is not above 0, but never more than were put in order. Nothing is written, and
  // the status is the component's error, 6 (not ranked), 1 (cancelled) or 80006 (criterion not in
  // effect). Warning 80012 (datum: valid predictors), the document written, when nBest is more.
  virtual MCFeature::MCStatus ExportOneXML(std::ostream& out, MCFSCommon::RankCriteria criterion,
                                           int nBest) const = 0;
  // What is shown of a criterion for a predictor: see IFSPredTargetAccum::GetOutputStats.
  virtual bool GetPredictorStats(int criterion, int predictor, double& value, double& out2,
                                 double& out3, double& out4) const = 0;
  // Writes screening and ranking by all criteria as an FSOutputAll document; the predictors only
  // once they are ranked. Nothing is written, and the status is the component's error, 1
  // (cancelled) or 6 (not screened).
  virtual MCFeature::MCStatus ExportAllXML(std::ostream& out) const = 0;

  // Saves the whole component, in any stage, for FSFactory to restore. Nothing is written, and the
  // status is the component's error or 1 (cancelled), except that counts without a valid case
  // (80009, 80013) are saved, to be merged: they are restored without the error. A stream that
  // fails is left failed.
  virtual MCFeature::MCStatus SaveState(std::fstream& out) const = 0;
  virtual MCFeature::MCStatus SaveStateXML(std::ostream& out) const = 0;

  // Asks the run to stop at its next stage.
  virtual void Cancel() = 0;
  // Both are borrowed; null means none.
  virtual void SetProgressListener(ProgressListener* listener) = 0;
  virtual void SetCancelPtr(MCQueryCancel* cancel) = 0;

  virtual const FSSettings* GetSettings() const = 0;
  virtual FSSettings* GetSettings() = 0;

  // One entry per predictor; -1 and the missing value for predictors without. Empty for a criterion
  // that was not computed.
  virtual const std::vector<int>& GetRanks(MCFSCommon::RankCriteria criterion) const = 0;
  virtual const std::vector<double>& GetCriterionValues(
      MCFSCommon::RankCriteria criterion) const = 0;
  // The n best predictors and their values: see FSPredictorSet::GetTopPredictors. Errors 1
  // (cancelled), 6 (not ranked), 80006; warning 80012 (datum: valid predictors) when n is more.
  virtual MCFeature::MCStatus GetTopPredictors(MCFSCommon::RankCriteria criterion,
                                               std::vector<int>& indices,
                                               std::vector<double>& values, int n) const = 0;

  virtual bool IsDataAccumulated() const = 0;
  virtual bool ArePredictorsRanked() const = 0;

  virtual void Display(std::ostream& out) const = 0;

  // Adds what another component of the same settings has accumulated, as if its cases had come in
  // this one's data pass: counts exactly, means and deviations but for rounding. Before screening
  // and ranking; this component may be a new one. `maps` translates the other's categories; null
  // means that both use the same. The status becomes that of one pass over all cases: 80009 and
  // 80013 of a part without a valid case end with the first valid one. Error 80014, and nothing
  // changes, when the two do not fit; this component stays usable, so the error is not stored.
  virtual MCFeature::MCStatus Merge(const IFSAlgorithm& other, const FSCategoryMaps* maps) = 0;

  // What follows the data pass, or a merge: CheckPredAllMissConst, ScreenPredictors, SortAndRank,
  // each only while the status is OK. Screening only when `screen`.
  virtual MCFeature::MCStatus ScreenAndRank(bool screen, int nBest) = 0;

  // What the rules about leaks look at of a predictor, once they are screened; nothing of one that
  // was removed.
  virtual MCCommon::LeakTraits GetLeakTraits(int predictor) const = 0;

  // How strongly a predictor and the target go together, from the end of the data pass on (of
  // continuous predictors or target, of screening). `ranking` chooses between the tests that serve.
  // Nothing for a predictor that was removed, and for an index outside the range.
  virtual FSEffect GetPredictorEffect(MCFSCommon::RankCriteria ranking, int predictor) const = 0;

  // What a predictor looks like beside the target, from the end of the data pass on (of continuous
  // predictors or target, of screening). Nothing as above.
  virtual FSProfile GetPredictorProfile(int predictor) const = 0;

  // What CheckPredictorsNoTarget finds, of counts without a target that are there already: merged
  // ones, say.
  virtual MCFeature::MCStatus ScreenWithoutTarget(std::vector<int>& indices,
                                                  std::vector<std::vector<int>>& reasons) = 0;
};
