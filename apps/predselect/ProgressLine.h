// One line on the terminal that says how far a long run has come.
//
// Nothing is shown during the first second, nor more often than a few times a second.
#pragma once

#include <chrono>
#include <string>

namespace PredSelectApp {

class ProgressLine {
 public:
  // A line that is not enabled never shows. Only a terminal should be given one.
  explicit ProgressLine(bool enabled);
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine();

  void Show(const std::string& text);

  // Takes the line away, so that something else can be printed.
  void Clear();

 private:
  using Clock = std::chrono::steady_clock;

  bool fbEnabled;
  bool fbShown = false;
  Clock::time_point fNext;
};

}  // namespace PredSelectApp
