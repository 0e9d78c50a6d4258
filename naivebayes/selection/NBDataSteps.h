// Steps from the training records: minus the average over records of w * log(1 + odds against the
// record's own category), which is the log-likelihood itself. Products of the current subset are
// kept as far as there is room, so a step costs one factor a record and candidate; the others are
// multiplied up anew.
#pragma once

#include <cstddef>
#include <vector>

#include "common/Workers.h"
#include "naivebayes/NBCancelInfo.h"
#include "naivebayes/model/NBModelView.h"
#include "naivebayes/selection/NBChunks.h"
#include "naivebayes/selection/NBOdds.h"
#include "naivebayes/selection/NBSteps.h"
#include "naivebayes/store/NBCodeStore.h"

class NBDataSteps : public NBSteps {
 public:
  static constexpr std::size_t kMostKeptBytes = std::size_t{1} << 28;

  // `totalWeight` is N; at most so many bytes of products are kept. All stay the caller's.
  NBDataSteps(const NBModelView& model, double totalWeight, NBCodeStore& records,
              NBCancelInfo& cancel, MCCommon::Workers& workers,
              std::size_t mostKept = kMostKeptBytes);

  void Enter(int input) override { fvCurrent.push_back(input); }
  [[nodiscard]] bool ComputeBJ(const std::vector<int>& candidates, std::vector<double>& out,
                               double& common) override;

  // The sums behind these terms: of w * log(1 + odds), for each candidate.
  [[nodiscard]] bool ComputeSums(const std::vector<int>& candidates, std::vector<double>& totals);

 private:
  // Adds the terms of a chunk to the sums of the candidates, which the workers share out.
  void AddTerms(const NBOdds& odds, const NBCodeBlock& codes, const std::vector<int>& candidates,
                std::vector<NBOddsSum>& sums) const;
  // The products of a chunk of the pass, with all that has entered.
  NBOdds& MakeOdds(std::size_t chunk, const NBCodeBlock& codes);

  NBModelView fModel;
  double fTotalWeight;
  NBCodeStore& fRecords;
  NBCancelInfo& fCancel;
  MCCommon::Workers& fWorkers;
  std::size_t fMostKept;
  NBChunks fChunks;
  std::vector<NBOddsRatios> fvRatios;  // by input; none where they do not serve
  std::vector<int> fvCurrent;          // in order of entry
  std::size_t fNKept = 0;              // of them are in the kept products
  std::vector<NBOdds> fvKept;          // by chunk, for the first of the pass
  NBOdds fAnew;
};
