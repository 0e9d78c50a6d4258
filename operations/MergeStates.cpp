#include "operations/MergeStates.h"

#include <cstdint>
#include <new>
#include <optional>
#include <utility>

#include "feature/FSSettings.h"
#include "feature/accumulators/FSCategoryMaps.h"
#include "modelfiles/ComponentFile.h"
#include "naivebayes/NBAlgorithm.h"
#include "operations/RequestError.h"

namespace PredSelect {

namespace {

std::string Refusal(const std::string& name, const std::string& why) {
  return "merge: " + name + " cannot be added: " + why;
}

[[noreturn]] void Refuse(const std::string& name, const std::string& why) {
  throw RequestError(Refusal(name, why + "."));
}

const char* ObstacleText(std::int64_t obstacle) {
  switch (obstacle) {
    case MCFeature::kStage:
      return "one of the states is not as the data were counted, but screened or ranked";
    case MCFeature::kTargetType:
    case MCFeature::kPredictorType:
      return "a variable is categorical in one state and scale in the other";
    case MCFeature::kWeightColumn:
    case MCFeature::kWeightRounding:
      return "one was counted with weights and the other without, or with other rounding";
    case MCFeature::kCriteria:
      return "other ranking criteria were asked for";
    case MCFeature::kScreeningRules:
      return "other screening rules were asked for";
    case MCFeature::kTooManyCases:
      return "there are more cases than can be counted";
    default:
      return "the commands that counted them differ";
  }
}

// Refuses what keeps two states' descriptions of a variable, called `role`, apart.
void RequireAlike(const StateVariable& into, const StateVariable& from, const std::string& role,
                  const std::string& name) {
  if (into.fName != from.fName) Refuse(name, role + " is another");
  if (into.fbCategorical != from.fbCategorical) {
    const std::string why = role + " is categorical in one state and scale in the other; ";
    throw RequestError(Refusal(name, why), "level", " makes them alike.");
  }
  if (into.fbNumeric != from.fbNumeric) {
    Refuse(name, role + " is of numbers in one state and texts in the other");
  }
}

void RequireAlike(const StateDictionary& into, const StateDictionary& from,
                  const std::string& name) {
  RequireAlike(into.fTarget, from.fTarget, "the dependent variable", name);
  if (into.fWeight != from.fWeight) Refuse(name, "the weight variable is another");
  if (into.fPredictors.size() != from.fPredictors.size()) {
    Refuse(name, "the number of predictors is another");
  }
  for (std::size_t i = 0; i < into.fPredictors.size(); ++i) {
    const StateVariable& predictor = into.fPredictors[i];
    RequireAlike(predictor, from.fPredictors[i], "predictor " + predictor.fName, name);
  }
  if (into.fbScreening != from.fbScreening) {
    Refuse(name, "the use of screening rules is another");
  }
  if (into.fbExcludeUserMissing != from.fbExcludeUserMissing) {
    Refuse(name, "the use of user-missing values is another");
  }
}

// Enters the categories of `from`, and says what its codes are in `into`.
FSCategoryMaps MergeCategories(StateDictionary& into, const StateDictionary& from) {
  FSCategoryMaps maps;
  maps.fTarget = into.fTarget.CodesOf(from.fTarget);
  for (std::size_t i = 0; i < into.fPredictors.size(); ++i) {
    maps.fPredictors.push_back(into.fPredictors[i].CodesOf(from.fPredictors[i]));
  }
  return maps;
}

void AddFeature(ComponentFile& into, const ComponentFile& from, const std::string& name) {
  if (into.fpFeature->GetSettings()->ArePValuesExact() !=
      from.fpFeature->GetSettings()->ArePValuesExact()) {
    Refuse(name, "one was counted with PVALUES=EXACT and the other without");
  }
  if (into.fDictionary.has_value() != from.fDictionary.has_value()) {
    Refuse(name, "only one of the states names its variables");
  }
  std::optional<StateDictionary> dictionary = into.fDictionary;
  FSCategoryMaps maps;
  if (dictionary) {
    RequireAlike(*dictionary, *from.fDictionary, name);
    maps = MergeCategories(*dictionary, *from.fDictionary);
  }
  const MCFeature::MCStatus status =
      into.fpFeature->Merge(*from.fpFeature, dictionary ? &maps : nullptr);
  if (status.GetErrorCode() == MCFeature::kOutOfMemory) throw std::bad_alloc();
  // That no part has a valid case yet is no error.
  if (status.GetErrorCode() == MCFeature::kCannotMerge) {
    Refuse(name, ObstacleText(status.GetDiscreteDatum(0)));
  }
  into.fDictionary = std::move(dictionary);
}

bool IsCalibrated(const INBAlgorithm& model) {
  const auto* built = dynamic_cast<const NBAlgorithm*>(&model);
  return built != nullptr && built->GetCalibration().GetMethod() != NBCalibration::kNone;
}

void AddNaive(ComponentFile& into, const ComponentFile& from, const std::string& name) {
  if (IsCalibrated(*into.fpNaive) || IsCalibrated(*from.fpNaive)) {
    throw RequestError(name +
                       " cannot be merged: a calibrated model is among them, and the calibration "
                       "would not be that of the whole.");
  }
  const MCNaive::MCStatus status = into.fpNaive->MergeModel(from.fpNaive.get(), true);
  if (!status.IsError()) return;
  if (status.GetErrorCode() == MCNaive::kNoMemory) throw std::bad_alloc();
  const NBVarList& variables = into.fpNaive->GetVarList();
  const auto var = static_cast<int>(status.GetDiscreteDatum(0));
  const bool isNamed =
      status.GetErrorCode() == MCNaive::kModelsDiffer && var >= 0 && var < variables.Size();
  Refuse(name, isNamed ? "variable " + variables.GetVarAt(var)->GetVariableName() +
                             " has another kind, role or other bins"
                       : "the models are of different variables");
}

void AddPart(ComponentFile& into, const ComponentFile& from, const std::string& name) {
  const std::string why = into.fpPart->Add(*from.fpPart);
  if (!why.empty()) Refuse(name, why);
  into.fpNaive = into.fpPart->Build();
}

void AddRanges(TableRanges& into, const TableRanges& from, const std::string& name) {
  const std::string why = into.Merge(from);
  if (!why.empty()) Refuse(name, why);
}

}  // namespace

void MergedCounts::Note(const ComponentFile& state, const std::string& name) {
  const auto [noted, isNew] = fNames.emplace(DigestOf(state), name);
  if (isNew) return;
  throw RequestError(Refusal(name, "it holds the very counts of " + noted->second + "; "),
                     "allow-equal", " adds them all the same.");
}

void MergeStates(ComponentFile& into, const ComponentFile& from, const std::string& name) {
  if (from.fRanges.has_value() != into.fRanges.has_value()) {
    Refuse(name, "one file holds ranges, the other counts");
  }
  if (into.fRanges) return AddRanges(*into.fRanges, *from.fRanges, name);
  if ((from.fpPart == nullptr) != (into.fpPart == nullptr)) {
    Refuse(name, "one file holds counts of parts for a model, the other something else");
  }
  if (into.fpPart != nullptr) return AddPart(into, from, name);
  if ((from.fpNaive == nullptr) != (into.fpNaive == nullptr)) {
    Refuse(name, "one state is a ranking, the other a model");
  }
  into.fpNaive == nullptr ? AddFeature(into, from, name) : AddNaive(into, from, name);
}

}  // namespace PredSelect
