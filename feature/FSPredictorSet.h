// The predictors of one run and the stages they go through: one pass over the cases, screening,
// ranking criteria, sorting, ranking, and the extraction of the top predictors. What they are made
// of has classes of its own: what the passes count (feature/pass), exclusions and order
// (feature/ranking).
//
// Stages are called in the order in which they are declared. The settings and the cancel state are
// borrowed and must outlive the set. Cancel is polled once a block of records, predictor or
// criterion; a cancelled stage stops where it is. Single records and blocks of the same cases give
// the same result to the last bit.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/RecordIterator.h"
#include "common/Workers.h"
#include "feature/FSCancelInfo.h"
#include "feature/MCFSCommon.h"
#include "feature/MCStatus.h"
#include "feature/pass/FSCounts.h"
#include "feature/ranking/FSExclusions.h"
#include "feature/ranking/FSRanking.h"
#include "feature/statistics/FSEffect.h"
#include "feature/statistics/FSProfile.h"

struct FSCategoryMaps;
struct FSCriterion;
class FSSettings;
namespace MCCommonXML {
class XMLElement;
}

class FSPredictorSet {
 public:
  FSPredictorSet(FSSettings* settings, FSCancelInfo* cancel);
  FSPredictorSet(const FSPredictorSet&) = delete;
  FSPredictorSet& operator=(const FSPredictorSet&) = delete;

  // The data pass, one record a case. maxRecords counts the cases with a valid weight; a negative
  // number is no limit. A missing or non-positive weight skips its case; a missing target (also
  // category -1), or no valid predictor, excludes it. Errors 80016, 80013, 80009.
  MCFeature::MCStatus PassRecords(MCCommon::RecordIterator& source, int maxRecords);
  // The data pass over transactions: case identifier, item (predictor index), value, target. The
  // items of a case increase; predictors without an item are missing. Errors 80007, 80008, 80009.
  MCFeature::MCStatus PassTransactions(MCCommon::RecordIterator& source);
  // The data pass without a target. Error 80016, warnings 80013, 80009.
  MCFeature::MCStatus PassRecordsNoTarget(MCCommon::RecordIterator& source, int maxRecords);

  // Takes in what another set has gathered in its data pass, before anything else is done with
  // either; this one may be new. See IFSAlgorithm::Merge. Error 80014, and nothing changes; 80013
  // and 80009 as of one pass.
  MCFeature::MCStatus Merge(const FSPredictorSet& other, const FSCategoryMaps* maps);

  // Variances of what the pass has gathered. The stages below call it themselves, once.
  void CompletePass();

  // Removes predictors without a valid value or with a constant one. Warning 80010 when all are.
  MCFeature::MCStatus CheckPredAllMissConst();
  // Removes predictors by the thresholds of the settings. Warning 80011 when none is left.
  MCFeature::MCStatus ScreenPredictors();
  // Removes nothing and reports, for each predictor that screening would remove, every reason: all
  // missing or constant first, then the thresholds in their order. Warning 80011 when none is left.
  MCFeature::MCStatus ScreenAllReasons(std::vector<int>& indices,
                                       std::vector<std::vector<int>>& reasons);

  // The value of every enabled criterion for every remaining predictor.
  void ComputeCriteria();
  // A stable sort of all predictors by each enabled criterion.
  void SortAll();
  // Puts only the best n in order (n < 1: all valid ones). Ties need not keep file order, and what
  // comes after the best n is in no order.
  void SortBest(int n);
  // Ranks count from 0, the best.
  void RankAll();
  void RankBest();

  // The first n predictors of a criterion's order with their values; n < 1 means as many as
  // SortBest was given, or all valid ones. In a mixed set the t criterion gives the order of F,
  // which holds the same predictors. Error 80006 when the criterion was not enabled.
  MCFeature::MCStatus GetTopPredictors(MCFSCommon::RankCriteria criterion, int n,
                                       std::vector<int>& indices,
                                       std::vector<double>& values) const;
  // One value per predictor, missing for deleted ones. Empty before ComputeCriteria.
  const std::vector<double>& GetCriterionValues(MCFSCommon::RankCriteria criterion) const {
    return fRanking.GetValues(criterion);
  }
  // One rank per predictor, -1 for those not ranked.
  const std::vector<int>& GetRanks(MCFSCommon::RankCriteria criterion) const {
    return fRanking.GetRanks(criterion);
  }
  // IFSPredTargetAccum::GetOutputStats of a predictor. False for a deleted predictor, and for an
  // index or criterion outside its range.
  bool GetPredictorStats(int criterion, int predictor, double& value, double& out2, double& out3,
                         double& out4) const;

  // What the rules about leaks look at; nothing of a deleted predictor, and for an index outside
  // the range.
  MCCommon::LeakTraits GetLeakTraits(int predictor) const;
  // IFSPredTargetAccum::ComputeEffect of a predictor; nothing as above.
  FSEffect GetPredictorEffect(MCFSCommon::RankCriteria ranking, int predictor) const;
  // IFSPredTargetAccum::GetProfile of a predictor; nothing as above.
  FSProfile GetPredictorProfile(int predictor) const;
  // IFSPredTargetAccum::GetCategories of a predictor; null as above.
  const FSMapICnt* GetCategories(int predictor) const;

  void GetNValidNExcluded(double& validWeight, double& excludedWeight, int& validCases,
                          int& excludedCases) const {
    fCounts.GetNValidNExcluded(validWeight, excludedWeight, validCases, excludedCases);
  }
  int GetNDeletedPred() const { return fExclusions.Size(); }
  int GetNValidPred() const { return fNPredictors - GetNDeletedPred(); }
  // Parallel, in ascending order of the index.
  const std::vector<int>& GetIndicesDelPred() const { return fExclusions.GetIndices(); }
  const std::vector<int>& GetReasonsDelPred() const { return fExclusions.GetReasons(); }

  // Categories of a categorical target, in ascending order; 0 for a continuous one.
  int GetNTargetCategories() const;
  // Unweighted count of the category at a position; 0 for a position outside the range.
  int GetTargetCategoryCount(int position) const;
  // Category, unweighted and weighted count. False for a position outside the range.
  bool GetTargetCategoryInfo(int position, int& category, std::pair<int, double>& counts) const;

  // The result documents, once the predictors are ranked, or screened. Error 6 before that and 1
  // when cancelled, and nothing is written.
  MCFeature::MCStatus ExportOneXML(std::ostream& out, MCFSCommon::RankCriteria criterion,
                                   int nBest) const;
  MCFeature::MCStatus ExportAllXML(std::ostream& out) const;

  // Short names, as in result documents. A reason that they do not name is empty.
  static std::string GetScreenCritName(MCFSCommon::PredictorDelReason reason);
  static std::string GetRankCritName(MCFSCommon::RankCriteria criterion);

  // Destroys all accumulators and sort records.
  void Cancel();

  // The code of the warning under which the run goes on, 0 for none: kept for the facade, whose
  // status it is part of, so that it is saved with the set.
  std::int64_t GetWarning() const { return fWarning; }
  void SetWarning(std::int64_t code) { fWarning = static_cast<int>(code); }

  // Saved state, in any stage: as for IFSPredTargetAccum. REQUIRES for reading: a new set, whose
  // settings are those that were saved with it.
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

  void Display(std::ostream& out) const;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  bool IsConsistent() const;
  bool IsThere(int predictor) const;
  MCFeature::MCStatus PassBlocks(MCCommon::RecordIterator& source, int maxRecords, bool withTarget,
                                 bool warn);
  MCCommon::Workers& WorkersOfPass();
  MCFeature::MCStatus EndOfPass(bool weighted, bool warn);
  template <class Reason>
  void RemoveWhere(Reason reason);
  MCFeature::MCStatus MayExport(MCFSCommon::PredictorSetStatus from) const;
  // A missing value is "Missing". Without a name the attribute is criterionValue.
  static void ExportDoubleValue(MCCommonXML::XMLElement& element, double value);
  static void ExportDoubleValue(MCCommonXML::XMLElement& element, const char* name, double value);
  FSPart PartOf(const FSCriterion& criterion, int predictor) const;
  void ExportRanking(MCCommonXML::XMLElement& root, const FSCriterion& criterion, int n) const;
  void ExportPredictor(MCCommonXML::XMLElement& element, int predictor) const;
  void ExportExcludedPredictors(MCCommonXML::XMLElement& root) const;
  void ExportCriteria(MCCommonXML::XMLElement& element, int predictor) const;
  void ExportCritAndRank(MCCommonXML::XMLElement& element, int predictor,
                         MCFSCommon::RankCriteria criterion) const;

  FSSettings* fpSettings;
  FSCancelInfo* fpCancel;
  int fNPredictors;
  MCFSCommon::PredictorSetType fSetType;
  MCFSCommon::PredictorSetStatus fStatus = MCFSCommon::kInitial;
  double fElapsed = 0.0;        // seconds over all stages
  double fStoredElapsed = 0.0;  // those that came with a saved state
  FSCounts fCounts;
  FSExclusions fExclusions;
  FSRanking fRanking;
  int fWarning = 0;
  std::unique_ptr<MCCommon::Workers> fpWorkers;  // of the passes, kept from one to the next
};
