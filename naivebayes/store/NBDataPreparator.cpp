#include "naivebayes/store/NBDataPreparator.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <utility>

#include "common/MissingValue.h"
#include "naivebayes/NBLoops.h"
#include "naivebayes/encoders/NBBinningEncoder.h"
#include "naivebayes/encoders/NBRoundEncoder.h"
#include "naivebayes/model/NBayesInput.h"
#include "naivebayes/store/BinaryRecordIterator.h"
#include "naivebayes/store/NBCodeBlock.h"
#include "naivebayes/store/NBInternalAdapter.h"
#include "naivebayes/store/NBMemoryStore.h"
#include "naivebayes/store/NBRecordStore.h"
#include "naivebayes/store/NBTempFile.h"
#include "naivebayes/variables/NBContVar.h"
#include "naivebayes/variables/NBVarList.h"

using MCCommon::Record;
using MCNaive::MCStatus;

namespace {

std::int32_t EncodeCategories(const double* values, std::size_t cases, int categories,
                              std::int32_t* codes) {
  return NBLoops::InUse().fEncode(values, cases, categories - 0.5, codes);
}

}  // namespace

NBDataPreparator::NBDataPreparator(NBVarList& varList, bool usePossibleInputs, int /*nRecords*/,
                                   NBCancelInfo& cancel, MCCommon::Workers& workers)
    : fVarList(varList), fCancel(cancel), fWorkers(workers), fbPossibleInputs(usePossibleInputs) {
  UpdateInputInfo(usePossibleInputs);
}

NBDataPreparator::Input NBDataPreparator::DescribeInput(int varIndex) const {
  const INBVariable* variable = fVarList.GetVarAt(varIndex);
  return {varIndex, variable->GetNumberOfCategories(),
          dynamic_cast<const NBBinningEncoder*>(variable->GetEncoder())};
}

void NBDataPreparator::UpdateInputInfo(bool usePossibleInputs) {
  fbPossibleInputs = usePossibleInputs;
  fNOriginal = fVarList.Size();
  fTarget = fVarList.GetTargetIndex();
  fNTargetCats = fVarList.GetNOutputCats();
  fWeight = fVarList.GetWeightIndex();
  fpRounding =
      fWeight < 0 ? nullptr : dynamic_cast<const NBRoundEncoder*>(fVarList.GetEncoderAt(fWeight));
  fvInputs.clear();
  for (int i = 0; i < fVarList.Size(); ++i) {
    const INBVariable::VariableRole role = fVarList.GetVariableRole(i);
    if (role == INBVariable::kInput || (usePossibleInputs && role == INBVariable::kPossibleInput)) {
      fvInputs.push_back(DescribeInput(i));
    }
  }
}

void NBDataPreparator::UpdateNCats() {
  fNTargetCats = fVarList.GetNOutputCats();
  for (Input& input : fvInputs) input = DescribeInput(input.fVarIndex);
}

void NBDataPreparator::RemovePredictor(int input) { fvInputs.erase(fvInputs.begin() + input); }

void NBDataPreparator::RebinEncoders(const std::vector<NBayesInput>& inputs) {
  for (std::size_t j = 0; j < inputs.size(); ++j) {
    auto* variable = dynamic_cast<NBContVar*>(fVarList.GetVarAt(fvInputs[j].fVarIndex));
    if (variable == nullptr || variable->GetEncoder() == nullptr) continue;
    variable->ReplaceEncoder(variable->GetEncoder()->CreateRebinned(&inputs[j]));
  }
  UpdateNCats();
}

std::int32_t NBDataPreparator::EncodeInputs(int input, const double* values, std::size_t cases,
                                            std::int32_t* codes) const {
  const Input& info = fvInputs[input];
  if (info.fpBinning == nullptr) return EncodeCategories(values, cases, info.fNCats, codes);
  info.fpBinning->EncodeColumn(values, cases, codes);
  // Without cutpoints the encoder may answer 1, which no table has room for.
  if (info.fNCats < 2) std::replace(codes, codes + cases, 1, kOutOfRange);
  return LowestOf(codes, cases);
}

inline std::int32_t NBDataPreparator::EncodeInput(int input, double value) const {
  const Input& info = fvInputs[input];
  if (info.fpBinning == nullptr) return EncodeCategory(value, info.fNCats - 0.5);
  std::int32_t code;
  EncodeInputs(input, &value, 1, &code);
  return code;
}

std::int32_t NBDataPreparator::EncodeTargets(const double* values, std::size_t cases,
                                             std::int32_t* codes) const {
  return EncodeCategories(values, cases, fNTargetCats, codes);
}

std::int32_t NBDataPreparator::LowestOf(const std::int32_t* codes, std::size_t cases) {
  std::int32_t lowest = 0;
  for (std::size_t i = 0; i < cases; ++i) lowest = std::min(lowest, codes[i]);
  return lowest;
}

void NBDataPreparator::EncodeWeights(const double* values, std::size_t cases,
                                     double* weights) const {
  for (std::size_t i = 0; i < cases; ++i) weights[i] = fpRounding->Encode(values[i]).first;
}

double NBDataPreparator::WeightOf(const Record& original) const {
  return fpRounding == nullptr ? 1.0 : fpRounding->Encode(original[fWeight]).first;
}

MCStatus NBDataPreparator::MakeRangeStatus(bool warning, std::int64_t record, double value,
                                           int categories) const {
  MCStatus status(MCNaive::kCodeOutOfRange, warning);
  status.SetDiscreteDatum(0, record);
  // A value too large for an integer is named by the scale datum alone.
  status.SetDiscreteDatum(1, value < 1e18 ? std::llround(value) : -1);
  status.SetDiscreteDatum(2, categories - 1);
  status.SetScaleDatum(0, value);
  return status;
}

template <typename ValueOf, typename Out>
MCStatus NBDataPreparator::EncodeAll(ValueOf valueOf, Out& out, int first) const {
  MCStatus status;
  bool allMissing = true;
  for (int j = 0; j < GetInputSize(); ++j) {
    const double value = valueOf(j);
    const std::int32_t code = EncodeInput(j, value);
    if (code == kOutOfRange && status.IsOK()) {
      status = MakeRangeStatus(true, fNProcessed, value, fvInputs[j].fNCats);
    }
    allMissing = allMissing && code == INBEncoder::kMissingCode;
    out[first + j] = std::max(code, INBEncoder::kMissingCode);
  }
  return allMissing ? MCNaive::Warning(MCNaive::kAllInputsMissing) : status;
}

MCStatus NBDataPreparator::ProcessRecord(const Record& original, Record& processed,
                                         double& weight) {
  if (static_cast<int>(original.Size()) < fNOriginal) {
    return MCNaive::Error(MCNaive::kWrongRecordSize);
  }
  const std::int64_t record = fNProcessed++;
  weight = WeightOf(original);
  if (MCMV::IsMissing(weight)) return MCNaive::Error(MCNaive::kWeightMissing);
  const double value = original[fTarget];
  std::int32_t target;
  EncodeTargets(&value, 1, &target);
  if (target == INBEncoder::kMissingCode) return MCNaive::Error(MCNaive::kTargetMissing);
  if (target == kOutOfRange) return MakeRangeStatus(false, record, value, fNTargetCats);
  const auto size = static_cast<std::size_t>(GetProcessedSize());
  if (processed.Size() != size) processed = Record(size);
  processed[0] = target;
  if (fWeight >= 0) processed[1] = weight;
  return EncodeAll([&](int j) { return original[fvInputs[j].fVarIndex]; }, processed,
                   GetFirstInput());
}

MCStatus NBDataPreparator::ProcessInputs(const Record& original,
                                         std::vector<std::int32_t>& inputs) const {
  if (static_cast<int>(original.Size()) != GetInputSize()) {
    return MCNaive::Error(MCNaive::kWrongRecordSize);
  }
  inputs.resize(original.Size());
  return EncodeAll([&](int j) { return original[j]; }, inputs, 0);
}

MCStatus NBDataPreparator::ProcessInputsFromRecord(const Record& record,
                                                   std::vector<std::int32_t>& inputs,
                                                   double& weight) const {
  if (static_cast<int>(record.Size()) < fNOriginal) {
    return MCNaive::Error(MCNaive::kWrongRecordSize);
  }
  weight = WeightOf(record);
  inputs.resize(fvInputs.size());
  return EncodeAll([&](int j) { return record[fvInputs[j].fVarIndex]; }, inputs, 0);
}

void NBDataPreparator::StoreInMemory(NBInternalAdapter& adapter, NBStored& stored) const {
  std::vector<int> categories;
  for (const Input& input : fvInputs) categories.push_back(input.fNCats);
  auto store = std::make_unique<NBMemoryStore>(categories, fWeight >= 0);
  while (const NBCodeBlock* codes = adapter.NextCodes()) {
    store->Add(*codes, fWorkers);
    stored.fNRecords += static_cast<int>(codes->Cases());
  }
  stored.fpStore = std::move(store);
}

bool NBDataPreparator::StoreInFile(NBInternalAdapter& adapter, const std::string& tempDir,
                                   NBStored& stored) const {
  MCNaive::NBTempFile file;
  if (!file.Open(tempDir)) return false;
  while (const NBCodeBlock* codes = adapter.NextCodes()) {
    if (!file.Write(*codes, fWeight >= 0)) return false;
    stored.fNRecords += static_cast<int>(codes->Cases());
  }
  if (adapter.HasFailed()) return true;  // which says more than what the file makes of it
  if (!file.Flush()) return false;
  auto store =
      std::make_unique<NBRecordStore>(std::make_unique<MCNaive::BinaryRecordIterator>(
                                          file.Release(), GetProcessedSize(), file.GetName()),
                                      GetInputSize(), fWeight >= 0);
  const bool isReadable = !store->HasFailed();
  stored.fpStore = std::move(store);
  return isReadable;
}

MCStatus NBDataPreparator::ProcessSource(MCCommon::RecordIterator& source,
                                         const NBStoreRequest& request, NBStored& stored) {
  stored = {};
  NBInternalAdapter adapter(source, request.fNRecords, *this);
  if (request.fbInMemory) {
    StoreInMemory(adapter, stored);
  } else if (!StoreInFile(adapter, request.fTempDir, stored)) {
    return MCNaive::Error(MCNaive::kTemporaryFile);
  }
  adapter.CountRest();
  stored.fExcluded = {adapter.GetExcludedCount(), adapter.GetWExcludedCount()};
  if (adapter.GetStatus().IsError()) return adapter.GetStatus();
  return stored.fNRecords == 0 ? MCNaive::Error(MCNaive::kNoRecordsFound) : adapter.GetStatus();
}

void NBDataPreparator::Display(std::ostream& os) const {
  os << "Data preparator: original size " << fNOriginal << ", processed size " << GetProcessedSize()
     << ", target " << fTarget << ", weight " << fWeight << ", inputs";
  for (const Input& input : fvInputs) os << ' ' << input.fVarIndex;
  os << '\n';
}
