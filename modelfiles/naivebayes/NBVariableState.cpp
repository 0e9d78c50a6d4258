// Saved state of variables, of their encoders, and of user-missing definitions.
#include <array>
#include <limits>
#include <type_traits>

#include "modelfiles/naivebayes/NBStateFields.h"
#include "naivebayes/encoders/NBBinningEncoder.h"
#include "naivebayes/encoders/NBCatNumEncoder.h"
#include "naivebayes/encoders/NBNumericUserMissing.h"
#include "naivebayes/encoders/NBRoundEncoder.h"
#include "naivebayes/encoders/NBStringEncoder.h"
#include "naivebayes/encoders/NBStringUserMissing.h"
#include "naivebayes/variables/NBCatVar.h"
#include "naivebayes/variables/NBContVar.h"
#include "naivebayes/variables/NBVarList.h"
#include "naivebayes/variables/NBWeightVar.h"

namespace {

constexpr double kLowest = std::numeric_limits<double>::lowest();
constexpr double kHighest = std::numeric_limits<double>::max();

// The right end of an interval. In XML the missing value stands for an unbounded one; it cannot
// stand for itself as well.
template <class Archive, class Value>
void RightEnd(Archive& archive, Value& right) {
  double written = right;
  if constexpr (std::is_same_v<Archive, XMLStateWriter>) {
    if (right == kLowest) throw MCNaive::IOException("an interval that XML has no form for");
    if (right == kHighest) written = kLowest;
  }
  NBState::Finite(archive, written);
  if constexpr (std::is_same_v<Archive, XMLStateReader>) {
    if (written == kLowest) written = kHighest;
  }
  if constexpr (Archive::kReading) right = written;
}

}  // namespace

template <class Archive, class Self>
void NBNumericInterval::Fields(Archive& archive, Self& self) {
  NBState::Finite(archive, self.fLeft);
  RightEnd(archive, self.fRight);
}
MC_STATE_OPERATIONS(NBNumericInterval, "NBNumInt", "NBNumericInterval")

template <class Archive, class Self>
void NBNumericUserMissing::Fields(Archive& archive, Self& self) {
  NBState::FiniteList(archive, self.fvValues);
  StateTexts(archive, self.fvLabels);
  archive.Check(self.fvLabels.size() == self.fvValues.size());
  archive.Flag(self.fbInterval);
  archive.Object(self.fInterval);
}
MC_STATE_OPERATIONS(NBNumericUserMissing, "NBNumUMi", "NBNumericUserMissing")

template <class Archive, class Self>
void NBStringUserMissing::Fields(Archive& archive, Self& self) {
  StateTexts(archive, self.fvValues);
  StateTexts(archive, self.fvLabels);
  archive.Check(self.fvLabels.size() == self.fvValues.size());
}
MC_STATE_OPERATIONS(NBStringUserMissing, "NBStrUMi", "NBStringUserMissing")

template <class Archive, class Self>
void INBEncoder::LabelFields(Archive& archive, Self& self) {
  StateTexts(archive, self.fvLabels);
}

template <class Archive, class Self>
void INBEncoder::MissingFields(Archive& archive, Self& self) {
  bool defined = self.fpMissing != nullptr;
  archive.Flag(defined);
  if constexpr (Archive::kReading) {
    static const std::array kNames = {kNBNumericUserMissing, kNBStringUserMissing};
    self.fpMissing.reset();
    if (!defined) return;
    if (archive.Which(kNames) == 0) {
      self.fpMissing = std::make_unique<NBNumericUserMissing>();
    } else {
      self.fpMissing = std::make_unique<NBStringUserMissing>();
    }
  }
  if (defined) archive.Object(*self.fpMissing);
}

template <class Archive, class Self>
void NBBinningEncoder::Fields(Archive& archive, Self& self) {
  archive.Int(self.fNBins);
  NBState::FiniteList(archive, self.fvCutpoints);
  archive.Check(self.fvCutpoints.size() == static_cast<std::size_t>(std::max(self.fNBins, 1) - 1));
  if constexpr (Archive::kReading) self.fGrid = NBBinGrid(self.fvCutpoints);
  LabelFields(archive, self);
  MissingFields(archive, self);
}
MC_STATE_OPERATIONS(NBBinningEncoder, "BIEN", "NBBinningEncoder")

template <class Archive, class Self>
void NBCatNumEncoder::Fields(Archive& archive, Self& self) {
  std::vector<double> values;
  if constexpr (!Archive::kReading) values = self.fvValues;
  NBState::FiniteList(archive, values);
  if constexpr (Archive::kReading) {
    self.fCodes.clear();
    self.fvValues.clear();
    self.fHighestCode = -1;
    for (const double value : values) self.Enter(value);
    archive.Check(self.fvValues.size() == values.size());  // each value once
  }
  NBState::Known(archive, self.fHighestCode);
  LabelFields(archive, self);
  MissingFields(archive, self);
}
MC_STATE_OPERATIONS(NBCatNumEncoder, "CNEN", "NBCatNumEncoder")

template <class Archive, class Self>
void NBStringEncoder::Fields(Archive& archive, Self& self) {
  std::vector<std::string> values;
  if constexpr (!Archive::kReading) {
    for (const std::string* value : self.fvpValues) values.push_back(*value);
  }
  StateTexts(archive, values);
  if constexpr (Archive::kReading) {
    self.fCodes.clear();
    self.fvpValues.clear();
    self.fHighestCode = -1;
    for (const std::string& value : values) self.Enter(value);
    archive.Check(self.fvpValues.size() == values.size());  // each value once
  }
  NBState::Known(archive, self.fHighestCode);
  LabelFields(archive, self);
  MissingFields(archive, self);
}
MC_STATE_OPERATIONS(NBStringEncoder, "STEN", "NBStringEncoder")

template <class Archive, class Self>
void NBRoundEncoder::Fields(Archive& archive, Self& self) {
  StateRanged(archive, self.fRounding, INBVariable::kTruncate, INBVariable::kAsIs);
  MissingFields(archive, self);
}
MC_STATE_OPERATIONS(NBRoundEncoder, "ROEN", "NBRoundEncoder")

template <class Archive, class Self>
void INBVariable::NameFields(Archive& archive, Self& self) {
  archive.Text(self.fName);
  archive.Text(self.fLabel);
}

template <class Archive, class Self>
void INBVariable::RoleField(Archive& archive, Self& self) {
  StateRanged(archive, self.fRole, kUndefined, kUnused);
}

template <class Archive, class Self>
void NBCatVar::Fields(Archive& archive, Self& self) {
  NameFields(archive, self);
  archive.Int(self.fNCategories);
  StateRanged(archive, self.fLevel, kNumericCategorical, kStringCategorical);
  RoleField(archive, self);
  if constexpr (Archive::kReading) {
    if (self.fLevel == kNumericCategorical) {
      self.fpEncoder = std::make_unique<NBCatNumEncoder>(0);
    } else {
      self.fpEncoder = std::make_unique<NBStringEncoder>(0);
    }
  }
  archive.Object(*self.fpEncoder);
}
MC_STATE_OPERATIONS(NBCatVar, "CAVR", "NBCatVar")

template <class Archive, class Self>
void NBContVar::Fields(Archive& archive, Self& self) {
  NameFields(archive, self);
  NBState::Finite(archive, self.fMin);
  NBState::Finite(archive, self.fMax);
  archive.Int(self.fNBins);
  RoleField(archive, self);
  NBState::FiniteList(archive, self.fvSetupCutpoints);
  bool encoded = self.fpEncoder != nullptr;
  archive.Flag(encoded);
  if constexpr (Archive::kReading) {
    self.fpEncoder = encoded ? std::make_unique<NBBinningEncoder>(self.fvSetupCutpoints) : nullptr;
  }
  if (!encoded) return;
  archive.Object(*self.fpEncoder);
  const std::vector<double>& cuts = self.fpEncoder->GetBinningCutpoints();
  // Training moves cutpoints, never makes or removes any.
  archive.Check(cuts.size() == self.fvSetupCutpoints.size());
  archive.Check(self.GetVariableRole() != kInput ||
                (std::is_sorted(cuts.begin(), cuts.end()) &&
                 std::is_sorted(self.fvSetupCutpoints.begin(), self.fvSetupCutpoints.end())));
}
MC_STATE_OPERATIONS(NBContVar, "COVR", "NBContVar")

template <class Archive, class Self>
void NBWeightVar::Fields(Archive& archive, Self& self) {
  NameFields(archive, self);
  auto rounding = self.fEncoder.GetRoundingOption();
  StateRanged(archive, rounding, kTruncate, kAsIs);
  RoleField(archive, self);
  archive.Object(self.fEncoder);
  archive.Check(self.fEncoder.GetRoundingOption() == rounding);
}
MC_STATE_OPERATIONS(NBWeightVar, "WEVR", "NBWeightVar")

namespace {

std::unique_ptr<INBVariable> MakeVariable(std::size_t kind) {
  switch (kind) {
    case 0:
      return std::make_unique<NBCatVar>("", "", 0, INBVariable::kNumericCategorical,
                                        INBVariable::kUndefined);
    case 1:
      return std::make_unique<NBContVar>("", "", std::vector<double>(), INBVariable::kUndefined);
    default:
      return std::make_unique<NBWeightVar>("", "", INBVariable::kAsIs);
  }
}

}  // namespace

template <class Archive, class Self>
void NBVarList::Fields(Archive& archive, Self& self) {
  archive.Size(self.fvpVars, 4);
  if constexpr (Archive::kReading) {
    static const std::array kNames = {kNBCatVar, kNBContVar, kNBWeightVar};
    for (auto& variable : self.fvpVars) {
      variable = MakeVariable(archive.Which(kNames));
      archive.Object(*variable);
    }
    const int size = self.Size();
    self.Reindex();
    archive.Check(self.Size() == size);  // no name is empty or there twice
  } else {
    for (const auto& variable : self.fvpVars) archive.Object(*variable);
  }
  NBState::Known(archive, self.fNContVars);
  NBState::Known(archive, self.fNCatVars);
  // Of several variables with the role of the target, the one that had it last.
  StateRanged(archive, self.fTarget, -1, self.Size() - 1);
  StateRanged(archive, self.fWeight, -1, self.Size() - 1);
  archive.Check(self.fTarget < 0 || self.GetVariableRole(self.fTarget) == INBVariable::kOutput);
  archive.Check(self.fWeight < 0 || IsWeight(*self.GetVarAt(self.fWeight)));
}
MC_STATE_OPERATIONS(NBVarList, "NBVL", "NBVarList")
