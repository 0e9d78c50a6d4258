#include "feature/MCFSCommon.h"

#include <array>
#include <cmath>
#include <cstddef>

#include "feature/FSCriterion.h"

namespace MCFSCommon {

namespace {

constexpr std::array kSetTypes = {"All categorical", "All continuous", "Mixed"};

constexpr std::array kSetStatus = {"",
                                   "Initial",
                                   "Counts and statistics accumulated",
                                   "Predictors checked for deletion",
                                   "Ranking criteria computed",
                                   "Predictors sorted (all)",
                                   "Predictors sorted (best)",
                                   "Predictors ranked"};

constexpr std::array kDelReasons = {"",          "allMissing", "allConst", "manyMissing",
                                    "manyConst", "manyCategs", "",         "smallStdDev",
                                    "smallVar"};

constexpr std::array kWeightToFreq = {"using weight as is", "rounding to nearest integer",
                                      "truncating to integer"};

template <std::size_t kSize>
std::string Find(const std::array<const char*, kSize>& names, int index, const char* otherwise) {
  return index >= 0 && index < static_cast<int>(kSize) ? names[static_cast<std::size_t>(index)]
                                                       : otherwise;
}

}  // namespace

std::string GetCriterionName(int criterion) {
  const FSCriterion* row = FSCriterion::Find(criterion);
  return row != nullptr ? row->fName : "Unrecognized";
}

std::string GetCriterionShortName(int criterion) {
  const FSCriterion* row = FSCriterion::Find(criterion);
  return row != nullptr ? row->fShortName : "";
}

std::string GetSetTypeName(int type) { return Find(kSetTypes, type, "Unrecognized"); }

std::string GetSetStatusName(int status) { return Find(kSetStatus, status, ""); }

std::string GetDelReasonName(int reason) { return Find(kDelReasons, reason, ""); }

std::string GetWeightToFreqName(int method) {
  return Find(kWeightToFreq, method, "unrecognized method");
}

double ToFrequency(WeightToFreq method, double weight) {
  switch (method) {
    case kRound:
      return std::floor(weight + 0.5);
    case kTruncate:
      return std::floor(weight);
    default:
      return weight;
  }
}

}  // namespace MCFSCommon
