// Cross-validates a selection by pseudo-BIC: deals the stored cases into folds, selects and builds
// on all folds but one, for each fold in turn, and predicts the fold left out.
//
// Folds go together as lanes of NBFoldLanes, so that what is asked of the cases is asked once for
// many folds. The forward steps are those of NBAttributeSelector over the same cases, up to the
// rounding of sums; their models are those that a selection on these cases alone would build, with
// the categories and bins of all cases.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/Workers.h"
#include "naivebayes/NBCancelInfo.h"
#include "naivebayes/model/NBModelView.h"
#include "naivebayes/store/NBCodeStore.h"
#include "naivebayes/validation/NBCrossValidation.h"
#include "naivebayes/validation/NBFoldModel.h"

class NBVarList;

class NBCrossValidator {
 public:
  // The model has counted the cases of the store. Forced predictors have the role of inputs in the
  // list, the others are candidates. All stay the caller's.
  NBCrossValidator(const NBModelView& model, const NBVarList& varList, double totalWeight,
                   NBCodeStore& records, NBCancelInfo& cancel, MCCommon::Workers& workers);

  // What a fold selects: at most so many predictors, forced ones included, or exactly so many.
  struct Sizes {
    int fMost;
    bool fbExact;
  };
  // Leaves the runs empty when there are fewer cases than folds. False when the records could not
  // be read, or after a cancel.
  [[nodiscard]] bool Run(const Sizes& sizes, NBCrossValidation& validation);

 private:
  // A fold of a repeat, and its sequence of subsets.
  struct Fold {
    int fRepeat;
    int fFold;
    NBFoldModel fModel;
    std::vector<int> fvOrder{};             // input positions, forced ones first
    std::vector<int> fvLeft{};              // candidates
    std::vector<double> fvLogLikelihood{};  // by size, from that of the forced predictors on
  };

  [[nodiscard]] bool ReadTargets();
  [[nodiscard]] bool TakeOutFolds(std::vector<Fold>& folds);
  [[nodiscard]] bool Select(std::vector<Fold>& folds, const Sizes& sizes);
  void Start(Fold& fold) const;
  // The input that enters in this step, -1 for none.
  static int Choose(Fold& fold, const std::vector<int>& inputs,
                    const std::vector<std::vector<double>>& sums, std::size_t lane);
  // All folds' candidates.
  std::vector<int> CandidatesOf(const std::vector<Fold>& folds) const;
  void CutToBest(Fold& fold) const;
  [[nodiscard]] bool Predict(std::vector<Fold>& folds, NBCrossValidation& validation);
  const std::vector<std::int32_t>& FoldsOf(const Fold& fold) const {
    return fvDealt[static_cast<std::size_t>(fold.fRepeat)];
  }

  NBModelView fModel;
  const NBVarList& fVarList;
  double fTotalWeight;
  NBCodeStore& fRecords;
  NBCancelInfo& fCancel;
  MCCommon::Workers& fWorkers;
  std::size_t fNForced = 0;
  std::vector<std::int32_t> fvTargets;             // by case
  std::vector<std::vector<std::int32_t>> fvDealt;  // by repeat and case
};
