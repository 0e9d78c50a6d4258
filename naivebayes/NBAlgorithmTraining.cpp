// Training: building a model, adding to it, and merging it with another one.
#include <algorithm>
#include <limits>
#include <numeric>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBTrainingPass.h"
#include "naivebayes/NBWithinMemory.h"
#include "naivebayes/store/NBInternalAdapter.h"
#include "naivebayes/variables/NBContVar.h"

using MCCommon::MultiPassRecordIter;
using MCNaive::MCStatus;

namespace {

// Adds to a number of records, which stays at the highest one.
void AddRecords(std::int32_t& records, std::int32_t more) {
  records += std::min(more, std::numeric_limits<std::int32_t>::max() - records);
}

}  // namespace

void NBAlgorithm::Prepare(bool usePossibleInputs, int nRecords) {
  if (fpPreparator && fpPreparator->UsesPossibleInputs() == usePossibleInputs) return;
  fpPreparator =
      std::make_unique<NBDataPreparator>(fVarList, usePossibleInputs, nRecords, fCancel, fWorkers);
  fInputs.clear();
  for (int j = 0; j < fpPreparator->GetInputSize(); ++j) {
    const int index = fpPreparator->GetInputColumn(j);
    fInputs.emplace_back(index, fVarList.GetVarAt(index), fOutput.GetNCategories());
  }
  fNInputs = fpPreparator->GetInputSize();
}

void NBAlgorithm::RestoreBins() {
  for (NBayesInput& input : fInputs) {
    auto* binned = dynamic_cast<NBContVar*>(input.GetVariable());
    if (binned != nullptr && binned->GetEncoder() != nullptr) {
      binned->SetupEncoder(std::vector<double>(binned->GetSetupCutpoints()));
    }
  }
  fpPreparator->UpdateNCats();
}

void NBAlgorithm::ResetAllCounts(bool totalsToo) {
  RestoreBins();
  fCalibration = {};
  fOutput.ResetCounts();
  for (NBayesInput& input : fInputs) input.ResetCounts();
  if (!totalsToo) return;
  fNRecords = 0;
  fTotalWeight = 0;
  fExcluded = {};
}

MCStatus NBAlgorithm::CountData(NBCodeSource& source, bool showProgress) {
  NBTrainingPass pass(fSettings, fCancel, fWorkers, showProgress);
  const MCStatus counted = pass.Run(source, fVarList.GetWeightIndex() >= 0, fOutput, fInputs);
  if (counted.IsError()) return counted;
  AddRecords(fNRecords, pass.GetCount());
  if (fNRecords < 2) return MCNaive::Error(MCNaive::kTooFewRecords);
  fTotalWeight += pass.GetWeight();
  FinishTraining();
  return {};
}

void NBAlgorithm::FinishTraining() {
  FinishCounts();
  fvLeakTraits.clear();
  const double unit = fTotalWeight / fNRecords;
  for (const NBayesInput& input : fInputs) fvLeakTraits.push_back(NBLeaks::TraitsOf(input, unit));
}

void NBAlgorithm::FinishCounts() {
  fOutput.ComputeProbabilities(fTotalWeight);
  fvKeptInputs.resize(fInputs.size());
  std::iota(fvKeptInputs.begin(), fvKeptInputs.end(), 0);
  // From the last to the first, so that the positions not yet visited stay valid.
  for (int j = static_cast<int>(fInputs.size()) - 1; j >= 0 && !fCancel.IsCancel(); --j) {
    if (fInputs[j].ComputeProbabilities(fTotalWeight) >= 2) continue;
    const int index = fInputs[j].GetVarIndex();
    if (fVarList.GetVariableRole(index) == INBVariable::kInput) {
      MCStatus dropped = MCNaive::Warning(MCNaive::kPredictorDropped);
      dropped.SetDiscreteDatum(0, index);
      static_cast<void>(Raise(dropped));
    }
    fVarList.SetVariableRole(index, INBVariable::kUnused);
    fpPreparator->RemovePredictor(j);
    fInputs.erase(fInputs.begin() + j);
    fvKeptInputs.erase(fvKeptInputs.begin() + j);
  }
  fNInputs = static_cast<int>(fInputs.size());
}

MCStatus NBAlgorithm::CountSource(MultiPassRecordIter& data, int nRecords, bool toTheEnd) {
  NBInternalAdapter adapter(data, nRecords, *fpPreparator);
  const MCStatus counted = CountData(adapter, true);
  if (toTheEnd && !counted.IsError()) adapter.CountRest();
  AddRecords(fExcluded.fNRecords, adapter.GetExcludedCount());
  fExcluded.fWeight += adapter.GetWExcludedCount();
  // A failure of the source itself says more than what the count made of it.
  static_cast<void>(Raise(adapter.GetStatus()));
  static_cast<void>(Raise(counted));
  return fStatus;
}

MCStatus NBAlgorithm::BuildModel(MultiPassRecordIter& data, int nRecords) {
  return Changed(MCNaive::WithinMemory([&] { return DoBuild(data, nRecords); }));
}

MCStatus NBAlgorithm::Update(MultiPassRecordIter& data, int nRecords) {
  return Changed(MCNaive::WithinMemory([&] { return DoUpdate(data, nRecords); }));
}

MCStatus NBAlgorithm::MergeModel(const INBAlgorithm* other, bool computeProbabilities) {
  return Changed(MCNaive::WithinMemory([&] { return DoMerge(other, computeProbabilities); }));
}

MCStatus NBAlgorithm::DoBuild(MultiPassRecordIter& data, int nRecords) {
  if (MustStop()) return fStatus;
  fbBuilt = false;
  if (nRecords < 1) return Raise(MCNaive::Error(MCNaive::kNoRecordsToProcess));
  Prepare(false, nRecords);
  ResetAllCounts(true);
  if (!CountSource(data, nRecords, true).IsError()) fpPreparator->RebinEncoders(fInputs);
  if (!fStatus.IsError() && !data.NewPass()) {
    static_cast<void>(Raise(MCNaive::Error(MCNaive::kSourceFailed)));
  }
  fbBuilt = !MustStop();
  return fStatus;
}

MCStatus NBAlgorithm::DoUpdate(MultiPassRecordIter& data, int nRecords) {
  if (MustStop()) return fStatus;
  if (nRecords < 1) return Raise(MCNaive::Error(MCNaive::kNoRecordsToProcess));
  fCalibration = {};
  Prepare(false, nRecords);
  static_cast<void>(CountSource(data, nRecords, false));
  fbBuilt = !MustStop();
  return fStatus;
}

MCStatus NBAlgorithm::DoMerge(const INBAlgorithm* other, bool computeProbabilities) {
  if (MustStop()) return fStatus;
  const auto* that = dynamic_cast<const NBAlgorithm*>(other);
  int differing = -1;
  if (that == nullptr || !that->fbBuilt || !fbBuilt || that == this ||
      !fVarList.CanMergeWith(that->fVarList, differing)) {
    MCStatus status = MCNaive::Error(MCNaive::kModelsDiffer);
    status.SetDiscreteDatum(0, differing);
    return status;
  }
  fCalibration = {};
  const std::vector<int> targets = fOutput.MergeTargetCounts(that->fOutput);
  for (auto* stats : {&fTrainStats, &fTestStats}) {
    if (*stats) (*stats)->Grow(fOutput.GetNCategories());
  }
  if (computeProbabilities) RestoreBins();
  for (std::size_t j = 0; j < fInputs.size(); ++j) {
    fInputs[j].MergePredictorCounts(that->fInputs[j], targets, fOutput.GetNCategories());
  }
  AddRecords(fNRecords, that->fNRecords);
  fTotalWeight += that->fTotalWeight;
  AddRecords(fExcluded.fNRecords, that->fExcluded.fNRecords);
  fExcluded.fWeight += that->fExcluded.fWeight;
  fpPreparator->UpdateNCats();
  if (!computeProbabilities) return fStatus;
  FinishCounts();
  if (!MustStop()) fpPreparator->RebinEncoders(fInputs);
  return fStatus;
}
