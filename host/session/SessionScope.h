// Makes a session the current one of the calling thread while the scope lives. Scopes nest; each
// restores the session before it. Two threads with two sessions do not disturb each other.
#pragma once

namespace MCHost {

class ISession;

class SessionScope {
 public:
  // The session is borrowed and must outlive the scope.
  explicit SessionScope(ISession& session);
  SessionScope(const SessionScope&) = delete;
  SessionScope& operator=(const SessionScope&) = delete;
  ~SessionScope();

 private:
  ISession* fpPrevious;
};

// The thread's current session. REQUIRES: a SessionScope is alive on this thread.
ISession& CurrentSession();

}  // namespace MCHost
