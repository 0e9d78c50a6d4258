// One line on the terminal that says what a long run is at, how far it has come, and for how long.
//
// Nothing is shown during the first second. From then on the line is drawn anew a few times a
// second, also while the run has nothing to tell, so that a long step is seen to be at work.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace PredSelectApp {

class ProgressLine {
 public:
  // A line that is not enabled never shows. Only a terminal that moves its cursor should be given
  // one.
  explicit ProgressLine(bool enabled);
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine();

  void Show(const std::string& text);

  // Takes the line away, so that something else can be printed. Stays away until the next Show().
  void Clear();

  // Takes away whatever line is shown. May be called from a signal handler.
  static void Erase() noexcept;

 private:
  using Clock = std::chrono::steady_clock;

  void Draw() const;
  void Redraw();

  const Clock::time_point fStart = Clock::now();
  std::mutex fMutex;  // of what follows
  std::condition_variable fChanged;
  std::string fText;
  bool fbEnded = false;
  std::thread fDrawer;  // none where the line is not enabled
};

}  // namespace PredSelectApp
