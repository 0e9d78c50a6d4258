// Steps from simulated records: B(S) = -(1/R) sum over R records of D(x,S), drawn from the model
// anew for each step. B of the current subset is common to all candidates; what a candidate adds is
// the sum of the logarithms of how much its factors change the records' joint probabilities.
#pragma once

#include <cstddef>
#include <vector>

#include "common/Workers.h"
#include "naivebayes/NBCancelInfo.h"
#include "naivebayes/model/NBModelView.h"
#include "naivebayes/model/NBNumerics.h"
#include "naivebayes/selection/MCRandom.h"
#include "naivebayes/selection/NBSteps.h"
#include "naivebayes/store/NBCodeBuffer.h"

class NBSimulatedSteps : public NBSteps {
 public:
  // `records` is R. All stay the caller's.
  NBSimulatedSteps(const NBModelView& model, int records, MCNaiveBayes::MCRandom& random,
                   NBCancelInfo& cancel, MCCommon::Workers& workers);

  void Enter(int input) override;
  [[nodiscard]] bool ComputeBJ(const std::vector<int>& candidates, std::vector<double>& out,
                               double& common) override;

  // Draws record i of the buffer: the target by the priors, each input by the target's column.
  static void Draw(const NBModelView& model, MCNaiveBayes::MCRandom& random, std::size_t i,
                   NBCodeBuffer& records);

 private:
  // Adds the terms of a run of drawn records; the workers share out the candidates.
  void AddTerms(const NBCodeBlock& codes, const std::vector<int>& candidates,
                std::vector<NBLogSum>& sums, NBLogSum& common) const;

  NBModelView fModel;
  int fNRecords;
  MCNaiveBayes::MCRandom& fRandom;
  NBCancelInfo& fCancel;
  MCCommon::Workers& fWorkers;
  std::vector<int> fvCurrent;  // ascending, which is the order that products are multiplied up in
  NBCodeBuffer fDrawn;
};
