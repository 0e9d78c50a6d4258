// Tells the session how far the engine has come.
#pragma once

#include "common/Progress.h"

class PRSProgress : public ProgressListener {
 public:
  // A report comes after so many records: few enough to be seen moving, many enough to keep the
  // engine's blocks long.
  static constexpr int kRecords = 4096;

  // REQUIRES: a session is installed for this thread.
  void Report(const ProgressReport& report) override;
};
