// What an engine calls of its user's, each noting whether that was on the thread that made it.
#pragma once

#include <thread>

#include "common/Cancel.h"
#include "common/Progress.h"

namespace MCTest {

class Watch {
 public:
  void Note() { fbElsewhere = fbElsewhere || std::this_thread::get_id() != fThread; }
  bool IsElsewhere() const { return fbElsewhere; }

 private:
  std::thread::id fThread = std::this_thread::get_id();
  bool fbElsewhere = false;
};

// Cancels once it was asked so many times.
class CancelAfter : public MCQueryCancel, public Watch {
 public:
  explicit CancelAfter(int polls) : fLeft(polls) {}
  bool IsCancel() override {
    Note();
    return --fLeft < 0;
  }

 private:
  int fLeft;
};

class WatchedListener : public ProgressListener, public Watch {
 public:
  void Report(const ProgressReport&) override {
    Note();
    ++fNReports;
  }
  int fNReports = 0;
};

// Cancels once a listener has heard so many reports.
class CancelAtReport : public MCQueryCancel, public Watch {
 public:
  CancelAtReport(const WatchedListener& listener, int reports)
      : fListener(listener), fMost(reports) {}
  bool IsCancel() override {
    Note();
    return fListener.fNReports >= fMost;
  }

 private:
  const WatchedListener& fListener;
  int fMost;
};

}  // namespace MCTest
