// Saved state of the accumulators. The fields follow their declarations.

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "feature/accumulators/FSCatAccum.h"
#include "feature/accumulators/FSCatPCatTAccum.h"
#include "feature/accumulators/FSCatPContTAccum.h"
#include "feature/accumulators/FSContAccum.h"
#include "feature/accumulators/FSContPCatTAccum.h"
#include "feature/accumulators/FSContPContTAccum.h"
#include "modelfiles/feature/FSStateFields.h"

namespace {

constexpr double kLeast = std::numeric_limits<double>::min();

bool AreOneSum(double a, double b) { return FSState::AreOneSum(a, b, std::max(a, b)); }

// Whether the categories have the weight of the valid cases, of which `all` has both these and
// others.
bool HaveWeightOf(const FSMapICnt& counts, const FSPredictorState& all) {
  double sum = 0.0;
  for (const auto& [category, weight] : counts) sum += weight;
  return FSState::AreOneSum(sum, all.GetValidWeight(), all.GetTotalWeight());
}
bool HaveWeightOf(const FSMapIStat& groups, const FSPredictorState& all) {
  double sum = 0.0;
  for (const auto& [category, group] : groups) sum += group.fWeight;
  return FSState::AreOneSum(sum, all.GetValidWeight(), all.GetTotalWeight());
}

bool AreGroupsOf(const FSMapICnt& counts, const FSMapIStat& groups) {
  return std::equal(counts.begin(), counts.end(), groups.begin(), groups.end(),
                    [](const auto& a, const auto& b) {
                      return a.first == b.first && AreOneSum(a.second, b.second.fWeight);
                    });
}

// Whether the sums by category are these counts, category by category.
bool AreSums(const std::map<int, double>& sums, const FSMapICnt& counts) {
  return std::equal(sums.begin(), sums.end(), counts.begin(), counts.end(),
                    [](const auto& a, const auto& b) {
                      return a.first == b.first && AreOneSum(a.second, b.second);
                    });
}

// Whether rows and columns are the margins of the pairs.
bool AreMarginsOf(const FSMapPiCnt& pairs, const FSMapICnt& rows, const FSMapICnt& columns) {
  std::map<int, double> byRow;
  std::map<int, double> byColumn;
  for (const auto& [pair, weight] : pairs) {
    byRow[pair.first] += weight;
    byColumn[pair.second] += weight;
  }
  return AreSums(byRow, rows) && AreSums(byColumn, columns);
}

// Whether a categorical predictor is constant, and begins with its first value, as its counts say.
bool HasValuesOf(const FSPredictorState& state, const FSMapICnt& counts) {
  double weight = 0.0;
  if (state.IsAllConstant() != (counts.Size() < 2)) return false;
  return counts.Size() == 0 || counts.GetValue(static_cast<int>(state.GetFirst()), weight);
}

// Whether a value other than 0 is in the groups.
bool IsAnyOff0(const FSMapIStat& groups) {
  return std::any_of(groups.begin(), groups.end(), [](const auto& entry) {
    return entry.second.fMean.fValue != 0.0 || entry.second.fSquaredDeviations != 0.0;
  });
}

bool IsOff0(const FSMean& mean, double squares) { return mean.fValue != 0.0 || squares != 0.0; }

// The scale of a variable, of which a value other than 0 was seen or not: its exponent, in the
// grown form.
template <class Archive, class Value>
void Scale(Archive& archive, Value& scale, bool grown, bool any) {
  int exponent = scale.GetExponent();
  if (grown) StateRanged(archive, exponent, -1000, 1023);
  if constexpr (Archive::kReading) scale = FSScale(exponent, any);
}

}  // namespace

template <class Archive, class Self>
void FSCatAccum::Fields(Archive& archive, Self& self) {
  FSPredictorState::Fields(archive, self.fState);
  archive.Object(self.fCounts);
}

template <class Archive, class Self>
void FSCatPCatTAccum::Fields(Archive& archive, Self& self) {
  FSPredictorState::Fields(archive, self.fState);
  archive.Object(self.fPredictorCounts);
  archive.Object(self.fTargetCounts);
  archive.Object(self.fJointCounts);
  if constexpr (Archive::kReading) {
    archive.Check(AreMarginsOf(self.fJointCounts, self.fPredictorCounts, self.fTargetCounts) &&
                  HaveWeightOf(self.fPredictorCounts, self.fState) &&
                  HasValuesOf(self.fState, self.fPredictorCounts));
  }
}

template <class Archive, class Self>
void FSGroupSums::MomentFields(Archive& archive, Self& self) {
  archive.Object(self.fMoments);
}

template <class Archive, class Self>
void FSGroupSums::ScaleField(Archive& archive, Self& self, bool grown) {
  Scale(archive, self.fScale, grown, IsAnyOff0(self.fMoments));
}

template <class Archive, class Self>
void FSCatPContTAccum::Fields(Archive& archive, Self& self, bool grown) {
  FSPredictorState::Fields(archive, self.fState);
  archive.AnyDouble(self.fTargetMean);
  archive.Object(self.fPredictorCounts);
  FSGroupSums::MomentFields(archive, self.fSums);
  if constexpr (Archive::kReading) {
    archive.Check(AreGroupsOf(self.fPredictorCounts, self.fSums.GetMoments()) &&
                  HaveWeightOf(self.fPredictorCounts, self.fState) &&
                  HasValuesOf(self.fState, self.fPredictorCounts));
  }
  FSGroupSums::ScaleField(archive, self.fSums, grown);
}

bool FSContAccum::IsGrown() const {
  return fSums.GetScale().GetExponent() != 0 || Moments().fMean.fRest != 0.0;
}

template <class Archive, class Self>
void FSContAccum::Fields(Archive& archive, Self& self, bool grown) {
  FSPredictorState::Fields(archive, self.fState);
  FSGroupStats moments = self.Moments();
  archive.AnyDouble(moments.fMean.fValue);
  FSState::Squares(archive, moments.fSquaredDeviations);
  FSState::Squares(archive, self.fVariance);
  if (grown) archive.AnyDouble(moments.fMean.fRest);
  if constexpr (Archive::kReading) {
    moments.fWeight = self.fState.GetValidWeight();
    if (moments.fWeight > 0.0) self.fSums.Restore(0, moments);
  }
  FSGroupSums::ScaleField(archive, self.fSums, grown);
}

template <class Archive, class Self>
void FSContPCatTAccum::Fields(Archive& archive, Self& self, bool grown) {
  FSPredictorState::Fields(archive, self.fState);
  archive.AnyDouble(self.fMean);
  FSGroupSums::MomentFields(archive, self.fSums);
  if constexpr (Archive::kReading) {
    archive.Check(HaveWeightOf(self.fSums.GetMoments(), self.fState));
  }
  FSGroupSums::ScaleField(archive, self.fSums, grown);
}

template <class Archive, class Self>
void FSPairSums::MomentFields(Archive& archive, Self& self) {
  archive.AnyDouble(self.fMoments.fMeanX.fValue);
  FSState::Squares(archive, self.fMoments.fSxx);
  archive.AnyDouble(self.fMoments.fMeanY.fValue);
  FSState::Squares(archive, self.fMoments.fSyy);
  archive.AnyDouble(self.fMoments.fSxy);
  // No more than the deviations of both allow.
  const double most = std::sqrt(self.fMoments.fSxx) * std::sqrt(self.fMoments.fSyy);
  archive.Check(!(std::abs(self.fMoments.fSxy) > most * (1.0 + 1e-6) + kLeast));
}

template <class Archive, class Self>
void FSPairSums::GrownFields(Archive& archive, Self& self, bool grown) {
  auto& moments = self.fMoments;
  if (grown) {
    archive.AnyDouble(moments.fMeanX.fRest);
    archive.AnyDouble(moments.fMeanY.fRest);
  }
  Scale(archive, self.fScaleX, grown, IsOff0(moments.fMeanX, moments.fSxx));
  Scale(archive, self.fScaleY, grown, IsOff0(moments.fMeanY, moments.fSyy));
}

bool FSContPContTAccum::IsGrown() const {
  const FSPairStats& moments = fSums.GetMoments();
  return fSums.GetScaleX().GetExponent() != 0 || fSums.GetScaleY().GetExponent() != 0 ||
         moments.fMeanX.fRest != 0.0 || moments.fMeanY.fRest != 0.0;
}

template <class Archive, class Self>
void FSContPContTAccum::Fields(Archive& archive, Self& self, bool grown) {
  FSPredictorState::Fields(archive, self.fState);
  FSPairSums::MomentFields(archive, self.fSums);
  archive.AnyDouble(self.fPredictorVariance);
  archive.AnyDouble(self.fTargetVariance);
  archive.AnyDouble(self.fCorrelation);
  archive.Check(!(std::abs(self.fCorrelation) > 1.0) || self.fCorrelation == MCMV::gMissingValue);
  FSPairSums::GrownFields(archive, self.fSums, grown);
  if constexpr (Archive::kReading) self.fSums.SetWeight(self.fState.GetValidWeight());
}

// Do not change a tag: saved components are found by it.
MC_STATE_OPERATIONS(FSCatAccum, "CAPRE", "FSCatAccum")
MC_STATE_OPERATIONS(FSCatPCatTAccum, "CAPRA", "FSCatPCatTAccum")
MC_STATE_OPERATIONS_OF_TWO_FORMS(FSCatPContTAccum, "CAPCO", "FSCatPContTAccum", "CACO2",
                                 "FSCatPContTAccum 2")
MC_STATE_OPERATIONS_OF_TWO_FORMS(FSContAccum, "COPRE", "FSContAccum", "COPE2", "FSContAccum 2")
MC_STATE_OPERATIONS_OF_TWO_FORMS(FSContPCatTAccum, "COPRA", "FSContPCatTAccum", "COPA2",
                                 "FSContPCatTAccum 2")
MC_STATE_OPERATIONS_OF_TWO_FORMS(FSContPContTAccum, "COPCO", "FSContPContTAccum", "COCO2",
                                 "FSContPContTAccum 2")
