// Several processes that work on the parts of the data at once (--jobs): this program, started
// again with the same command line.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "apps/predselect/JobFrames.h"
#include "host/data/IPartPasses.h"

namespace MCHost {
class DataTable;
}

namespace PredSelectApp {

class ProgressLine;
struct Options;

class JobPasses : public MCHost::IPartPasses {
 public:
  // Starts so many processes; throws HostIOError where that fails. REQUIRES: no more than parts.
  JobPasses(const std::vector<std::string>& arguments, const std::vector<std::string>& parts,
            std::size_t jobs);
  JobPasses(const JobPasses&) = delete;
  JobPasses& operator=(const JobPasses&) = delete;
  ~JobPasses() override;

  // Opens all parts; their merged ranges, and the notes on how they were read. Throws as opening
  // the data here would.
  std::string Open(std::vector<std::string>& notes);
  // Lets all parts count with these ranges.
  void Use(const std::string& ranges);
  std::string Pass(MCHost::PassOver over, const std::string& request) override;

 private:
  struct Job {
    pid_t fProcess = -1;
    int fToIt = -1;
    int fFromIt = -1;
    std::vector<std::size_t> fParts;
  };

  void Start(Job& job, const std::vector<std::string>& arguments);
  static void End(const Job& job);
  void EndAll() const;
  // What each process answers, in their order.
  std::vector<std::string> AskAll(const std::vector<JobFrame>& asked);
  // Throws HostIOError for a process that has gone.
  JobFrame AnswerOf(Job& job);
  std::string Merged(const std::vector<std::string>& pieces) const;
  std::string NameOf(const Job& job) const;

  std::vector<std::string> fParts;
  std::vector<Job> fJobs;
};

// The table of the parts of the data, worked on by so many processes as the options say.
// Throws UsageError for data that are one file, and as OpenTable does.
std::unique_ptr<MCHost::DataTable> OpenJobs(const Options& options, ProgressLine& progress);

}  // namespace PredSelectApp
