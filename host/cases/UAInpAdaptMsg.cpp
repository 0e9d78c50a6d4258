#include "host/cases/UAInpAdaptMsg.h"

#include <fmt/format.h>

#include "host/output/BpError.h"
#include "host/output/pivot/BpComposite.h"

namespace {

constexpr int kShowNow = 2;
constexpr int kWarning = 2;
constexpr int kError = 3;

}  // namespace

// The messages are about the active data as a whole; nothing of them is kept.
UAInpAdaptMsg::UAInpAdaptMsg(ProcedureDataSource& /*source*/) {}

void UAInpAdaptMsg::NoValidCases() const {
  BpError(BpComposite("No valid cases..."), kShowNow, kError);
}

void UAInpAdaptMsg::NoValidCasesForSelect() const {
  BpError(BpComposite("No valid cases for selection..."), kShowNow, kWarning);
}

void UAInpAdaptMsg::ReadFailed(const std::string& reason) const {
  BpComposite text("Reading the data failed: ^1");
  BpError(text.AddLiteral(reason), kShowNow, kError);
}

void UAInpAdaptMsg::Stopped(const MCStopProcessor& stop, long long recordsRead) const {
  if (stop.GetCause() == MCStopProcessor::kRunning) return;
  const bool byUser = stop.GetCause() == MCStopProcessor::kUser;
  BpComposite text(byUser ? "Stopped by the user after ^1 records..."
                          : "Time limit of ^2 seconds reached after ^1 records...");
  text.AddLiteral(fmt::format("{}", recordsRead));
  if (!byUser) text.AddLiteral(fmt::format("{}", stop.GetLimitSeconds()));
  BpError(text, kShowNow, kError);
}
