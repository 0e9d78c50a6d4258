#include "host/cases/MCStopProcessor.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

namespace {

double SteadySeconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

constexpr int kMaxStride = 64;
constexpr double kReadingGap = 0.0005;  // seconds between readings that the stride aims at

}  // namespace

MCStopProcessor::MCStopProcessor(double limitSeconds)
    : MCStopProcessor(limitSeconds, SteadySeconds) {}

MCStopProcessor::MCStopProcessor(double limitSeconds, std::function<double()> clock)
    : fpSession(&MCHost::CurrentSession()),
      fClock(std::move(clock)),
      fLimit(limitSeconds),
      fStart(fClock()),
      fLastRead(fStart) {}

bool MCStopProcessor::IsCancel() {
  if (fCause != kRunning) return true;
  if (fpSession->IsCancelled()) {
    fCause = kUser;
  } else if (fLimit > 0.0 && --fCountdown <= 0) {
    ReadClock();
  }
  return fCause != kRunning;
}

// Callers that ask for every case make the stride grow, callers that ask once in a while are
// answered by the clock each time.
void MCStopProcessor::ReadClock() {
  const double now = fClock();
  fStride = now - fLastRead < kReadingGap ? std::min(2 * fStride, kMaxStride) : 1;
  fLastRead = now;
  fCountdown = fStride;
  if (now - fStart >= fLimit) fCause = kTimeLimit;
}
