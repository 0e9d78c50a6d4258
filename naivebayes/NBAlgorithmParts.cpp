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
#include "naivebayes/store/NBInternalAdapter.h"
#include "naivebayes/store/NBMemoryStore.h"

using MCNaive::MCStatus;

namespace {

// More records than an int counts are as many as it can.
int Clamped(std::int64_t records) {
  return static_cast<int>(std::min<std::int64_t>(records, std::numeric_limits<int>::max()));
}

// No record is no error here.
MCStatus UnlessNone(const MCStatus& status) {
  return status.GetErrorCode() == MCNaive::kNoRecordsFound ? MCStatus() : status;
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
  const MCStatus counted = source.fbKept ? CountAndKeep(source, codes) : CountOnly(source);
  if (counted.IsError()) return Raise(counted);
  counts = PartCounts();
  if (codes != nullptr) counts.fNTest = codes->GetNTest();
  if (MustStop()) return fStatus;
  return {};
}

MCStatus NBAlgorithm::CountRecords(NBCodeSource& records) {
  NBTrainingPass pass(fSettings, fCancel, fWorkers, true);
  const MCStatus counted = pass.Run(records, fVarList.GetWeightIndex() >= 0, fOutput, fInputs);
  fNRecords = pass.GetCount();
  fTotalWeight = pass.GetWeight();
  return UnlessNone(counted);
}

MCStatus NBAlgorithm::CountOnly(const NBPartSource& source) {
  NBInternalAdapter adapter(source.fData, source.fNRecords, *fpPreparator);
  const MCStatus counted = CountRecords(adapter);
  if (!counted.IsError()) adapter.CountRest();
  fExcluded = {adapter.GetExcludedCount(), adapter.GetWExcludedCount()};
  // A failure of the source itself says more than what the count made of it.
  return adapter.GetStatus().IsError() ? adapter.GetStatus() : counted;
}

MCStatus NBAlgorithm::CountAndKeep(const NBPartSource& source,
                                   std::unique_ptr<NBPartCodes>& codes) {
  codes = std::make_unique<NBPartCodes>(fOutput.GetNCategories(), PartCounts().fCategories,
                                        fVarList.GetWeightIndex() >= 0);
  NBStored stored;
  const MCStatus loaded =
      UnlessNone(fpPreparator->ProcessSource(source.fData, {source.fNRecords, true, {}}, stored));
  fExcluded = stored.fExcluded;
  if (loaded.IsError()) return loaded;
  const MCStatus counted = CountRecords(*stored.fpStore);
  if (counted.IsError()) return counted;
  if (!stored.fpStore->NewPass() || !codes->Add(*stored.fpStore, false)) {
    return MCNaive::Error(MCNaive::kTemporaryFile);
  }
  stored = {};
  if (source.fpTest == nullptr || !source.fpTest->NewPass()) return {};
  const MCStatus tested = UnlessNone(fpPreparator->ProcessSource(
      *source.fpTest, {std::numeric_limits<int>::max(), true, {}}, stored));
  if (tested.IsError()) return tested;
  return codes->Add(*stored.fpStore, true) ? MCStatus() : MCNaive::Error(MCNaive::kTemporaryFile);
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
