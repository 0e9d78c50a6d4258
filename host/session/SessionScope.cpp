#include "host/session/SessionScope.h"

#include "common/MCAssert.h"

namespace MCHost {

namespace {
thread_local ISession* gpCurrentSession = nullptr;
}

SessionScope::SessionScope(ISession& session) : fpPrevious(gpCurrentSession) {
  gpCurrentSession = &session;
}

SessionScope::~SessionScope() { gpCurrentSession = fpPrevious; }

ISession& CurrentSession() {
  MCCommon::Assert(gpCurrentSession != nullptr, "a session is installed for this thread",
                   "host/session/SessionScope");
  return *gpCurrentSession;
}

}  // namespace MCHost
