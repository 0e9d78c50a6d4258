// Tells a run when to stop: at the user's wish or when its time is used up.
//
// The clock starts at construction. Once stopped, always stopped, and the first cause is kept.
#pragma once

#include <functional>

#include "common/Cancel.h"

namespace MCHost {
class ISession;
}

class MCStopProcessor : public MCQueryCancel {
 public:
  enum Cause { kRunning = 0, kTimeLimit = 1, kUser = 2 };

  // A limit of 0 means no limit. The user's wish is asked of the current session.
  // REQUIRES: a session is installed for this thread, and lives as long as this.
  explicit MCStopProcessor(double limitSeconds);

  // With a clock of the caller's own, in seconds from any start.
  MCStopProcessor(double limitSeconds, std::function<double()> clock);

  // Cheap enough to be asked for every case: the clock is read once in a while only.
  bool IsCancel() override;

  Cause GetCause() const { return fCause; }
  double GetLimitSeconds() const { return fLimit; }

 private:
  void ReadClock();

  const MCHost::ISession* fpSession;
  std::function<double()> fClock;
  double fLimit;
  double fStart;
  double fLastRead;
  int fStride = 1;  // calls between two readings of the clock
  int fCountdown = 1;
  Cause fCause = kRunning;
};
