#include "apps/predselect/MergeCommand.h"

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/Interrupt.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/StateFile.h"
#include "apps/predselect/UsageError.h"
#include "feature/FSSettings.h"
#include "feature/accumulators/FSCategoryMaps.h"
#include "host/session/HostIOError.h"
#include "host/session/OutputFile.h"

namespace PredSelectApp {

namespace {

[[noreturn]] void Refuse(const std::string& path, const std::string& why) {
  throw UsageError("merge: " + path + " cannot be added: " + why + ".");
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

// What keeps two states' descriptions of a variable apart; empty for nothing.
std::string Difference(const StateVariable& into, const StateVariable& from) {
  if (into.fName != from.fName) return " is another";
  if (into.fbCategorical != from.fbCategorical) {
    return " is categorical in one state and scale in the other; --level makes them alike";
  }
  if (into.fbNumeric != from.fbNumeric) return " is of numbers in one state and texts in the other";
  return "";
}

// The first thing that differs, and how; empty when there is none.
std::string FirstDifference(const StateDictionary& into, const StateDictionary& from) {
  std::string difference = Difference(into.fTarget, from.fTarget);
  if (!difference.empty()) return "the dependent variable" + difference;
  if (into.fWeight != from.fWeight) return "the weight variable is another";
  if (into.fPredictors.size() != from.fPredictors.size()) {
    return "the number of predictors is another";
  }
  for (std::size_t i = 0; i < into.fPredictors.size(); ++i) {
    difference = Difference(into.fPredictors[i], from.fPredictors[i]);
    if (!difference.empty()) return "predictor " + into.fPredictors[i].fName + difference;
  }
  if (into.fbScreening != from.fbScreening) return "the use of screening rules is another";
  return into.fbExcludeUserMissing == from.fbExcludeUserMissing
             ? ""
             : "the use of user-missing values is another";
}

void AddFeature(ComponentFile& into, const ComponentFile& from, const std::string& path) {
  if (into.fDictionary.has_value() != from.fDictionary.has_value()) {
    Refuse(path, "only one of the states names its variables");
  }
  FSCategoryMaps maps;
  if (into.fDictionary) {
    const std::string difference = FirstDifference(*into.fDictionary, *from.fDictionary);
    if (!difference.empty()) Refuse(path, difference);
    maps.fTarget = into.fDictionary->fTarget.CodesOf(from.fDictionary->fTarget);
    for (std::size_t i = 0; i < into.fDictionary->fPredictors.size(); ++i) {
      maps.fPredictors.push_back(
          into.fDictionary->fPredictors[i].CodesOf(from.fDictionary->fPredictors[i]));
    }
  }
  const MCFeature::MCStatus status =
      into.fpFeature->Merge(*from.fpFeature, into.fDictionary ? &maps : nullptr);
  if (status.IsError()) Refuse(path, ObstacleText(status.GetDiscreteDatum(0)));
}

void AddNaive(ComponentFile& into, const ComponentFile& from, const std::string& path) {
  const MCNaive::MCStatus status = into.fpNaive->MergeModel(from.fpNaive.get(), true);
  if (!status.IsError()) return;
  const NBVarList& variables = into.fpNaive->GetVarList();
  const auto var = static_cast<int>(status.GetDiscreteDatum(0));
  const bool isNamed =
      status.GetErrorCode() == MCNaive::kModelsDiffer && var >= 0 && var < variables.Size();
  Refuse(path, isNamed ? "variable " + variables.GetVarAt(var)->GetVariableName() +
                             " has another kind, role or other bins"
                       : "the models are of different variables");
}

std::string Write(const ComponentFile& file, const std::string& path, bool xml) {
  if (file.fpNaive != nullptr) return WriteComponentFile(path, xml, *file.fpNaive);
  return WriteComponentFile(path, xml, *file.fpFeature,
                            file.fDictionary ? &*file.fDictionary : nullptr);
}

}  // namespace

int MergeStates(const Options& options) {
  ComponentFile merged = OpenState(options.fStates.front());
  for (std::size_t i = 1; i < options.fStates.size() && !IsInterrupted(); ++i) {
    const std::string& path = options.fStates[i];
    const ComponentFile next = OpenState(path);
    if ((next.fpNaive == nullptr) != (merged.fpNaive == nullptr)) {
      Refuse(path, "one state is a ranking, the other a model");
    }
    merged.fpNaive == nullptr ? AddFeature(merged, next, path) : AddNaive(merged, next, path);
  }
  MCHost::OutputFile file(options.fSaveState);
  const std::string trouble = Write(merged, file.WritePath(), IsXMLStateName(options.fSaveState));
  if (!trouble.empty()) throw MCHost::HostIOError(options.fSaveState, "", trouble);
  if (IsInterrupted()) return kCancelled;
  file.Commit();
  return kCompleted;
}

}  // namespace PredSelectApp
