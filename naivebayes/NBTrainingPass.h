// One pass of training: counts the cases of a source into a model's tables, and reports how far it
// is. What it read stays counted also when it ends early.
#pragma once

#include <cstdint>
#include <vector>

#include "common/Workers.h"
#include "naivebayes/MCStatus.h"
#include "naivebayes/NBCancelInfo.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/model/NBNumerics.h"
#include "naivebayes/model/NBayesInput.h"
#include "naivebayes/model/NBayesOutput.h"
#include "naivebayes/store/NBCodeSource.h"

class NBTrainingPass {
 public:
  // Reports go to the settings' listener; the workers share out the inputs of a block. All stay the
  // caller's.
  NBTrainingPass(const NaiveBayesSettings& settings, NBCancelInfo& cancel,
                 MCCommon::Workers& workers, bool showProgress);

  // Counts all cases; `hasWeight` says whether their weights may differ from 1.
  // REQUIRES: the source has the codes of these inputs, in order.
  // Errors: 1 cancelled, 70001 the source failed, 70011 it had no case.
  MCNaive::MCStatus Run(NBCodeSource& source, bool hasWeight, NBayesOutput& output,
                        std::vector<NBayesInput>& inputs);

  int GetCount() const { return fNRead; }
  double GetWeight() const { return fWeight.Total(); }

 private:
  // Reads the cases of a block one by one, as far as no cancel comes; returns how many.
  std::size_t ReadCases(const NBCodeBlock& codes);
  void ReportProgress() const;
  // Counts so many cases of a block into the inputs' tables.
  void CountInputs(const NBCodeBlock& codes, std::size_t cases, bool hasWeight,
                   std::vector<NBayesInput>& inputs);

  const NaiveBayesSettings& fSettings;
  NBCancelInfo& fCancel;
  MCCommon::Workers& fWorkers;
  bool fbShowProgress;
  std::int64_t fStart;  // clock ticks
  int fNRead = 0;
  NBSum fWeight;
};
