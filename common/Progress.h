// How an engine tells its caller how far a long pass has come.
//
// The engine fills a report and calls the listener on the run's own thread; the listener reads the
// report by name and returns soon. Neither side keeps the other: a report is valid only during the
// call, and an engine never owns the listener it was given.
#pragma once

#include <string>

class ProgressReport {
 public:
  virtual ~ProgressReport() = default;

  // A count by its name; -1 for a name that this report does not carry.
  virtual long DiscreteMeasure(const std::string& name) const = 0;

  // A measure by its name; the missing value for a name that this report does not carry.
  virtual double ScaleMeasure(const std::string& name) const = 0;
};

class ProgressListener {
 public:
  virtual ~ProgressListener() = default;
  virtual void Report(const ProgressReport& report) = 0;
};
