// Processor time of a stage, added to a total when the stage ends.
#pragma once

#include <ctime>

class FSStopwatch {
 public:
  explicit FSStopwatch(double& total) : fTotal(total), fBefore(total), fStart(std::clock()) {}
  FSStopwatch(const FSStopwatch&) = delete;
  FSStopwatch& operator=(const FSStopwatch&) = delete;
  ~FSStopwatch() { fTotal = Seconds(); }

  // The total including the stage so far, in seconds.
  double Seconds() const {
    return fBefore + static_cast<double>(std::clock() - fStart) / CLOCKS_PER_SEC;
  }

 private:
  double& fTotal;
  double fBefore;
  std::clock_t fStart;
};
