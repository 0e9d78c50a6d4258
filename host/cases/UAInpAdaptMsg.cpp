#include "host/cases/UAInpAdaptMsg.h"

#include <fmt/format.h>

#include "host/cases/UALostWeights.h"
#include "host/output/BpError.h"
#include "host/output/ShowText.h"

using MCHost::OutputMessage;
using MCHost::RaiseMessage;

// The messages are about the active data as a whole; nothing of them is kept.
UAInpAdaptMsg::UAInpAdaptMsg(ProcedureDataSource& /*source*/) {}

void UAInpAdaptMsg::NoValidCases(const char* why) const {
  RaiseMessage(OutputMessage::kError, "No valid cases...", {MCHost::KeyText(why)});
}

void UAInpAdaptMsg::NoValidCasesForSelect() const {
  RaiseMessage(OutputMessage::kWarning, "No valid cases for selection...");
}

void UAInpAdaptMsg::WeightsLost(const UALostWeights& weights) const {
  if (weights.GetNLost() == 0) return;
  RaiseMessage(
      OutputMessage::kWarning, "Weights of ^1 cases rounded to zero: ^2, ^3, ^4, ^5...",
      {std::to_string(weights.GetNLost()), std::to_string(weights.GetNCases()),
       fmt::format("{:.6g}", weights.GetLostWeight()), fmt::format("{:.6g}", weights.GetWeight()),
       fmt::format("{:.15g}", weights.GetFactor())});
}

void UAInpAdaptMsg::ReadFailed(const std::string& reason) const {
  RaiseMessage(OutputMessage::kError, "Reading the data failed: ^1", {reason});
}

void UAInpAdaptMsg::Stopped(const MCStopProcessor& stop, long long recordsRead) const {
  if (stop.GetCause() == MCStopProcessor::kRunning) return;
  const std::string records = std::to_string(recordsRead);
  if (stop.GetCause() == MCStopProcessor::kUser) {
    RaiseMessage(OutputMessage::kError, "Stopped by the user after ^1 records...", {records});
  } else {
    // Minutes times 60 carry a last digit that nobody typed.
    RaiseMessage(OutputMessage::kError, "Time limit of ^2 seconds reached after ^1 records...",
                 {records, fmt::format("{:.15g}", stop.GetLimitSeconds())});
  }
}
