// How a Naive Bayes component works: progress, cancel, storage, threads and random numbers. A plain
// value that the component copies; listener, cancel probe and user generator stay the caller's and
// must outlive the component.
#pragma once

#include <iosfwd>
#include <string>

#include "common/Cancel.h"
#include "common/MCRandom.h"
#include "common/Progress.h"

class NaiveBayesSettings {
 public:
  // The numbers are seen by callers: do not renumber.
  enum RNGChoice { kMersenneTwister = 0, kOlderPortable = 1, kLibrary = 2, kUserProvided = 3 };
  static const char* GetRNGName(RNGChoice choice);

  ProgressListener* GetProgressListener() const { return fpListener; }
  void SetProgressListener(ProgressListener* listener) { fpListener = listener; }
  // Reports left out after each one sent; a number below 0 changes nothing.
  int GetNSkippedReports() const { return fNSkippedReports; }
  void SetNSkippedReports(int skipped) {
    if (skipped >= 0) fNSkippedReports = skipped;
  }
  MCQueryCancel* GetCancelPointer() const { return fpCancel; }
  void SetCancelPointer(MCQueryCancel* cancel) { fpCancel = cancel; }
  // More records than this go to a temporary file during selection, and forward steps then use
  // simulated records.
  long GetMaxRecordsInMemory() const { return fNMaxInMemory; }
  void SetMaxRecordsInMemory(long records) { fNMaxInMemory = records; }
  int GetSampleSize4SimData() const { return fNSimulated; }
  void SetSampleSize4SimData(int records) { fNSimulated = records; }
  unsigned int GetRandomSeed() const { return fSeed; }
  void SetRandomSeed(unsigned int seed) { fSeed = seed; }
  RNGChoice GetRNGOption() const { return fRNG; }
  void SetRNGOption(RNGChoice choice) { fRNG = choice; }
  MCCommon::MCRandom* GetUserRNG() const { return fpUserRNG; }
  void SetUserRNG(MCCommon::MCRandom* generator) { fpUserRNG = generator; }
  // The beginning of temporary file names, normally a directory with its separator; empty for the
  // system's temporary directory.
  const std::string& GetTempDir() const { return fTempDir; }
  void SetTempDir(const std::string& directory) { fTempDir = directory; }

  // How many threads training and selection may use, the caller's among them; a number below 1
  // changes nothing. No result depends on it.
  int GetNThreads() const { return fNThreads; }
  void SetNThreads(int threads) {
    if (threads >= 1) fNThreads = threads;
  }

  bool operator==(const NaiveBayesSettings&) const = default;
  void Display(std::ostream& os) const;

  // As INBUserMissing says. Listener, cancel probe, user generator, temporary directory and threads
  // are not part of saved state; reading leaves them as they are.
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);

  ProgressListener* fpListener = nullptr;
  int fNSkippedReports = 0;
  MCQueryCancel* fpCancel = nullptr;
  long fNMaxInMemory = 1000;
  int fNSimulated = 1000;
  unsigned int fSeed = 876543;
  RNGChoice fRNG = kMersenneTwister;
  MCCommon::MCRandom* fpUserRNG = nullptr;
  std::string fTempDir;
  int fNThreads = 1;
};
