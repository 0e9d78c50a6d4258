#include "backend/predselect/drivers/NaiveDataSourceIter.h"

#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MCAssert.h"
#include "common/MCRandom.h"
#include "host/cases/KOVA_InputCaseIterator.h"
#include "host/cases/UACaseValueReader.h"
#include "host/cases/UAInputAdapter.h"
#include "host/data/ITable.h"
#include "host/data/WholeTable.h"
#include "naivebayes/NaiveBayesSettings.h"

namespace {

constexpr const char* kSource = "backend/predselect/NaiveDataSourceIter";
constexpr double kTrainingMark = 1.0;

}  // namespace

NaiveDataSourceIter::NaiveDataSourceIter(UAInputAdapter& adapter, const PRSValidSpecs* specs,
                                         std::vector<bool>& trainTestFlags, bool needTrainData,
                                         bool needTestData)
    : UAProcDataSourceIter(&adapter, false),
      fpSpecs(specs),
      fpRandom(specs->GetNaiveSettingsPtr()->GetUserRNG()),
      fTrainSampProp(specs->GetMultiTrainSampPCT() * 0.01),
      fTrainSampVar(specs->GetMultiTrainSampVar()),
      fTrainTestFlags(trainTestFlags),
      fbNeedTrainData(needTrainData),
      fbNeedTestData(needTestData) {
  MCCommon::Assert(fbNeedTrainData || fbNeedTestData, "fbNeedTrainData || fbNeedTestData", kSource);
  if (IsFirstPass() && adapter.GetCaseNumber() == 0) {
    MCCommon::Assert(fTrainTestFlags.empty(), "fTrainTestFlags.size() == 0", kSource);
    fpDependReader = std::make_unique<UACaseValueReader>(
        adapter.GetDSIterator(), specs->GetDependVar(), !specs->IsMissingExclude());
  }
  MCCommon::Assert(fTrainSampProp < 1.0, "fTrainSampProp < 1.0", kSource);
}

NaiveDataSourceIter::~NaiveDataSourceIter() = default;

bool NaiveDataSourceIter::IsFirstPass() const { return GetAdapter()->GetDataPassCount() == 0; }

bool NaiveDataSourceIter::IsSplit() const { return fTrainSampVar >= 0 || fTrainSampProp > 0.0; }

bool NaiveDataSourceIter::PreprocessCase() {
  MCCommon::Assert(GetProcDS() != nullptr, "fpDSIter != 0", kSource);
  if (IsFirstPass()) {
    ++fNCases;
    DrawSample();
  }
  const bool isTraining = IsTrainSampleCase();
  if (IsFirstPass() && !HasDependentValue()) return false;
  if (IsFirstPass() && !isTraining) ++fNTestCases;
  return isTraining ? fbNeedTrainData : fbNeedTestData;
}

void NaiveDataSourceIter::FilterCases(std::size_t cases, std::vector<std::size_t>& accepted) {
  const bool needsAll = fbNeedTrainData && (fbNeedTestData || !IsSplit());
  if (needsAll && !IsFirstPass()) return AcceptAll(cases, accepted);
  for (std::size_t i = 0; i < cases; ++i) {
    StandAt(i);
    if (PreprocessCase()) accepted.push_back(i);
  }
}

std::size_t NaiveDataSourceIter::GetCase() const {
  return static_cast<std::size_t>(GetAdapter()->GetCaseNumber() - 1);
}

void NaiveDataSourceIter::DrawSample() {
  if (fTrainSampVar >= 0 || !(fTrainSampProp > 0.0)) return;
  MCCommon::Assert(GetCase() == fTrainTestFlags.size(),
                   "iCase >= 0 && iCase == fTrainTestFlags.size()", kSource);
  if (fTrainTestFlags.empty()) PassOverOtherParts();
  fTrainTestFlags.push_back(fTrainSampProp > fpRandom->GetRandom());
}

// A case has the number that it would draw if all parts were one table.
void NaiveDataSourceIter::PassOverOtherParts() {
  const MCHost::WholeTable* whole = GetAdapter()->GetTable().Whole();
  for (std::int64_t left = whole == nullptr ? 0 : whole->FirstCase(); left > 0; --left) {
    (void)fpRandom->GetRandom();
  }
}

bool NaiveDataSourceIter::IsTrainSampleCase() const {
  if (fTrainSampVar >= 0) return GetProcDS()->GetNumericValue(fTrainSampVar) == kTrainingMark;
  if (!IsSplit()) return true;
  const std::size_t iCase = GetCase();
  MCCommon::Assert(iCase < fTrainTestFlags.size(), "iCase >= 0 && iCase < fTrainTestFlags.size()",
                   kSource);
  return fTrainTestFlags[iCase];
}

void NaiveDataSourceIter::MarkTrainSample(std::vector<char>& flags) {
  flags.assign(GetBlockSize(), 1);
  for (std::size_t i = 0; IsSplit() && i < flags.size(); ++i) {
    StandAt(GetBlockPlaces()[i]);
    flags[i] = IsTrainSampleCase();
  }
}

bool NaiveDataSourceIter::HasDependentValue() const {
  if (!fpSpecs->IsMissingExclude()) return !fpDependReader->IsSysmis();
  return !fpDependReader->IsMissing();
}
