#include "host/output/BpError.h"

#include <algorithm>

#include "host/output/IOutputSink.h"
#include "host/output/TellApart.h"
#include "host/session/HostBlocks.h"
#include "host/session/ISession.h"
#include "host/session/OutputGroup.h"
#include "host/session/SessionScope.h"

namespace {

// A command that says so has failed for want of what surrounds it: its data, room for a file,
// memory. What it would have written is then not known, and an old file is better than a part of a
// new one.
constexpr const char* kWants[] = {
    "Reading the data failed: ^1", "File cannot be written: ^1", "Temporary file in ^1 failed...",
    "Not enough memory in Predictor Selection...", "Not enough memory for the model..."};

void FailOutputs(const std::string& key) {
  MCHost::OutputGroup* outputs = MCHost::OutputGroup::Current();
  if (outputs != nullptr && std::ranges::count(kWants, key) > 0) outputs->Fail();
}

}  // namespace

void BpError(const BpComposite& text, int /*show*/, int level, const std::string& detail) {
  MCHost::ISession& session = MCHost::CurrentSession();
  if (level >= MCHost::OutputMessage::kError) session.CommonBlock().SetError();
  MCHost::OutputText said = text.Finish();
  if (level >= MCHost::OutputMessage::kError) FailOutputs(said.fKey);
  MCHost::TellApart(said);
  session.Output().AddMessage({level, std::move(said), detail});
}

void MCHost::RaiseMessage(OutputMessage::Level level, const std::string& key,
                          const std::vector<std::string>& arguments, const std::string& detail) {
  BpComposite text(key);
  for (const std::string& argument : arguments) text.AddLiteral(argument);
  BpError(text, kBpShowNow, level, detail);
}
