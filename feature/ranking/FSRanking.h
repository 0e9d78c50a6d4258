// The predictors of one run in order, by each criterion in effect: their criterion values, sort
// records and ranks.
//
// Started, filled with scores, sorted and ranked, in this order. The settings and the cancel state
// are borrowed; cancel is polled once a criterion.
#pragma once

#include <array>
#include <iosfwd>
#include <vector>

#include "feature/FSCancelInfo.h"
#include "feature/MCFSCommon.h"
#include "feature/ranking/FSPredSort.h"

class FSCounts;
class FSSettings;

class FSRanking {
 public:
  FSRanking(const FSSettings* settings, FSCancelInfo* cancel);

  // Forgets everything; all values are missing.
  void Start(int nPredictors);
  // Enters what each criterion in effect makes of a predictor. REQUIRES: the predictor is there.
  void Enter(int predictor, const FSCounts& counts);
  // A stable sort by each criterion.
  void SortAll();
  // Puts only the best n in order (never more than there are). Ties need not keep file order, and
  // what comes after the best n is in no order.
  void SortBest(int n);
  // Ranks of the first n of each order, from 0.
  void RankFirst(int n);
  // Forgets the orders.
  void Clear();

  // What SortBest was given, 0 before.
  int GetNBest() const { return fNBest; }
  // The sort records in the order that is reported of a criterion. In a mixed set of type `set` the
  // t criterion gives the order of F, which holds the same predictors.
  const std::vector<FSPredSort>& OrderOf(MCFSCommon::RankCriteria criterion,
                                         MCFSCommon::PredictorSetType set) const;
  // One entry per predictor: the missing value and -1 for those without. Empty for a criterion
  // that was not computed, and for a number that is no criterion.
  const std::vector<double>& GetValues(MCFSCommon::RankCriteria criterion) const;
  const std::vector<int>& GetRanks(MCFSCommon::RankCriteria criterion) const;
  // -1 for a predictor that is not ranked.
  int RankOf(MCFSCommon::RankCriteria criterion, int predictor) const;

  void Display(std::ostream& out) const;

  // Saved state, in two parts.
  template <class Archive, class Self>
  static void BestField(Archive& archive, Self& self);
  template <class Archive, class Self>
  static void OrderFields(Archive& archive, Self& self, int nPredictors);
  // Whether ranks and values are there together, and an order names each predictor once; those that
  // remain, if it was computed since the set was last screened.
  bool IsConsistent(const std::vector<bool>& remain, bool computed) const;

 private:
  template <class T>
  using PerCriterion = std::array<std::vector<T>, MCFSCommon::kNCriteria>;

  const FSSettings* fpSettings;
  FSCancelInfo* fpCancel;
  int fNBest = 0;
  PerCriterion<FSPredSort> fOrders;
  PerCriterion<int> fRanks;
  PerCriterion<double> fValues;
};
