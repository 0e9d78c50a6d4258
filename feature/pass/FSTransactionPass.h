// A data pass over transactions: case identifier, item (predictor index), value, target.
//
// The items of a case increase; predictors without an item are missing. Every case has weight 1. A
// case with a missing target is excluded. Cancel is polled as in a pass over records.
#pragma once

#include <cstdint>

#include "common/RecordIterator.h"
#include "feature/FSCancelInfo.h"
#include "feature/MCStatus.h"

class FSCounts;

class FSTransactionPass {
 public:
  // Starts nothing. Borrowed.
  FSTransactionPass(FSCounts& counts, bool catTarget);

  // Takes all that comes. Errors 80007, 80008 end it there.
  MCFeature::MCStatus Run(MCCommon::RecordIterator& source, FSCancelInfo& cancel);

 private:
  MCFeature::MCStatus Take(double caseID, double itemValue, double value, double target);
  void StartCase(double caseID, double target);
  void EndCase();
  void SkipTo(int item);
  void TakeItem(int item, double value);
  std::int64_t CaseNumber() const;
  MCFeature::MCStatus Problem(MCFeature::StatusCode code, std::int64_t first,
                              std::int64_t second) const;

  FSCounts& fCounts;
  bool fbCatTarget;
  int fNPredictors;
  bool fbInCase = false;
  double fCaseID = 0.0;
  double fTarget = 0.0;
  bool fbTargetValid = false;
  bool fbAnyValid = false;
  int fLastItem = -1;
};
