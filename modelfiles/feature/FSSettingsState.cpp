// Saved state of the settings.

#include <algorithm>
#include <limits>

#include "feature/FSCriterion.h"
#include "feature/FSSettings.h"
#include "modelfiles/feature/FSStateFields.h"

using namespace MCFSCommon;

namespace {

constexpr int kMostInt = std::numeric_limits<int>::max();

template <class Archive, class Bools>
void Types(Archive& archive, Bools& types) {
  archive.Size(types, 4);
  for (std::size_t j = 0; j < types.size(); ++j) {
    bool categorical = types[j];
    archive.Flag(categorical);
    if constexpr (Archive::kReading) types[j] = categorical;
  }
}

// A screening rule: whether it applies, and its threshold from 0 to `most`.
template <class Archive, class Flag, class Value>
void Rule(Archive& archive, Flag& on, Value& threshold, double most) {
  archive.Flag(on);
  archive.AnyDouble(threshold);
  archive.Check(threshold >= 0.0 && threshold <= most);
}

}  // namespace

// A set that is "all continuous" stays so when one of its predictors becomes categorical.
bool FSSettings::IsConsistentType() const {
  if (fPredictorTypes.empty()) return fSetType != kMixed;
  if (fNCategorical == GetNPredictors()) return fSetType == kAllCategorical;
  return fSetType == kAllContinuous || (fSetType == kMixed && fNCategorical > 0);
}

bool FSSettings::IsConsistent() const {
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (GetCriterion(criterion.fCode) && !criterion.Suits(fbCatTarget, fSetType)) return false;
  }
  return IsConsistentType() &&
         fNCategorical == std::count(fPredictorTypes.begin(), fPredictorTypes.end(), true);
}

template <class Archive, class Self>
void FSSettings::Fields(Archive& archive, Self& self) {
  constexpr double kAnyLimit = std::numeric_limits<double>::infinity();
  Types(archive, self.fPredictorTypes);
  archive.Int(self.fNCategorical);
  StateRanged(archive, self.fSetType, kAllCategorical, kNoPredictors);
  archive.Flag(self.fbCatTarget);
  for (auto& on : self.fCriteria) archive.Flag(on);
  StateRanged(archive, self.fNSkippedRecords, 0, kMostInt);
  StateRanged(archive, self.fNSkippedPredictors, 0, kMostInt);
  archive.Flag(self.fbTransactional);
  StateRanged(archive, self.fTargetPosition, -1, kMostInt);
  StateRanged(archive, self.fCaseIDPosition, -1, kMostInt);
  StateRanged(archive, self.fWeightPosition, -1, kMostInt);
  StateRanged(archive, self.fWeightToFreq, kAsIs, kTruncate);
  Rule(archive, self.fbDeleteMissing, self.fMaxMissing, 1.0);
  Rule(archive, self.fbDeleteSingle, self.fMaxSingle, 1.0);
  Rule(archive, self.fbDeleteNCat, self.fMaxNCat, 1.0);
  Rule(archive, self.fbDeleteOneCase, self.fMaxOneCase, 1.0);
  Rule(archive, self.fbDeleteVariation, self.fMinVariation, kAnyLimit);
  Rule(archive, self.fbDeleteStddev, self.fMinStddev, kAnyLimit);
  archive.Check(self.IsConsistent());
}

MC_STATE_OPERATIONS(FSSettings, "FSSet", "FSSettings")
