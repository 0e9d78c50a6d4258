// How a caller stops a long run: the engine polls, the caller answers.
#pragma once

class MCQueryCancel {
 public:
  virtual ~MCQueryCancel() = default;

  // True when the run should stop. Called often, from the run's own thread; must be cheap.
  virtual bool IsCancel() = 0;
};

namespace MCCommon {

// A component's own view of a cancel: the caller's probe and a flag that, once set, stays set.
class CancelInfo {
 public:
  explicit CancelInfo(MCQueryCancel* probe = nullptr) : fpProbe(probe) {}

  // True when SetCancel() was called or the probe has ever answered true.
  bool IsCancel() {
    if (!fbCancelled && fpProbe != nullptr) fbCancelled = fpProbe->IsCancel();
    return fbCancelled;
  }
  void SetCancel() { fbCancelled = true; }

  // Replaces the probe, which stays the caller's; null means none.
  void SetCancelPtr(MCQueryCancel* probe) { fpProbe = probe; }

 private:
  MCQueryCancel* fpProbe;
  bool fbCancelled = false;
};

}  // namespace MCCommon
