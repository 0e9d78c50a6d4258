#include "backend/predselect/drivers/NaiveDataSourceIter.h"

#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MCAssert.h"
#include "common/MCRandom.h"
#include "host/cases/KOVA_InputCaseIterator.h"
#include "host/cases/UACaseValueReader.h"
#include "host/cases/UAInputAdapter.h"
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

bool NaiveDataSourceIter::PreprocessCase() {
  MCCommon::Assert(GetProcDS() != nullptr, "fpDSIter != 0", kSource);
  fbTrainCase = DecideSample();
  if (IsFirstPass() && !HasDependentValue()) return false;
  if (IsFirstPass() && !fbTrainCase) ++fNTestCases;
  return fbTrainCase ? fbNeedTrainData : fbNeedTestData;
}

bool NaiveDataSourceIter::DecideSample() {
  if (fTrainSampVar >= 0) return GetProcDS()->GetNumericValue(fTrainSampVar) == kTrainingMark;
  if (!(fTrainSampProp > 0.0)) return true;
  const auto iCase = static_cast<std::size_t>(GetAdapter()->GetCaseNumber() - 1);
  if (IsFirstPass()) {
    MCCommon::Assert(iCase == fTrainTestFlags.size(),
                     "iCase >= 0 && iCase == fTrainTestFlags.size()", kSource);
    fTrainTestFlags.push_back(fTrainSampProp > fpRandom->GetRandom());
  }
  MCCommon::Assert(iCase < fTrainTestFlags.size(), "iCase >= 0 && iCase < fTrainTestFlags.size()",
                   kSource);
  return fTrainTestFlags[iCase];
}

bool NaiveDataSourceIter::HasDependentValue() const {
  if (!fpSpecs->IsMissingExclude()) return !fpDependReader->IsSysmis();
  return !fpDependReader->GetValue().IsMissing();
}
