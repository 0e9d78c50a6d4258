#include "backend/predselect/specifications/PRSValidSpecs.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "common/MCAssert.h"
#include "feature/FSSettings.h"
#include "host/cases/MCStopProcessor.h"
#include "host/cases/UAUniformRandom.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/session/HostFunctions.h"
#include "naivebayes/NaiveBayesSettings.h"

namespace {

constexpr const char* kSource = "backend/predselect/PRSValidSpecs";
constexpr double kMostRecords = 0x1p62;
constexpr double kKilobyte = 1024.0;

double BytesPerRecord(const UAVarValidSpecs& specs) { return 8.0 * specs.GetNRecordVars() + 16.0; }

int SizeOf(const PRSValidSpecs::IntList& list) {
  return list == nullptr ? 0 : static_cast<int>(list->size());
}

void AssertSameSize(const PRSValidSpecs::IntList& variables, const PRSValidSpecs::BoolList& flags) {
  const std::size_t nPreds = variables == nullptr ? 0 : variables->size();
  const std::size_t nFlags = flags == nullptr ? 0 : flags->size();
  MCCommon::Assert(nPreds == nFlags, "nPreds == nFlags", kSource);
}

}  // namespace

PRSValidSpecs::PRSValidSpecs() = default;
PRSValidSpecs::~PRSValidSpecs() = default;

void PRSValidSpecs::SetDependVar(int index, bool categorical) {
  fDependVar = index;
  fbDependCatVar = categorical;
}

void PRSValidSpecs::SetPredictList(IntList predictors, BoolList categorical) {
  AssertSameSize(predictors, categorical);
  fpPredictList = std::move(predictors);
  fbpPredCatVarList = std::move(categorical);
}

int PRSValidSpecs::GetNPredictVars() const { return SizeOf(fpPredictList); }

void PRSValidSpecs::SetForcePredList(IntList predictors, BoolList categorical) {
  AssertSameSize(predictors, categorical);
  fpForcePredList = std::move(predictors);
  fbpForceCatVarList = std::move(categorical);
}

int PRSValidSpecs::GetNForcePredVars() const { return SizeOf(fpForcePredList); }

void PRSValidSpecs::SetExceptList(IntList variables) { fpExceptList = std::move(variables); }

int PRSValidSpecs::GetNExceptVars() const { return SizeOf(fpExceptList); }

void PRSValidSpecs::SetScreenOptions(bool on, double pctMissing, double pctEqual, double pctUnequal,
                                     double coeffVariate, double stdDev) {
  PRSScreening& screening = fOptions.fScreening;
  screening.fbOn = on;
  screening.fPctMissing.fValue = pctMissing;
  screening.fPctEqual.fValue = pctEqual;
  screening.fPctUnequal.fValue = pctUnequal;
  screening.fCoeffVariate.fValue = coeffVariate;
  screening.fStdDev.fValue = stdDev;
}

void PRSValidSpecs::SetStringScreenOptions(std::string pctMissing, std::string pctEqual,
                                           std::string pctUnequal, std::string coeffVariate,
                                           std::string stdDev) {
  PRSScreening& screening = fOptions.fScreening;
  screening.fPctMissing.fTyped = std::move(pctMissing);
  screening.fPctEqual.fTyped = std::move(pctEqual);
  screening.fPctUnequal.fTyped = std::move(pctUnequal);
  screening.fCoeffVariate.fTyped = std::move(coeffVariate);
  screening.fStdDev.fTyped = std::move(stdDev);
}

void PRSValidSpecs::SetUniCriteria(int size, MCFSCommon::RankCriteria criterion, double pCutOff,
                                   int showUnselect, double timer) {
  fOptions.fUniCriteria.fSize = size;
  fOptions.fUniCriteria.fCriterion = criterion;
  fOptions.fUniCriteria.fPCutOff = pCutOff;
  fOptions.fCommonCriteria = {showUnselect, timer};
}

int PRSValidSpecs::GetUniSize() const {
  if (GetUniSizeAuto() && fpFeatureSettings != nullptr && fpPredictList != nullptr) {
    return fpFeatureSettings->GetNBestPredictors(GetNPredictVars());
  }
  return fOptions.fUniCriteria.fSize;
}

void PRSValidSpecs::SetMultiCriteria(int bins, double memAllocate, int showUnselect, double timer) {
  fOptions.fMultiCriteria = {bins, memAllocate, 0.0};
  fOptions.fCommonCriteria = {showUnselect, timer};
}

double PRSValidSpecs::GetMemoryToHold(int cases) const {
  return std::max(std::ceil(cases * BytesPerRecord(*fpVarValidSpecs) / kKilobyte),
                  PRSMultiCriteria::kLeastMemory);
}

void PRSValidSpecs::TakeMemoryFor(int cases) {
  PRSMultiCriteria& criteria = fOptions.fMultiCriteria;
  if (!(criteria.fMemOffered > 0.0)) return;
  criteria.fMemAllocate =
      std::min(criteria.fMemOffered, std::max(criteria.fMemAllocate, GetMemoryToHold(cases)));
  SettleRecordsInMemory();
}

void PRSValidSpecs::SetMultiTrainSampInfo(double percent, int variable) {
  fOptions.fSample = {percent, variable};
}

void PRSValidSpecs::SetMultiSubsetInfo(int maxSize, bool pseudoBIC, bool testData, int exactSize) {
  fOptions.fSubset = {maxSize, pseudoBIC, testData, exactSize};
}

void PRSValidSpecs::SetPredProbRoot(KovaVarName root, int number) {
  fOptions.fSave.fPredProbRoot = std::move(root);
  fOptions.fSave.fPredProbNumber = number;
}

void PRSValidSpecs::SetPredValVariable(KovaVarName name, bool suffix) {
  fOptions.fSave.fPredVal = std::move(name);
  fOptions.fSave.fbPredValSuffix = suffix;
}

bool PRSValidSpecs::AddFeaturePrintOption(FeaturePrintOption option) {
  const bool isNew = std::find(fFeaturePrintOptions.begin(), fFeaturePrintOptions.end(), option) ==
                     fFeaturePrintOptions.end();
  if (isNew) fFeaturePrintOptions.push_back(option);
  return isNew;
}

void PRSValidSpecs::SetPrintInfo(bool cps, bool exclude, bool summary, bool select, bool classify,
                                 bool uncert) {
  fOptions.fPrint = {cps, exclude, summary, select, classify, uncert, false};
}

void PRSValidSpecs::CompleteSpecs() {
  const bool hasPredictors = fpPredictList != nullptr;
  MCCommon::Assert(hasPredictors == (fbpPredCatVarList != nullptr),
                   "fpPredictList != 0 && fbpPredCatVarList != 0", kSource);
  MCCommon::Assert(!hasPredictors || fpPredictList->size() == fbpPredCatVarList->size(),
                   "fpPredictList->size() == fbpPredCatVarList->size()", kSource);
  fpVarValidSpecs = std::make_unique<UAVarValidSpecs>(true, IsMissingExclude(), true);
  fpStopProcessor = std::make_unique<MCStopProcessor>(60.0 * GetTimer());
  const int targetPosition = fpVarValidSpecs->AddVariable(fDependVar, fbDependCatVar);
  const int weightPosition = fKOVAWeightVar >= 0 ? fpVarValidSpecs->SetWeightVar() : -1;
  if (hasPredictors) {
    std::vector<int> positions;
    fpVarValidSpecs->AddVariables(*fpPredictList, *fbpPredCatVarList, positions);
  }
  if (fbUniVariable) {
    CompleteFeatureSettings(targetPosition, weightPosition);
  } else {
    CompleteNaiveSettings();
  }
}

void PRSValidSpecs::CompleteFeatureSettings(int targetPosition, int weightPosition) {
  if (fbpPredCatVarList != nullptr) {
    fpFeatureSettings = std::make_unique<FSSettings>(*fbpPredCatVarList, fbDependCatVar);
  } else {
    fpFeatureSettings = std::make_unique<FSSettings>();
    fpFeatureSettings->SetTargetType(fbDependCatVar);
  }
  fpFeatureSettings->SetTargetPosition(targetPosition);
  if (weightPosition >= 0) fpFeatureSettings->SetWeightPosition(weightPosition);
  if (GetScreenStatusOn()) SetThresholds(*fpFeatureSettings);
  // A criterion that does not suit the data is refused, and the data's own criteria stay.
  (void)fpFeatureSettings->SetCriterion(GetUniRank(), true);
  for (const FeaturePrintOption option : fFeaturePrintOptions) {
    (void)fpFeatureSettings->SetCriterion(option, true);
  }
  fpFeatureSettings->SetExactPValues(fOptions.fUniCriteria.fbExactPValues);
  fpFeatureSettings->SetCancelPointer(fpStopProcessor.get());
}

void PRSValidSpecs::SettleRecordsInMemory() {
  fpNaiveSettings->SetMaxRecordsInMemory(static_cast<long>(std::min(
      kKilobyte * GetMultiMemAllocate() / BytesPerRecord(*fpVarValidSpecs), kMostRecords)));
}

void PRSValidSpecs::SetThresholds(FSSettings& settings) const {
  settings.SetMaxPctMiss(GetScreenPCTMissing());
  settings.SetMaxPctSingle(GetScreenPCTEqual());
  settings.SetMaxNCatAsPct(GetScreenPCTUnequal());
  settings.SetMinVariation(GetScreenCoeffVariate());
  settings.SetMinStddev(GetScreenStdDev());
}

void PRSValidSpecs::CompleteNaiveSettings() {
  fpNaiveSettings = std::make_unique<NaiveBayesSettings>();
  fpRandom = std::make_unique<UAUniformRandom>();
  if (fpForcePredList != nullptr && fbpForceCatVarList != nullptr) {
    std::vector<int> positions;
    fpVarValidSpecs->AddVariables(*fpForcePredList, *fbpForceCatVarList, positions);
  }
  MCCommon::Assert(GetMultiMemAllocate() >= PRSMultiCriteria::kLeastMemory,
                   "fMultiMemAllocate >= 4.0", kSource);
  SettleRecordsInMemory();
  fpNaiveSettings->SetUserRNG(fpRandom.get());
  fpNaiveSettings->SetCancelPointer(fpStopProcessor.get());
  fpNaiveSettings->SetTempDir(GetKovaTempPath() + "/");
}
