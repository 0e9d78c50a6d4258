#include "feature/FSSettings.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <tuple>
#include <utility>

#include "feature/FSCriterion.h"

using namespace MCFSCommon;

FSSettings::FSSettings() = default;

FSSettings::FSSettings(int nPredictors, bool allCategorical, bool categoricalTarget)
    : FSSettings(
          std::vector<bool>(static_cast<std::size_t>(std::max(nPredictors, 0)), allCategorical),
          categoricalTarget) {
  if (nPredictors >= 1) return;
  fSetType = allCategorical ? kAllCategorical : kAllContinuous;
  SetDefaultCriteria();
}

FSSettings::FSSettings(const std::vector<bool>& predictorTypes, bool categoricalTarget)
    : fPredictorTypes(predictorTypes),
      fNCategorical(
          static_cast<int>(std::count(predictorTypes.begin(), predictorTypes.end(), true))),
      fbCatTarget(categoricalTarget) {
  if (fNCategorical == GetNPredictors()) {
    fSetType = kAllCategorical;
  } else {
    fSetType = fNCategorical == 0 ? kAllContinuous : kMixed;
  }
  SetDefaultCriteria();
}

void FSSettings::AddPredictor(bool categorical) {
  fPredictorTypes.push_back(categorical);
  if (categorical) ++fNCategorical;
  const PredictorSetType own = categorical ? kAllCategorical : kAllContinuous;
  if (GetNPredictors() == 1) {
    fSetType = own;
    SetDefaultCriteria();
  } else if (fSetType != own) {
    ChangeSetType(kMixed);
  }
}

void FSSettings::AddPredictors(int n, bool categorical) {
  for (int i = 0; i < n; ++i) AddPredictor(categorical);
}

void FSSettings::SetPredictorType(int index, bool categorical) {
  if (index < 0 || index >= GetNPredictors() || IsCatPredictor(index) == categorical) return;
  fPredictorTypes[static_cast<std::size_t>(index)] = categorical;
  fNCategorical += categorical ? 1 : -1;
  if (!categorical) {
    ChangeSetType(fNCategorical == 0 ? kAllContinuous : kMixed);
  } else if (fNCategorical == GetNPredictors()) {
    fSetType = kAllCategorical;
    AdjustCriteria();
  }
}

void FSSettings::SetPredictorType(int first, int last, bool categorical) {
  if (first < 0 || first > last || last >= GetNPredictors()) return;
  for (int i = first; i <= last; ++i) SetPredictorType(i, categorical);
}

void FSSettings::SetTargetType(bool categorical) {
  if (categorical == fbCatTarget) return;
  fbCatTarget = categorical;
  AdjustCriteria();
}

bool FSSettings::IsCatPredictor(int index) const {
  return index >= 0 && index < GetNPredictors() && fPredictorTypes[static_cast<std::size_t>(index)];
}

void FSSettings::ChangeSetType(PredictorSetType type) {
  if (type == fSetType) return;
  fSetType = type;
  AdjustCriteria();
}

void FSSettings::SetDefaultCriteria() {
  for (const FSCriterion& criterion : FSCriterion::All()) {
    fCriteria[criterion.fCode] = criterion.IsDefault(fbCatTarget, fSetType);
  }
}

// Keeps the choices that remain valid for the target and the set type.
void FSSettings::AdjustCriteria() {
  const Criteria before = fCriteria;
  SetDefaultCriteria();
  Criteria kept = fCriteria;
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (!criterion.IsChoice()) continue;
    kept[criterion.fCode] = before[criterion.fCode] && criterion.Suits(fbCatTarget, fSetType);
  }
  if (CountChoices(kept) > 0) fCriteria = kept;
}

int FSSettings::CountChoices(const Criteria& criteria) {
  const auto& all = FSCriterion::All();
  return static_cast<int>(std::count_if(all.begin(), all.end(), [&](const FSCriterion& criterion) {
    return criterion.IsChoice() && criteria[criterion.fCode];
  }));
}

bool FSSettings::GetCriterion(RankCriteria criterion) const {
  return criterion >= 0 && criterion < kNCriteria && fCriteria[static_cast<std::size_t>(criterion)];
}

bool FSSettings::SetCriterion(RankCriteria criterion, bool on) {
  const FSCriterion* row = FSCriterion::Find(criterion);
  if (row == nullptr) return false;
  if (GetCriterion(criterion) == on) return true;
  if (!(on ? row->Suits(fbCatTarget, fSetType) : MayTurnOff(*row))) return false;
  fCriteria[criterion] = on;
  return true;
}

// As long as there are no predictors, a criterion that follows from the data may be turned off only
// when the target is continuous; this asymmetry is on purpose.
bool FSSettings::MayTurnOff(const FSCriterion& criterion) const {
  if (!fbCatTarget) return !criterion.IsDefault(false, fSetType);
  return criterion.IsChoice() ? CountChoices(fCriteria) >= 2 : !criterion.Suits(true, fSetType);
}

RankCriteria FSSettings::GetMainCriterion(RankCriteria asked) const {
  if (FSCriterion::Of(asked).Suits(fbCatTarget, fSetType)) return asked;
  const auto& all = FSCriterion::All();
  const auto first = std::find_if(all.begin(), all.end(), [this](const FSCriterion& criterion) {
    return criterion.Suits(fbCatTarget, fSetType);
  });
  return first->fCode;
}

int FSSettings::GetNBestPredictors(int n) const {
  const double x = n >= 1 ? n : GetNPredictors();
  return static_cast<int>(std::floor(std::min(x, std::max(30.0, 2.0 * std::sqrt(x))) + 0.5));
}

void FSSettings::SetNSkippedRecordReports(int n) {
  if (n >= 0) fNSkippedRecords = n;
}

void FSSettings::SetNSkippedPredictorReports(int n) {
  if (n >= 0) fNSkippedPredictors = n;
}

void FSSettings::SetNThreads(int n) {
  if (n >= 1) fNThreads = n;
}

void FSSettings::SetCaseIDPosition(int position) {
  if (position >= 0) fCaseIDPosition = position;
}

void FSSettings::SetWeightPosition(int position) {
  if (position >= 0) fWeightPosition = position;
}

void FSSettings::SetPercent(double& fraction, double percent) {
  if (percent >= 0.0 && percent <= 100.0) fraction = percent / 100.0;
}

void FSSettings::SetMinVariation(double value) {
  if (value >= 0.0) fMinVariation = value;
}

void FSSettings::SetMinStddev(double value) {
  if (value >= 0.0) fMinStddev = value;
}

bool FSSettings::HasRulesOf(const FSSettings& other) const {
  const auto rules = [](const FSSettings& s) {
    return std::tie(s.fMaxMissing, s.fbDeleteMissing, s.fMaxSingle, s.fbDeleteSingle, s.fMaxNCat,
                    s.fbDeleteNCat, s.fMaxOneCase, s.fbDeleteOneCase, s.fMinVariation,
                    s.fbDeleteVariation, s.fMinStddev, s.fbDeleteStddev);
  };
  return rules(*this) == rules(other);
}

bool FSSettings::FindDifference(const FSSettings& other, MCFeature::MergeObstacle& what,
                                int& predictor) const {
  const auto differ = std::mismatch(fPredictorTypes.begin(), fPredictorTypes.end(),
                                    other.fPredictorTypes.begin(), other.fPredictorTypes.end())
                          .first;
  predictor = static_cast<int>(differ - fPredictorTypes.begin());
  const bool sameTypes = predictor == GetNPredictors();
  if (sameTypes) predictor = 0;
  const std::pair<bool, MCFeature::MergeObstacle> checks[] = {
      {GetNPredictors() == other.GetNPredictors(), MCFeature::kNPredictors},
      {sameTypes, MCFeature::kPredictorType},
      {fbCatTarget == other.fbCatTarget, MCFeature::kTargetType},
      {fbTransactional == other.fbTransactional, MCFeature::kTransactional},
      {fTargetPosition == other.fTargetPosition, MCFeature::kTargetColumn},
      {fCaseIDPosition == other.fCaseIDPosition, MCFeature::kCaseIDColumn},
      {fWeightPosition == other.fWeightPosition, MCFeature::kWeightColumn},
      {fWeightToFreq == other.fWeightToFreq, MCFeature::kWeightRounding},
      {fSetType == other.fSetType && fCriteria == other.fCriteria &&
           fbExactPValues == other.fbExactPValues,
       MCFeature::kCriteria},
      {HasRulesOf(other), MCFeature::kScreeningRules},
  };
  for (const auto& [same, obstacle] : checks) {
    if (same) continue;
    what = obstacle;
    return true;
  }
  return false;
}

void FSSettings::Display(std::ostream& out) const {
  const auto line = [&out](const char* label, const auto& value) {
    out << label << " = " << value << '\n';
  };
  out << "Start of FSSettings display\n" << std::boolalpha;
  line("Number of predictors", GetNPredictors());
  line("Number of categorical predictors", fNCategorical);
  for (int j = 0; j < GetNPredictors(); ++j) {
    out << "Predictor " << j << (IsCatPredictor(j) ? " is categorical\n" : " is continuous\n");
  }
  line("Predictor set type", GetSetTypeName(fSetType));
  line("Categorical target", fbCatTarget);
  for (const FSCriterion& criterion : FSCriterion::All()) {
    line(criterion.fName, GetCriterion(criterion.fCode));
  }
  line("Exact p-values", fbExactPValues);
  line("Progress listener", static_cast<const void*>(fpListener));
  line("Cancel probe", static_cast<const void*>(fpCancel));
  line("Records skipped between progress reports", fNSkippedRecords);
  line("Predictors skipped between progress reports", fNSkippedPredictors);
  line("Transactional input", fbTransactional);
  line("Target position", fTargetPosition);
  line("Case identifier position", fCaseIDPosition);
  line("Weight position", fWeightPosition);
  line("Weight conversion", GetWeightToFreqName(fWeightToFreq));
  line("Maximum fraction missing", fMaxMissing);
  line("Delete if many missing", fbDeleteMissing);
  line("Maximum fraction in a single category", fMaxSingle);
  line("Delete if many in a single category", fbDeleteSingle);
  line("Maximum number of categories as fraction of cases", fMaxNCat);
  line("Delete if many categories", fbDeleteNCat);
  line("Maximum fraction of categories with one case", fMaxOneCase);
  line("Delete if many categories with one case", fbDeleteOneCase);
  line("Minimum coefficient of variation", fMinVariation);
  line("Delete if small variation", fbDeleteVariation);
  line("Minimum standard deviation", fMinStddev);
  line("Delete if small standard deviation", fbDeleteStddev);
  out << "End of FSSettings display\n" << std::noboolalpha;
}
