// Names and codes shared by the whole feature selection engine.
//
// The numeric values index vectors and are written to files: do not renumber.
#pragma once

#include <array>
#include <string>

namespace MCFSCommon {

// Each has its row in the table of feature/FSCriterion.h.
enum RankCriteria : int {
  kPearson = 0,     // Pearson chi-square p-value
  kLikelihood = 1,  // likelihood-ratio chi-square p-value
  kCramer = 2,      // Cramer's V
  kLambda = 3,      // asymmetric lambda, the target dependent
  kFStat = 4,       // p-value of the F statistic
  kTStat = 5        // p-value of the t statistic
};
inline constexpr int kNCriteria = 6;
// Some of them, by code.
using CriteriaSet = std::array<bool, kNCriteria>;

enum PredictorSetType {
  kAllCategorical = 0,
  kAllContinuous = 1,
  kMixed = 2,
  kNoPredictors = 3  // no valid type: marks that no predictor has been added yet
};

enum PredictorSetStatus {
  kInitial = 1,
  kAccumulated = 2,
  kScreened = 3,
  kCriteriaComputed = 4,
  kSortedAll = 5,
  kSortedBest = 6,
  kRanked = 7
};

// Why a predictor was screened out.
enum PredictorDelReason {
  kNotDeleted = 0,
  kAllMissing = 1,
  kAllConstant = 2,
  kManyMissing = 3,
  kManyInSingleCategory = 4,
  kManyCategories = 5,
  kManyCategoriesWithOneCase = 6,
  kSmallStddev = 7,
  kSmallVariation = 8
};

// How a case weight becomes a frequency.
enum WeightToFreq { kAsIs = 0, kRound = 1, kTruncate = 2 };

// Names for people ("Pearson chi-square p-value") and for result files ("Pearson"). A value outside
// the enumeration is "Unrecognized", and has an empty short name.
std::string GetCriterionName(int criterion);
std::string GetCriterionShortName(int criterion);
std::string GetSetTypeName(int type);
std::string GetSetStatusName(int status);

// The short name of a reason. Empty for kManyCategoriesWithOneCase, which has none, and for values
// outside the enumeration.
std::string GetDelReasonName(int reason);

// "rounding to nearest integer" and so on; "unrecognized method" outside the enumeration.
std::string GetWeightToFreqName(int method);

// The frequency of a case: floor(weight + 0.5), floor(weight) or the weight itself.
double ToFrequency(WeightToFreq method, double weight);

}  // namespace MCFSCommon
