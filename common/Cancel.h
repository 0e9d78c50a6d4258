// How a caller stops a long run: the engine polls, the caller answers.
#pragma once

class MCQueryCancel {
 public:
  virtual ~MCQueryCancel() = default;

  // True when the run should stop. Called often, from the run's own thread; must be cheap.
  virtual bool IsCancel() = 0;
};

namespace MCCommon {

// A component's own view of a cancel: the caller's probe, whose true is kept, and a flag that, once
// set, stays set.
class CancelInfo {
 public:
  explicit CancelInfo(MCQueryCancel* probe = nullptr) : fpProbe(probe) {}

  // True when SetCancel() was called or the probe has answered true since the last TakeCancel().
  bool IsCancel() {
    if (!fbCancelled && !fbAnswered && fpProbe != nullptr) fbAnswered = fpProbe->IsCancel();
    return fbCancelled || fbAnswered;
  }
  void SetCancel() { fbCancelled = true; }

  // IsCancel() for the end of an operation that leaves the component as it was: the probe is asked
  // anew by the next one.
  bool TakeCancel() {
    const bool isCancel = IsCancel();
    fbAnswered = false;
    return isCancel;
  }

  // Replaces the probe, which stays the caller's; null means none.
  void SetCancelPtr(MCQueryCancel* probe) { fpProbe = probe; }

 private:
  MCQueryCancel* fpProbe;
  bool fbAnswered = false;
  bool fbCancelled = false;
};

}  // namespace MCCommon
