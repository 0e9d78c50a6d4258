// Training on records that lie in parts: a part counts and encodes its own, and whoever brings the
// counts together chooses and estimates as if all were here.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBTrainingPass.h"
#include "naivebayes/NBWithinMemory.h"
#include "naivebayes/parts/INBParts.h"
#include "naivebayes/parts/NBPartClassified.h"
#include "naivebayes/parts/NBPartCodes.h"
#include "naivebayes/parts/NBPartsOfSelection.h"
#include "naivebayes/store/NBMemoryStore.h"

using MCNaive::MCStatus;

namespace {

// More records than an int counts are as many as it can.
int Clamped(std::int64_t records) {
  return static_cast<int>(std::min<std::int64_t>(records, std::numeric_limits<int>::max()));
}

}  // namespace

NBPartCounts NBAlgorithm::PartCounts() const {
  NBPartCounts counts;
  counts.fNRecords = fNRecords;
  counts.fWeight = fTotalWeight;
  counts.fNExcluded = fExcluded.fNRecords;
  counts.fExcludedWeight = fExcluded.fWeight;
  for (int k = 0; k < fOutput.GetNCategories(); ++k) {
    counts.fTarget.push_back(fOutput.GetCount(k));
    counts.fRecords.push_back(fOutput.GetRecords(k));
  }
  for (const NBayesInput& input : fInputs) {
    counts.fCategories.push_back(input.GetNCategories());
    counts.fInputs.push_back(input.GetCounts());
  }
  return counts;
}

MCStatus NBAlgorithm::CountPart(const NBPartSource& source, NBPartCounts& counts,
                                std::unique_ptr<NBPartCodes>& codes) {
  return Changed(MCNaive::WithinMemory([&] { return DoCountPart(source, counts, codes); }));
}

MCStatus NBAlgorithm::DoCountPart(const NBPartSource& source, NBPartCounts& counts,
                                  std::unique_ptr<NBPartCodes>& codes) {
  if (MustStop()) return fStatus;
  fbBuilt = false;
  Prepare(source.fbSelecting, source.fNRecords);
  ResetAllCounts(true);
  const bool hasWeight = fVarList.GetWeightIndex() >= 0;
  codes =
      std::make_unique<NBPartCodes>(fOutput.GetNCategories(), PartCounts().fCategories, hasWeight);
  // No record is no error here.
  const auto isError = [](const MCStatus& status) {
    return status.IsError() && status.GetErrorCode() != MCNaive::kNoRecordsFound;
  };
  NBStored stored;
  const MCStatus loaded =
      fpPreparator->ProcessSource(source.fData, {source.fNRecords, true, {}}, stored);
  fExcluded = stored.fExcluded;
  if (isError(loaded)) return Raise(loaded);
  NBTrainingPass pass(fSettings, fCancel, fWorkers, true);
  const MCStatus counted = pass.Run(*stored.fpStore, hasWeight, fOutput, fInputs);
  if (isError(counted)) return Raise(counted);
  fNRecords = pass.GetCount();
  fTotalWeight = pass.GetWeight();
  if (!stored.fpStore->NewPass() || !codes->Add(*stored.fpStore, false)) {
    return Raise(MCNaive::Error(MCNaive::kTemporaryFile));
  }
  stored = {};
  if (source.fpTest != nullptr && source.fpTest->NewPass()) {
    const MCStatus tested = fpPreparator->ProcessSource(
        *source.fpTest, {std::numeric_limits<int>::max(), true, {}}, stored);
    if (isError(tested)) return Raise(tested);
    if (!codes->Add(*stored.fpStore, true)) return Raise(MCNaive::Error(MCNaive::kTemporaryFile));
  }
  counts = PartCounts();
  counts.fNTest = codes->GetNTest();
  if (MustStop()) return fStatus;
  return {};
}

MCStatus NBAlgorithm::TakeCounts(const NBPartCounts& counts) {
  if (!counts.HasShapeOf(PartCounts())) return MCNaive::Error(MCNaive::kModelsDiffer);
  fOutput.AddCounts(counts.fTarget, counts.fRecords);
  for (std::size_t j = 0; j < fInputs.size(); ++j) fInputs[j].AddCounts(counts.fInputs[j]);
  fNRecords = Clamped(counts.fNRecords);
  fTotalWeight = counts.fWeight;
  fExcluded = {Clamped(counts.fNExcluded), counts.fExcludedWeight};
  if (fNRecords == 0) return MCNaive::Error(MCNaive::kNoRecordsFound);
  if (fNRecords < 2) return MCNaive::Error(MCNaive::kTooFewRecords);
  FinishTraining();
  return {};
}

MCStatus NBAlgorithm::BuildModelInParts(INBParts& parts) {
  return Changed(MCNaive::WithinMemory([&] { return DoBuildInParts(parts); }));
}

MCStatus NBAlgorithm::DoBuildInParts(INBParts& parts) {
  if (MustStop()) return fStatus;
  fbBuilt = false;
  Prepare(false, 0);
  ResetAllCounts(true);
  NBPartCounts counts;
  if (!parts.Count(counts)) return Raise(MCNaive::Error(MCNaive::kSourceFailed));
  if (Raise(TakeCounts(counts)).IsError()) return fStatus;
  fpPreparator->RebinEncoders(fInputs);
  fbBuilt = !MustStop();
  return fStatus;
}

void NBAlgorithm::SelectInParts(const NBSelectionRequest& request, NBSelectionResult& result) {
  NBPartCounts counts;
  if (!request.fpParts->Count(counts)) {
    static_cast<void>(Raise(MCNaive::Error(MCNaive::kSourceFailed)));
    return;
  }
  if (Raise(TakeCounts(counts)).IsError()) return;
  NBPartsOfSelection parts(*request.fpParts, std::move(counts), fvKeptInputs);
  NBMemoryStore none({}, false);
  NBAttributeSelector selector(fInputs, fOutput, fVarList, fSettings, fCancel, fTotalWeight,
                               fWorkers);
  const MCStatus done = Dispatch(request, {none, fNRecords, true, true, &parts}, selector, result);
  if (Raise(done).IsError()) return;
  FinishSelection(request, request.fbTestInParts, selector, result);
}

void NBAlgorithm::AddClassified(const NBPartClassified& classified) {
  if (!classified.fTraining.empty()) classified.AddTo(true, StatsOf(true));
  if (!classified.fTest.empty()) classified.AddTo(false, StatsOf(false));
}
