#include "feature/pass/FSTransactionPass.h"

#include <cmath>

#include "common/MissingValue.h"
#include "feature/accumulators/FSCaseBlock.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/pass/FSCounts.h"

using MCFeature::MCStatus;

FSTransactionPass::FSTransactionPass(FSCounts& counts, bool catTarget)
    : fCounts(counts), fbCatTarget(catTarget), fNPredictors(static_cast<int>(counts.Size())) {}

MCStatus FSTransactionPass::Run(MCCommon::RecordIterator& source, FSCancelInfo& cancel) {
  constexpr std::size_t kColumns = 4;
  while (!cancel.IsCancel()) {
    const MCCommon::RecordBlock& block = source.NextBlock(FSCasesBetweenPolls(fCounts.Size()));
    if (block.Cases() == 0 || block.Columns() < kColumns || fCounts.CasesLeft(-1) < 2) break;
    // An open case is still to be counted, so the last number stays free for it.
    for (std::size_t i = 0; i < block.Cases() && fCounts.CasesLeft(-1) >= 2; ++i) {
      const MCStatus status =
          Take(block.Column(0)[i], block.Column(1)[i], block.Column(2)[i], block.Column(3)[i]);
      if (status.IsError()) return status;
    }
  }
  EndCase();
  return {};
}

MCStatus FSTransactionPass::Take(double caseID, double itemValue, double value, double target) {
  if (!fbInCase || caseID != fCaseID) {
    EndCase();
    StartCase(caseID, target);
  }
  const int item = MCMV::IsMissing(itemValue) ? -1 : FSCategory(itemValue + 0.5);
  if (item < 0 || item >= fNPredictors) return Problem(MCFeature::kItemRange, item, fNPredictors);
  if (item <= fLastItem) return Problem(MCFeature::kItemOrder, fLastItem, item);
  if (fbTargetValid) TakeItem(item, value);
  fLastItem = item;
  return {};
}

void FSTransactionPass::StartCase(double caseID, double target) {
  fbInCase = true;
  fCaseID = caseID;
  fTarget = target;
  fbTargetValid = fbCatTarget ? FSIsValidCategory(target) : FSIsValidNumber(target);
  fbAnyValid = false;
  fLastItem = -1;
}

// The predictors that the current case has no item for are missing in it.
void FSTransactionPass::EndCase() {
  if (!fbInCase) return;
  if (fbTargetValid) SkipTo(fNPredictors);
  if (fbTargetValid && fbAnyValid) {
    fCounts.CountValid(1.0, fTarget, true);
  } else {
    fCounts.CountExcluded(1.0);
  }
  fbInCase = false;
}

void FSTransactionPass::SkipTo(int item) {
  for (int i = fLastItem + 1; i < item; ++i) {
    IFSPredTargetAccum* accumulator = fCounts.At(static_cast<std::size_t>(i));
    if (accumulator != nullptr) accumulator->AddMissing(1.0);
  }
}

void FSTransactionPass::TakeItem(int item, double value) {
  SkipTo(item);
  IFSPredTargetAccum* accumulator = fCounts.At(static_cast<std::size_t>(item));
  if (accumulator == nullptr) return;
  const bool valid =
      accumulator->IsCategorical() ? FSIsValidCategory(value) : FSIsValidNumber(value);
  if (valid) {
    accumulator->AddCase(value, fTarget, 1.0, true);
    fbAnyValid = true;
  } else {
    accumulator->AddMissing(1.0);
  }
}

// The case identifier as a whole number; 0 for one that is none.
std::int64_t FSTransactionPass::CaseNumber() const {
  constexpr double kMost = 9007199254740992.0;  // whole numbers beyond have gaps
  return std::fabs(fCaseID) <= kMost ? static_cast<std::int64_t>(fCaseID) : 0;
}

MCStatus FSTransactionPass::Problem(MCFeature::StatusCode code, std::int64_t first,
                                    std::int64_t second) const {
  MCStatus status = MCFeature::Error(code);
  status.SetDiscreteDatum(0, first);
  status.SetDiscreteDatum(1, second);
  status.SetDiscreteDatum(2, CaseNumber());
  return status;
}
