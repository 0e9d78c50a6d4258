// What the data passes of a run gather: how many cases, the categories of the target, and an
// accumulator for each predictor; and the scores that follow from the accumulators.
//
// A pass calls Start, counts its cases, and gives each predictor's values to its accumulator. The
// settings are borrowed and must outlive the counts; the accumulators are its own.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iosfwd>
#include <memory>
#include <utility>
#include <vector>

#include "common/RecordBlock.h"
#include "feature/MCFSCommon.h"
#include "feature/MCStatus.h"
#include "feature/accumulators/FSMaps.h"
#include "feature/accumulators/FSPredictorState.h"
#include "feature/accumulators/IFSPredTargetAccum.h"

struct FSCaseBlock;
struct FSCategoryMaps;

// How many cases a pass takes between two looks at a cancel: half a million cells, a few
// milliseconds' work; but no fewer than make up for what is fetched of each accumulator.
inline std::size_t FSCasesBetweenPolls(std::size_t predictors) {
  constexpr std::size_t kCells = 524288;
  return std::clamp<std::size_t>(kCells / std::max<std::size_t>(predictors, 1), 64,
                                 MCCommon::RecordBlock::kMaxCases);
}

class FSCounts {
 public:
  explicit FSCounts(const FSSettings* settings);
  FSCounts(const FSCounts&) = delete;
  FSCounts& operator=(const FSCounts&) = delete;

  // A pass adds to what earlier ones gathered. The first one makes the accumulators, and decides
  // for all whether they are of pairs with the target.
  void Start(int nPredictors, bool withTarget);
  bool IsOfPairs() const { return fbWithTarget; }
  void EndPass();
  // Variances of what was gathered; nothing when that was done since the last pass.
  void Complete();

  // A case that is excluded has no valid target or no valid predictor.
  void CountValid(double weight, double target, bool withTarget);
  void CountExcluded(double weight);
  // All cases of a block are valid.
  void CountValidCases(const FSCaseBlock& cases);
  // A run of them, of a target category.
  void CountTarget(int category, std::size_t cases, const FSRun& run) {
    fTargetCategories.AddRun(category, cases, run);
  }
  void SeeValidWeight() { fbNoValidWeight = false; }
  // How many cases a pass may still take: maxRecords (negative: all), and no more than can be
  // counted.
  int CasesLeft(int maxRecords) const;
  // Error 80016 when the weights add up to more than a double holds. Error, or warning if `warn`,
  // 80013 without a valid weight (when there are weights), 80009 without a valid case.
  MCFeature::MCStatus Verdict(bool weighted, bool warn) const;

  // 0 before the first pass and after Clear, else the number of predictors.
  std::size_t Size() const { return fAccumulators.size(); }
  // Null for a predictor that was removed. REQUIRES: predictor < Size().
  IFSPredTargetAccum* At(std::size_t predictor) { return fAccumulators[predictor].get(); }
  const IFSPredTargetAccum* At(std::size_t predictor) const {
    return fAccumulators[predictor].get();
  }
  void Remove(std::size_t predictor) { fAccumulators[predictor].reset(); }
  void Clear() { fAccumulators.clear(); }

  // What a criterion makes of a predictor. Once the pass is complete, the criteria in effect are
  // computed together at the first asking, and kept. REQUIRES: the predictor is there.
  const FSScore& ScoreOf(std::size_t predictor, MCFSCommon::RankCriteria criterion) const;

  // Adds the counts of other cases, categories read through the maps (null: the same categories).
  // REQUIRES: FSMergeCheck finds nothing against it.
  void Merge(const FSCounts& other, const FSCategoryMaps* maps);

  // Weighted and unweighted numbers of valid and excluded cases.
  void GetNValidNExcluded(double& validWeight, double& excludedWeight, int& validCases,
                          int& excludedCases) const;
  // Of a categorical target among the valid cases.
  const FSMapIPCnt& GetTargetCategories() const { return fTargetCategories; }

  // Saved state, in two parts.
  template <class Archive, class Self>
  static void CaseFields(Archive& archive, Self& self);
  template <class Archive, class Self>
  static void AccumulatorFields(Archive& archive, Self& self, int nPredictors);
  bool IsConsistent() const;

 private:
  // The scores of one predictor, and by which criteria they were computed.
  struct Known {
    MCFSCommon::CriteriaSet fCriteria{};
    FSScores fScores;
  };

  std::unique_ptr<IFSPredTargetAccum> NewAccumulator(int predictor) const;

  const FSSettings* fpSettings;
  bool fbNoValidWeight = true;
  bool fbNoValidData = true;
  bool fbComplete = false;
  double fValidWeight = 0.0;
  double fExcludedWeight = 0.0;
  int fNValidCases = 0;
  int fNExcludedCases = 0;
  FSMapIPCnt fTargetCategories;
  bool fbWithTarget = false;
  std::vector<std::unique_ptr<IFSPredTargetAccum>> fAccumulators;
  mutable std::vector<Known> fKnown;  // by predictor; of the accumulators as they are complete
};
