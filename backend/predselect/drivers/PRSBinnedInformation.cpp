#include "backend/predselect/drivers/PRSBinnedInformation.h"

#include <memory>
#include <optional>
#include <utility>

#include "backend/predselect/drivers/PRSBinnedCases.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MissingValue.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/IFSAlgorithm.h"
#include "host/cases/UAInputAdapter.h"
#include "host/cases/UAProcDataSourceIter.h"
#include "host/cases/UAVarValidSpecs.h"

PRSBinnedInformation::PRSBinnedInformation(const PRSValidSpecs& specs,
                                           const IFSAlgorithm& algorithm,
                                           const UAInputAdapter& adapter,
                                           UAProcDataSourceIter& source)
    : fSpecs(specs), fAlgorithm(algorithm), fAdapter(adapter), fSource(source) {}

MCFeature::MCStatus PRSBinnedInformation::AddTo(std::vector<PRSEffect>& effects,
                                                std::vector<PRSBinnedProfile>* profiles) const {
  std::vector<PRSEffect*> lacking;
  PRSBinnedCases cases(fSource);
  const FSSettings& settings = *fAlgorithm.GetSettings();
  AddColumn(cases, fSpecs.GetDependVar(), settings.IsCatTarget());
  const int weight = settings.GetWeightPosition();
  if (weight >= 0) cases.AddColumn(static_cast<std::size_t>(weight), std::nullopt);
  for (PRSEffect& effect : effects) {
    if (!MCMV::IsMissing(effect.fEffect.fInformation)) continue;
    const auto place = static_cast<std::size_t>(effect.fPredictor);
    AddColumn(cases, (*fSpecs.GetPredListPtr())[place], settings.IsCatPredictor(effect.fPredictor));
    lacking.push_back(&effect);
  }
  // A stream that cannot be read again says why itself.
  if (lacking.empty() || !fSource.NewPass()) return {};
  FSSettings binned(std::vector<bool>(lacking.size(), true), true);
  binned.SetTargetPosition(0);
  if (weight >= 0) binned.SetWeightPosition(1);
  binned.SetWeightToFreq(settings.GetWeightToFreq());
  binned.SetCancelPointer(settings.GetCancelPointer());
  binned.SetProgressListener(settings.GetProgressListener());
  binned.SetNSkippedRecordReports(settings.GetNSkippedRecordReports());
  binned.SetNThreads(settings.GetNThreads());
  FSFactory factory;
  const std::unique_ptr<IFSAlgorithm> counts = factory.CreateFSAlgorithm(&binned);
  if (counts == nullptr) return factory.GetStatus();
  const MCFeature::MCStatus status = counts->Accumulate(cases, -1);
  for (std::size_t i = 0; i < lacking.size() && !status.IsError(); ++i) {
    const int position = static_cast<int>(i);
    const int predictor = lacking[i]->fPredictor;
    lacking[i]->fEffect.fInformation =
        counts->GetPredictorEffect(MCFSCommon::kPearson, position).fInformation;
    if (profiles == nullptr) continue;
    const int var = (*fSpecs.GetPredListPtr())[static_cast<std::size_t>(predictor)];
    profiles->push_back({predictor, BinsOf(var, settings.IsCatPredictor(predictor)),
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
