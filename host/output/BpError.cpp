#include "host/output/BpError.h"

#include "host/output/IOutputSink.h"
#include "host/output/TellApart.h"
#include "host/session/HostBlocks.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

void BpError(const BpComposite& text, int /*show*/, int level, const std::string& detail) {
  MCHost::ISession& session = MCHost::CurrentSession();
  if (level >= MCHost::OutputMessage::kError) session.CommonBlock().SetError();
  MCHost::OutputText said = text.Finish();
  MCHost::TellApart(said);
  session.Output().AddMessage({level, std::move(said), detail});
}

void MCHost::RaiseMessage(OutputMessage::Level level, const std::string& key,
                          const std::vector<std::string>& arguments, const std::string& detail) {
  BpComposite text(key);
  for (const std::string& argument : arguments) text.AddLiteral(argument);
  BpError(text, kBpShowNow, level, detail);
}
