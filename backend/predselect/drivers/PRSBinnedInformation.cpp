#include "backend/predselect/drivers/PRSBinnedInformation.h"

#include <memory>
#include <optional>
#include <utility>

#include "backend/predselect/drivers/PRSBinnedCases.h"
#include "backend/predselect/drivers/PRSParts.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MissingValue.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/IFSAlgorithm.h"
#include "host/cases/UAInputAdapter.h"
#include "host/cases/UAProcDataSourceIter.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/session/HostIOError.h"
#include "modelfiles/ComponentFile.h"

PRSBinnedInformation::PRSBinnedInformation(const PRSValidSpecs& specs,
                                           const IFSAlgorithm& algorithm,
                                           const UAInputAdapter& adapter,
                                           UAProcDataSourceIter* source)
    : fSpecs(specs), fAlgorithm(algorithm), fAdapter(adapter), fpSource(source) {}

FSSettings PRSBinnedInformation::SettingsFor(const std::vector<int>& predictors) const {
  const FSSettings& settings = *fAlgorithm.GetSettings();
  FSSettings binned(std::vector<bool>(predictors.size(), true), true);
  binned.SetTargetPosition(0);
  if (settings.GetWeightPosition() >= 0) binned.SetWeightPosition(1);
  binned.SetWeightToFreq(settings.GetWeightToFreq());
  binned.SetCancelPointer(settings.GetCancelPointer());
  binned.SetProgressListener(settings.GetProgressListener());
  binned.SetNSkippedRecordReports(settings.GetNSkippedRecordReports());
  binned.SetNThreads(settings.GetNThreads());
  return binned;
}

MCFeature::MCStatus PRSBinnedInformation::Count(const std::vector<int>& predictors,
                                                IFSAlgorithm& counts) const {
  const FSSettings& settings = *fAlgorithm.GetSettings();
  PRSBinnedCases cases(*fpSource);
  AddColumn(cases, fSpecs.GetDependVar(), settings.IsCatTarget());
  const int weight = settings.GetWeightPosition();
  if (weight >= 0) cases.AddColumn(static_cast<std::size_t>(weight), std::nullopt);
  for (const int predictor : predictors) {
    AddColumn(cases, (*fSpecs.GetPredListPtr())[static_cast<std::size_t>(predictor)],
              settings.IsCatPredictor(predictor));
  }
  // A stream that cannot be read again says why itself.
  if (!fpSource->NewPass()) return {};
  return counts.Accumulate(cases, -1);
}

MCFeature::MCStatus PRSBinnedInformation::CountInParts(const std::vector<int>& predictors,
                                                       IFSAlgorithm& counts) const {
  const PRSParts parts(fAdapter.GetTable());
  const UAPartCounts answer = parts.AskCounts(parts.Request(PartRequest::kBins, predictors));
  return counts.Merge(*parts.ComponentOf(answer), nullptr);
}

MCFeature::MCStatus PRSBinnedInformation::CountPart(const std::vector<int>& predictors,
                                                    std::string& component) const {
  const auto nPredictors = static_cast<int>(fSpecs.GetPredListPtr()->size());
  for (const int predictor : predictors) {
    if (predictor < 0 || predictor >= nPredictors) {
      return MCFeature::Error(MCFeature::kBadBinaryState);
    }
  }
  FSSettings settings = SettingsFor(predictors);
  FSFactory factory;
  const std::unique_ptr<IFSAlgorithm> counts = factory.CreateFSAlgorithm(&settings);
  if (counts == nullptr) return factory.GetStatus();
  const MCFeature::MCStatus status = Count(predictors, *counts);
  component = ComponentBytes(*counts, nullptr);
  return status;
}

MCFeature::MCStatus PRSBinnedInformation::AddTo(std::vector<PRSEffect>& effects,
                                                std::vector<PRSBinnedProfile>* profiles) const {
  std::vector<PRSEffect*> lacking;
  std::vector<int> predictors;
  for (PRSEffect& effect : effects) {
    if (!MCMV::IsMissing(effect.fEffect.fInformation)) continue;
    lacking.push_back(&effect);
    predictors.push_back(effect.fPredictor);
  }
  if (lacking.empty()) return {};
  FSSettings settings = SettingsFor(predictors);
  FSFactory factory;
  const std::unique_ptr<IFSAlgorithm> counts = factory.CreateFSAlgorithm(&settings);
  if (counts == nullptr) return factory.GetStatus();
  const MCFeature::MCStatus status =
      fpSource == nullptr ? CountInParts(predictors, *counts) : Count(predictors, *counts);
  if (fpSource != nullptr && fpSource->GetFailure() != nullptr) return status;
  for (std::size_t i = 0; i < lacking.size() && !status.IsError(); ++i) {
    const int position = static_cast<int>(i);
    const int predictor = lacking[i]->fPredictor;
    lacking[i]->fEffect.fInformation =
        counts->GetPredictorEffect(MCFSCommon::kPearson, position).fInformation;
    if (profiles == nullptr) continue;
    const int var = (*fSpecs.GetPredListPtr())[static_cast<std::size_t>(predictor)];
    profiles->push_back({predictor,
                         BinsOf(var, fAlgorithm.GetSettings()->IsCatPredictor(predictor)),
                         counts->GetPredictorProfile(position), lacking[i]->fEffect.fInformation});
  }
  return status;
}

PRSBins PRSBinnedInformation::BinsOf(int kovaVar, bool categorical) const {
  if (categorical) return {};
  return {fAdapter.GetContMinValue(kovaVar), fAdapter.GetContMaxValue(kovaVar),
          PRSMultiCriteria().fBins};
}

void PRSBinnedInformation::AddColumn(PRSBinnedCases& cases, int kovaVar, bool categorical) const {
  const int position = fSpecs.GetVarValidSpecsPtr()->GetRecVarIndex(kovaVar);
  const PRSBins bins = BinsOf(kovaVar, categorical);
  std::optional<NBBinningEncoder> encoder;
  if (!categorical) encoder.emplace(bins.fLow, bins.fHigh, bins.fNBins);
  cases.AddColumn(static_cast<std::size_t>(position), std::move(encoder));
}
