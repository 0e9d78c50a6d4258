// What an operation is told of the application around it, and how it ended.
//
// A plain value, read while the operation runs and not kept. The functions are called on the
// caller's thread only, however many threads work; an empty one is never called.
#pragma once

#include <functional>
#include <string>

#include "host/session/ISession.h"
#include "operations/Version.h"

namespace PredSelect {

struct Surroundings {
  // Named in the files that are written; an empty copyright stands for the library's own.
  MCHost::AppParams fApplication{"PredSelect", Version(), ""};
  std::string fStateKey{};         // that saved states are signed with; empty for no signature
  std::string fTempPath = "/tmp";  // of temporary files, without a trailing separator
  int fThreads = 1;  // that a job may use, the caller's among them; no result depends on it
  std::function<bool()> fIsCancelled;  // true once the user wants to stop; must be cheap
  std::function<void(const std::string&)> fReportProgress;  // how far a long pass has come

  bool IsCancelled() const { return fIsCancelled && fIsCancelled(); }
};

// Thrown where the user has stopped what has no result to give.
struct Cancelled {};

enum class Outcome {
  kCompleted,
  kCommandError,  // a command reported an error; the document's messages say which
  kFileLost,      // the same, but all that is lost are files of the commands' own
  kCancelled      // stopped at the caller's wish; the document holds what was done until then
};

}  // namespace PredSelect
