#include "naivebayes/StatusMessages.h"

namespace MCNaive {

namespace {

using Message = MCCommon::StatusMessage;

constexpr Message kMessages[] = {
    {kNoRecordsFound, "All cases excluded in Predictor Selection...", Message::kCode},
    {kNoSelectionData, "All cases excluded in Predictor Selection...", Message::kCode},
    {kNoTestRecords, "No valid cases in test sample...", Message::kCode},
    {kTooFewRecords, "Too few training cases...", Message::kCode},
    {kTemporaryFile, "Temporary file in ^1 failed...", Message::kTempFolder},
    {kSizeReduced, "Exact size reduced in training cases...", Message::kCode},
    {kPredictorDropped, "Predictor ^1 constant in training cases...", Message::kVariable},
    {kNoInputToExport, "No predictor for the model file...", Message::kCode},
    {kTextNotForXML, "Model file cannot hold the texts of variable ^1...", Message::kVariable},
    {kNoMemory, "Not enough memory for the model...", Message::kNothing},
    {kUserMissingUnusable, "User-missing values of ^1 cannot be met...", Message::kVariable},
    {kRoleTwice, "Second target or weight ^1...", Message::kVariable},
    {kNoBins, "Predictor ^1 has no bins...", Message::kVariable},
    {kWeightNotFinite, "Model file cannot hold the weights...", Message::kNothing},
};
constexpr Message kApplicationText = {
    kTextNotForXML, "Model file cannot hold the texts of the application...", Message::kNothing};

constexpr Message kOtherError = {0, "Naive Bayes run failed, status ^1...", Message::kCode};

}  // namespace

const Message* MessageOf(const MCStatus& status) {
  if (status.GetErrorCode() == kTextNotForXML && status.GetDiscreteDatum(0) < 0) {
    return &kApplicationText;
  }
  const Message* message = status.IsOK() ? nullptr : FindMessage(kMessages, status.GetErrorCode());
  return message == nullptr && status.IsError() ? &kOtherError : message;
}

}  // namespace MCNaive
