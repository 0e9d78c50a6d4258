// Tells the session how far the engine, or a pass of the driver's own, has come.
#pragma once

#include <cstdint>

#include "common/Progress.h"

class PRSProgress : public ProgressListener {
 public:
  // A report comes after so many records: few enough to be seen moving, many enough to keep the
  // engine's blocks long.
  static constexpr int kRecords = 4096;

  // REQUIRES, here and below: a session is installed for this thread.
  void Report(const ProgressReport& report) override;

  // "Reading the data: 4096 cases"; the phase is a key of the string table.
  static void Show(const char* phase, std::int64_t cases);
};
