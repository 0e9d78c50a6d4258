#include "backend/predselect/drivers/PRSUniFactory.h"

#include "backend/predselect/command/PRSMessages.h"
#include "backend/predselect/drivers/PRSBinnedInformation.h"
#include "backend/predselect/drivers/PRSFiles.h"
#include "backend/predselect/drivers/PRSLeaks.h"
#include "backend/predselect/drivers/PRSProgress.h"
#include "backend/predselect/drivers/PRSSelection.h"
#include "backend/predselect/predsele.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MissingValue.h"
#include "common/state/StateBytes.h"
#include "feature/FSCriterion.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/FSWithinMemory.h"
#include "feature/IFSAlgorithm.h"
#include "feature/StatusMessages.h"
#include "host/cases/MCStopProcessor.h"
#include "host/cases/UAInputAdapter.h"
#include "host/cases/UAProcDataSourceIter.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/session/HostIOError.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"
#include "modelfiles/ComponentFile.h"
#include "modelfiles/StateDictionary.h"
#include "modelfiles/VariablesDocument.h"

using MCCommon::RecordIterator;

PRSUniFactory::PRSUniFactory(PRSValidSpecs* specs, ProcedureDataSource& source)
    : fpSpecs(specs),
      fpVarSpecs(specs->GetVarValidSpecsPtr()),
      fpSource(&source),
      fMessages(source),
      fpAdapter(std::make_unique<UAInputAdapter>(fpVarSpecs, source)),
      fParts(source.Table()),
      fPartRequest(PRSPartRequest()) {
  if (fParts.AreThere()) return;
  fpIterator = std::make_unique<UAProcDataSourceIter>(fpAdapter.get(), true);
  const int state = fpIterator->GetState();
  if (state == RecordIterator::kReadError) {
    fStatus = MCFeature::Error(MCFeature::kNoValidCases);
    fMessages.ReadFailed(fpIterator->GetFailText());
  }
  // A part may have none, and says so.
  if (state == RecordIterator::kNoRecords && !fPartRequest) {
    ReportNoCases();
    SaveEmptyPart();
  }
}

void PRSUniFactory::SaveEmptyPart() {
  if (!PRSIsStateWanted() || fpSpecs->GetFeatureSettingsPtr() == nullptr) return;
  FSFactory factory;
  fpAlgorithm = factory.CreateFSAlgorithm(fpSpecs->GetFeatureSettingsPtr());
  FSThrowWantOfMemory(factory.GetStatus());
  if (fpAlgorithm == nullptr) return;
  FSThrowWantOfMemory(fpAlgorithm->Accumulate(*fpIterator, -1));
  (void)SaveCounts();
}

void PRSUniFactory::ReportNoCases() {
  fStatus = MCFeature::Error(MCFeature::kNoValidCases);
  fMessages.NoValidCases();
}

PRSUniFactory::~PRSUniFactory() = default;

bool PRSUniFactory::RunFSComponent() {
  FSSettings* settings = fpSpecs->GetFeatureSettingsPtr();
  if (fStatus.IsError() || settings == nullptr) return false;
  FSFactory factory;
  fpAlgorithm = factory.CreateFSAlgorithm(settings);
  fStatus = factory.GetStatus();
  if (fStatus.IsError()) DisplayMessage(fStatus);
  if (fpAlgorithm == nullptr) return false;
  fpProgress = std::make_unique<PRSProgress>();
  settings->SetNSkippedRecordReports(PRSProgress::kRecords - 1);
  settings->SetNThreads(MCHost::CurrentSession().Threads());
  fpAlgorithm->SetProgressListener(fpProgress.get());
  if (fPartRequest) {
    (void)AnswerPart(*fPartRequest);
    return false;
  }
  fStatus = Count();
  if (fStatus.GetErrorCode() == MCFeature::kNoValidCases) return false;  // which was said
  // What was counted is saved before screening and ranking, so that it can be merged with other
  // parts of the data.
  const bool isSaved = !IsWholePass() || SaveCounts();
  if (fStatus.IsOK()) fStatus = fpAlgorithm->ScreenAndRank(fpSpecs->GetScreenStatusOn(), 0);
  if (!IsPassComplete() || !isSaved) return false;
  fMessages.WeightsLost(fpAdapter->GetLostWeights());
  if (!fStatus.IsOK()) DisplayMessage(fStatus);
  if (fStatus.IsError()) return false;
  if (IsTargetConstant()) {
    fStatus = MCFeature::Error(MCFeature::kTargetConstant);
    DisplayMessage(fStatus);
    return false;
  }
  WarnOfLeaks();
  if (display_feature_select) DisplayOutput();
  fStatus = fpAlgorithm->GetStatus();
  if (!FindEffects() || !WriteResultDocuments()) return false;
  HandOverFindings();
  return true;
}

MCFeature::MCStatus PRSUniFactory::Count() {
  return fParts.AreThere() ? CountInParts() : fpAlgorithm->Accumulate(*fpIterator, -1);
}

MCFeature::MCStatus PRSUniFactory::CountInParts() {
  try {
    const UAPartCounts counts = fParts.AskCounts(fParts.Request(PartRequest::kCount));
    fpAdapter->CountDelivered(static_cast<int>(counts.fNDelivered));
    fpAdapter->AddLostWeights(counts.fLost);
    if (counts.fNDelivered == 0) {
      ReportNoCases();
      return fStatus;
    }
    return fpAlgorithm->Merge(*fParts.ComponentOf(counts), nullptr);
  } catch (const MCHost::HostIOError& error) {
    return FailureInParts(error);
  }
}

MCFeature::MCStatus PRSUniFactory::FailureInParts(const MCHost::HostIOError& error) {
  if (fpSpecs->GetStopProcessorPtr()->IsCancel()) return MCFeature::Error(MCFeature::kCancelled);
  fMessages.ReadFailed(error.what());
  return MCFeature::Error(MCFeature::kNoValidCases);
}

bool PRSUniFactory::IsWholePass() const {
  const std::int64_t code = fStatus.GetErrorCode();
  return fStatus.IsOK() || code == MCFeature::kAllCasesExcluded ||
         code == MCFeature::kNoValidWeight;
}

bool PRSUniFactory::SaveCounts() const {
  return !PRSIsStateWanted() || PRSSaveState(*fpAlgorithm, Dictionary());
}

UAPartCounts PRSUniFactory::PartCounts(std::string component) const {
  UAPartCounts counts;
  counts.fNCases = counts.fNDelivered = fpAdapter->GetRecordCount();
  counts.fLost = fpAdapter->GetLostWeights();
  counts.fComponent = std::move(component);
  return counts;
}

bool PRSUniFactory::AnswerPart(const PartRequest& request) {
  std::string component;
  if (request.fKind == PartRequest::kBins) {
    const PRSBinnedInformation binned(*fpSpecs, *fpAlgorithm, *fpAdapter, fpIterator.get());
    fStatus = binned.CountPart(request.fNumbers, component);
  } else {
    fStatus = fpAlgorithm->Accumulate(*fpIterator, -1);
    const StateDictionary dictionary = Dictionary();
    component = ComponentBytes(*fpAlgorithm, &dictionary);
  }
  if (!IsPassComplete() || !IsWholePass()) return false;
  PRSAnswer(Piece::kCounts, StateBytes::Of(PartCounts(std::move(component))));
  return true;
}

void PRSUniFactory::HandOverFindings() const {
  MCHost::ISession& session = MCHost::CurrentSession();
  if (!session.WantsFindings()) return;
  const StateDictionary dictionary = Dictionary();
  PRSFindings findings;
  findings.fpFeature = fpAlgorithm.get();
  findings.fpDictionary = &dictionary;
  if (fpAlgorithm->ArePredictorsRanked()) {
    const PRSSelection selection = SelectPredictors(*fpSpecs, *fpAlgorithm);
    findings.fRanking = selection.fCriterion;
    findings.fNSelected = selection.fNSelected;
  }
  findings.fpBinned = &fBinned;
  findings.fTargetBins = fTargetBins;
  session.TakeFindings(findings);
}

bool PRSUniFactory::FindEffects() {
  if (!fpSpecs->GetPrintEffects() || !fpAlgorithm->ArePredictorsRanked()) return true;
  MCFeature::MCStatus status = PRSFindEffects(*fpSpecs, *fpAlgorithm, fEffects);
  if (!status.IsError()) {
    const PRSBinnedInformation binned(*fpSpecs, *fpAlgorithm, *fpAdapter, fpIterator.get());
    const bool isWanted = MCHost::CurrentSession().WantsFindings();
    fTargetBins = binned.BinsOf(fpSpecs->GetDependVar(), fpSpecs->GetDependCatVar());
    try {
      status = binned.AddTo(fEffects.fShown, isWanted ? &fBinned : nullptr);
    } catch (const MCHost::HostIOError& error) {
      fStatus = FailureInParts(error);
      return IsPassComplete() && !fStatus.IsError();
    }
  }
  if (status.IsError()) fStatus = status;
  if (!IsPassComplete()) return false;
  if (status.GetErrorCode() != MCFeature::kOutOfMemory) return true;
  DisplayMessage(status);
  return false;
}

StateDictionary PRSUniFactory::Dictionary() const {
  const auto describe = [this](int var, bool categorical) {
    const KOVA_Variable& variable = fpSource->GetVariable(var);
    StateVariable described{
        variable.GetName(), variable.GetLabel(), categorical, variable.IsNumeric(), {}, {}};
    const int nCategories = categorical ? fpAdapter->GetCatVarSize(var) : 0;
    for (int code = 0; code < nCategories; ++code) {
      int kovaVar = -1;
      const KOVA_Value value =
          fpAdapter->DecodeCatValue(fpVarSpecs->GetRecVarIndex(var), code, kovaVar);
      if (value.IsNumeric()) {
        described.fNumbers.push_back(value.GetNumber());
      } else {
        described.fStrings.push_back(value.GetString());
      }
    }
    return described;
  };
  const int weight = fpSpecs->GetKOVAWeightVar();
  StateDictionary dictionary{fpSpecs->GetScreenStatusOn(),
                             fpVarSpecs->IsUserMissingExcluded(),
                             weight < 0 ? "" : fpSource->GetVariable(weight).GetName(),
                             describe(fpSpecs->GetDependVar(), fpSpecs->GetDependCatVar()),
                             {}};
  for (int i = 0; i < fpSpecs->GetNPredictVars(); ++i) {
    const auto place = static_cast<std::size_t>(i);
    dictionary.fPredictors.push_back(
        describe((*fpSpecs->GetPredListPtr())[place], (*fpSpecs->GetPredCatVarListPtr())[place]));
  }
  return dictionary;
}

bool PRSUniFactory::WriteResultDocuments() const {
  if (!PRSAreResultsWanted()) return true;
  bool isWritten = PRSWriteResult("predictors.xml", [this](std::ostream& os) {
    return !fpAlgorithm->ExportAllXML(os).IsError();
  });
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (!fpAlgorithm->GetSettings()->GetCriterion(criterion.fCode)) continue;
    const auto write = [this, &criterion](std::ostream& os) {
      return !fpAlgorithm->ExportOneXML(os, criterion.fCode, 0).IsError();
    };
    isWritten =
        isWritten && PRSWriteResult(std::string("ranking-") + criterion.fFileStem + ".xml", write);
  }
  return isWritten && WriteVariables();
}

bool PRSUniFactory::WriteVariables() const {
  constexpr const char* kName = "variables.xml";
  std::string trouble;
  const bool isWritten = PRSWriteResult(kName, [&](std::ostream& os) {
    const int target = fpAlgorithm->GetSettings()->GetTargetPosition();
    trouble = WriteVariablesDocument(os, Dictionary(), target);
    return trouble.empty();
  });
  if (trouble.empty()) return isWritten;
  PRSFileError({MCHost::CurrentSession().ResultsPrefix() + kName, "", trouble});
  return false;
}

bool PRSUniFactory::IsPassComplete() {
  if (fpIterator != nullptr && fpIterator->GetFailReason() == RecordIterator::kReadError) {
    fMessages.ReadFailed(fpIterator->GetFailText());
    fStatus = MCFeature::Error(MCFeature::kNoValidCases);
    return false;
  }
  if (fStatus.GetErrorCode() != MCFeature::kCancelled || !fStatus.IsError()) return true;
  fMessages.Stopped(*fpSpecs->GetStopProcessorPtr(), fpAdapter->GetRecordCount());
  return false;
}

bool PRSUniFactory::IsTargetConstant() const {
  const int target = fpSpecs->GetDependVar();
  if (fpVarSpecs->GetKOVACatVar(target)) return fpAdapter->GetCatVarSize(target) <= 1;
  const double low = fpAdapter->GetContMinValue(target);
  const double high = fpAdapter->GetContMaxValue(target);
  return !MCMV::IsMissing(low) && !MCMV::IsMissing(high) && low == high;
}

void PRSUniFactory::WarnOfLeaks() const {
  PRSLeaks leaks(*fpSpecs, *fpSource, *fpAdapter, fpAdapter->GetRecordCount());
  const std::vector<int>& predictors = *fpSpecs->GetPredListPtr();
  for (std::size_t i = 0; i < predictors.size(); ++i) {
    leaks.Look(predictors[i], fpAlgorithm->GetLeakTraits(static_cast<int>(i)));
  }
  leaks.Warn();
}

void PRSUniFactory::DisplayMessage(const MCFeature::MCStatus& status) const {
  PRSMessages().EngineStatus(status, MCFeature::MessageOf(status), "");
}
