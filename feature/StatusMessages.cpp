#include "feature/StatusMessages.h"

namespace MCFeature {

namespace {

using Message = MCCommon::StatusMessage;

constexpr Message kMessages[] = {
    {kTargetConstant, "Dependent variable constant...", Message::kNothing},
    {kAllCasesExcluded, "All cases excluded in Predictor Selection...", Message::kNothing},
    {kAllMissingOrConstant, "All predictors missing or constant...", Message::kNothing},
    {kAllScreenedOut, "No predictors were selected.", Message::kNothing},
    {kNoValidWeight, "There are no valid cases...", Message::kNothing},
    {kOutOfMemory, "Not enough memory in Predictor Selection...", Message::kNothing},
    {kWeightsTooLarge, "Weights too large in Predictor Selection...", Message::kNothing},
};

}  // namespace

const Message* MessageOf(const MCStatus& status) {
  return status.IsOK() ? nullptr : FindMessage(kMessages, status.GetErrorCode());
}

}  // namespace MCFeature
