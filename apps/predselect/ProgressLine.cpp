#include "apps/predselect/ProgressLine.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>

#include "host/text/VisibleText.h"

namespace PredSelectApp {

namespace {

constexpr auto kFirst = std::chrono::seconds(1);
constexpr auto kBetween = std::chrono::milliseconds(200);
constexpr char kErase[] = "\r\x1b[K";

std::atomic<bool> gShown{false};

}  // namespace

ProgressLine::ProgressLine(bool enabled) {
  if (enabled) fDrawer = std::thread([this] { Redraw(); });
}

ProgressLine::~ProgressLine() {
  Clear();
  if (!fDrawer.joinable()) return;
  {
    const std::lock_guard lock(fMutex);
    fbEnded = true;
  }
  fChanged.notify_all();
  fDrawer.join();
}

void ProgressLine::Show(const std::string& text) {
  if (!fDrawer.joinable()) return;
  const std::lock_guard lock(fMutex);
  fText = text;
}

void ProgressLine::Clear() {
  const std::lock_guard lock(fMutex);
  fText.clear();
  Erase();
}

void ProgressLine::Erase() noexcept {
  if (gShown.exchange(false)) (void)!write(STDERR_FILENO, kErase, sizeof kErase - 1);
}

void ProgressLine::Redraw() {
  std::unique_lock lock(fMutex);
  fChanged.wait_for(lock, kFirst, [this] { return fbEnded; });
  while (!fbEnded) {
    if (!fText.empty()) Draw();
    fChanged.wait_for(lock, kBetween, [this] { return fbEnded; });
  }
}

void ProgressLine::Draw() const {
  using std::chrono::seconds;
  const auto elapsed = std::chrono::duration_cast<seconds>(Clock::now() - fStart).count();
  const std::string line =
      kErase + MCHost::VisibleText(fText, "") + " (" + std::to_string(elapsed) + " s)";
  gShown = true;
  (void)!write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace PredSelectApp
