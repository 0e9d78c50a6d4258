#include "feature/accumulators/FSCatPCatTAccum.h"

#include "common/MissingValue.h"
#include "feature/MCFSCommon.h"
#include "feature/accumulators/FSDenseFront.h"
#include "feature/accumulators/FSDisplay.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/distributions/FSDistFun.h"
#include "feature/ranking/FSScreening.h"
#include "feature/statistics/FSStatistics.h"

using namespace MCFSCommon;
using FSStatistics::ContingencyTable;

namespace {

// p-value, statistic and df of a chi-square statistic; nothing when the p-value fails.
void ChiSquareTest(const ContingencyTable& table, double (*statistic)(const ContingencyTable&),
                   double& value, double& tie1, double& tie2) {
  if (table.IsDegenerate()) {
    value = 1.0;
    tie1 = tie2 = 0.0;
    return;
  }
  const double chiSquare = statistic(table);
  const double df = table.DegreesOfFreedom();
  const double probability = FSDistFun::CdfChi(chiSquare, df);
  if (MCMV::IsMissing(probability)) return;
  value = 1.0 - probability;
  tie1 = chiSquare;
  tie2 = df;
}

}  // namespace

inline void FSCatPCatTAccum::Add(FSPredictorState& state, int predictor, int target,
                                 double weight) {
  fPredictorCounts.IncrementByFreq(predictor, weight);
  fTargetCounts.IncrementByFreq(target, weight);
  fJointCounts.IncrementByFreq({predictor, target}, weight);
  state.AddValid(predictor, weight);
}

void FSCatPCatTAccum::AddCase(double predictor, double target, double weight, bool) {
  if (weight > 0.0) Add(fState, FSCategory(predictor), FSCategory(target), weight);
}

void FSCatPCatTAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSCatPCatTAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  const std::size_t first = cases.fTargetSide > 0 ? AddBlockDense(predictor, cases) : 0;
  FSWalkBlock<FSCategories>(predictor, cases, first, fState,
                            [&](FSPredictorState& state, std::size_t i, double x, double w) {
                              Add(state, FSCategory(x), cases.fpTargetCategories[i], w);
                            });
}

// Counts the cases up to the first whose predictor category is not small; returns that case.
std::size_t FSCatPCatTAccum::AddBlockDense(const double* predictor, const FSCaseBlock& cases) {
  FSDenseFront<FSMapICnt, double> predictorCounts(fPredictorCounts);
  FSDenseFront<FSMapICnt, double> targetCounts(fTargetCounts);
  FSDensePairs jointCounts(fJointCounts, cases.fTargetSide);
  const std::size_t end = FSWalkBlock<FSSmallCategories>(
      predictor, cases, 0, fState, [&](FSPredictorState& state, std::size_t i, double x, double w) {
        const int category = static_cast<int>(x);
        const int target = cases.fpTargetCategories[i];
        predictorCounts[category] += w;
        targetCounts[target] += w;
        jointCounts.At(category, target) += w;
        state.AddValid(category, w);
      });
  predictorCounts.PutBack();
  targetCounts.PutBack();
  jointCounts.PutBack();
  return end;
}

void FSCatPCatTAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode& predictor,
                            const FSRecode& target) {
  const auto& other = static_cast<const FSCatPCatTAccum&>(accumulator);
  fState.Merge(other.fState, FSFirstCategory(other.fState, predictor));
  fPredictorCounts.Merge(other.fPredictorCounts, predictor);
  fTargetCounts.Merge(other.fTargetCounts, target);
  fJointCounts.Merge(other.fJointCounts, predictor, target);
}

std::size_t FSCatPCatTAccum::CheckAllReasons(const FSSettings* settings,
                                             std::vector<int>& reasons) const {
  reasons.clear();
  FSScreening::CheckCategorical(*settings, fState, fPredictorCounts, true, reasons);
  return reasons.size();
}

void FSCatPCatTAccum::ComputeCrit(int criterion, double& value, double& tie1, double& tie2,
                                  double& extra1, double& extra2) const {
  value = tie1 = tie2 = extra1 = extra2 = MCMV::gMissingValue;
  const ContingencyTable table(fPredictorCounts, fTargetCounts, fJointCounts,
                               fState.GetValidWeight());
  switch (criterion) {
    case kPearson:
      ChiSquareTest(table, FSStatistics::PearsonChiSquare, value, tie1, tie2);
      break;
    case kLikelihood:
      ChiSquareTest(table, FSStatistics::LikelihoodRatioChiSquare, value, tie1, tie2);
      break;
    case kCramer:
      if (table.IsDegenerate()) break;
      tie1 = FSStatistics::PearsonChiSquare(table);
      value = FSStatistics::CramersV(table, tie1);
      break;
    case kLambda:
      value = FSStatistics::AsymmetricLambda(table);
      tie1 = static_cast<double>(table.fRows.size());
      break;
    default:
      break;
  }
}

bool FSCatPCatTAccum::GetOutputStats(int criterion, double& value, double& out2, double& out3,
                                     double& out4) const {
  value = out2 = out3 = out4 = MCMV::gMissingValue;
  if (criterion < kPearson || criterion > kLambda) return false;
  double tie1 = 0.0, tie2 = 0.0, extra1 = 0.0, extra2 = 0.0;
  ComputeCrit(criterion, value, tie1, tie2, extra1, extra2);
  if (criterion == kPearson || criterion == kLikelihood) {
    out2 = tie1;
    out3 = tie2;
  }
  return true;
}

void FSCatPCatTAccum::Display(std::ostream& out) const {
  FSDisplay::State(out, "FSCatPCatTAccum", fState);
  FSDisplay::Counts(out, "Predictor categories", fPredictorCounts);
  FSDisplay::Counts(out, "Target categories", fTargetCounts);
  FSDisplay::Counts(out, "Pairs of predictor and target category", fJointCounts);
}
