// Steps from the training records: B(S) = -(1/N) sum over records of w D(x,S). The products of the
// current subset are kept for all records, so a step costs one factor a record and candidate.
#pragma once

#include <cstddef>
#include <vector>

#include "naivebayes/NBCancelInfo.h"
#include "naivebayes/model/NBModelView.h"
#include "naivebayes/model/NBScaledProducts.h"
#include "naivebayes/selection/NBSteps.h"
#include "naivebayes/store/NBCodeStore.h"

class NBDataSteps : public NBSteps {
 public:
  // `totalWeight` is N. All stay the caller's.
  NBDataSteps(const NBModelView& model, double totalWeight, NBCodeStore& records,
              NBCancelInfo& cancel);

  void Enter(int input) override { fvEntered.push_back(input); }
  [[nodiscard]] bool ComputeBJ(const std::vector<int>& candidates,
                               std::vector<double>& out) override;

 private:
  // The products of a block of the pass, with all that entered since the last pass.
  const NBScaledProducts& UpdateProducts(std::size_t block, const NBCodeBlock& codes);

  NBModelView fModel;
  double fTotalWeight;
  NBCodeStore& fRecords;
  NBCancelInfo& fCancel;
  std::vector<int> fvEntered;                // since the last pass
  std::vector<NBScaledProducts> fvProducts;  // by block
};
