// Screens the predictors of one NAIVEBAYES run by the rules of SELECTPRED, when the command asks
// for it (SCREENING).
//
// The counts are made in the first pass over the data, which is read anyway, from the training
// cases: those with a valid target and a weight above zero. Predictors that are missing or constant
// in all cases of the table are not its concern: they cannot be used in any case.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "feature/MCFSCommon.h"

class FSSettings;
class IFSAlgorithm;
class NaiveDataSourceIter;
class PRSMultiRun;

class PRSMultiScreening {
 public:
  // The run is borrowed.
  explicit PRSMultiScreening(PRSMultiRun& run) : fRun(run) {}

  // Reads the stream to its end. REQUIRES: the specifications switch screening on.
  void ReadAll(NaiveDataSourceIter& train);

  // The same in parts: what a part counts, as a saved component, and what all have counted; false
  // for counts of other variables.
  std::string CountPart(NaiveDataSourceIter& train);
  [[nodiscard]] bool TakeCounts(const IFSAlgorithm& counts);
  // The outcome as numbers, for parts: variables and reasons in turn.
  std::vector<int> Outcome() const;
  void TakeOutcome(const std::vector<int>& outcome);

  // The first rule by which a predictor is left out, kNotDeleted for one that is kept or that
  // nobody has screened. By its index in the data.
  MCFSCommon::PredictorDelReason ReasonOf(int var) const;

  // Those that are left out by a rule, in the order of the data; whether any is by some rule.
  std::vector<int> LeftOutFor(MCFSCommon::PredictorDelReason reason) const;
  bool IsAnyLeftOut() const { return !fReasons.empty(); }

 private:
  bool IsUsable(int record) const;
  void Enter(const std::vector<int>& columns, const std::vector<int>& indices,
             const std::vector<std::vector<int>>& reasons);
  void Enter(int record, const std::vector<int>& reasons);

  PRSMultiRun& fRun;
  std::map<int, MCFSCommon::PredictorDelReason> fReasons;
};
