// Tells a run when to stop: at the user's wish or when its time is used up.
//
// The clock starts at construction. Once stopped, always stopped, and the first cause is kept.
#pragma once

#include <chrono>

#include "common/Cancel.h"

class MCStopProcessor : public MCQueryCancel {
 public:
  enum Cause { kRunning = 0, kTimeLimit = 1, kUser = 2 };

  // A limit of 0 means no limit. The user's wish is asked of the current session.
  explicit MCStopProcessor(double limitSeconds);

  // Cheap enough to be asked for every case: the clock is read once in a while only.
  bool IsCancel() override;

  Cause GetCause() const;
  double GetLimitSeconds() const;
};
