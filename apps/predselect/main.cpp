// The command line of PredSelect: reads options, runs what they ask for, and turns every failure
// into one message and an exit code.

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <exception>

#include "apps/predselect/Allocation.h"
#include "apps/predselect/DescribeCommand.h"
#include "apps/predselect/DryRun.h"
#include "apps/predselect/EvaluateCommand.h"
#include "apps/predselect/ExitCode.h"
#include "apps/predselect/ExportCommand.h"
#include "apps/predselect/Failure.h"
#include "apps/predselect/FileUses.h"
#include "apps/predselect/InspectCommand.h"
#include "apps/predselect/Interrupt.h"
#include "apps/predselect/MergeCommand.h"
#include "apps/predselect/ModelVerb.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgramSurroundings.h"
#include "apps/predselect/RangeCommand.h"
#include "apps/predselect/RankVerb.h"
#include "apps/predselect/RunCommand.h"
#include "apps/predselect/ScoreCommand.h"
#include "apps/predselect/Terminal.h"
#include "apps/predselect/ViewCommand.h"
#include "host/arrow/ReadingThreads.h"
#include "host/session/OutputGroup.h"

namespace {

using namespace PredSelectApp;

int ActAlone(const Options& options) {
  switch (options.fAction) {
    case Options::kRun:
      return RunCommands(options);
    case Options::kRank:
      return RankData(options);
    case Options::kModel:
      return ModelData(options);
    case Options::kDescribe:
      return DescribeData(options);
    case Options::kInspect:
      return InspectState(options);
    case Options::kScore:
      return ScoreData(options);
    case Options::kEvaluate:
      return EvaluateModel(options);
    case Options::kExport:
      return ExportModel(options);
    case Options::kMerge:
      return MergeStates(options);
    case Options::kRange:
      return FindRanges(options);
    case Options::kView:
    case Options::kNone:
      WriteResults(options.fResult, options.fShown);
      return kCompleted;
  }
  return kCompleted;
}

// What is written takes its place at the end, all of it or nothing.
int Act(const Options& options) {
  if (options.fServing > 0) {
    MCHost::SetReadingThreads(options.fServing);
    return ActAlone(options);
  }
  if (options.fAction != Options::kNone) {
    CheckOutputs(options);
    MCHost::SetReadingThreads(ThreadsOf(options));
  }
  if (options.fbDryRun) return DryRun(options);
  // Shown before the program ends, by another one.
  if (options.fAction == Options::kView) return ViewFile(options);
  MCHost::OutputGroup outputs;
  const int code = ActAlone(options);
  if (outputs.Commit(IsInterrupted)) return code;
  if (IsInterrupted()) return kCancelled;
  PrintError("predselect: no file was written, since not all could be.");
  return code;
}

// A standard stream that the caller has closed must not become the first file that is opened.
void ReserveStandardStreams() {
  int descriptor = 0;
  while (descriptor >= 0 && descriptor <= STDERR_FILENO) descriptor = open("/dev/null", O_RDONLY);
  if (descriptor > STDERR_FILENO) close(descriptor);
}

// The outputs of a run are open until all take their places, which are many where many commands
// write result documents.
void AllowManyFiles() {
  rlimit files{};
  if (getrlimit(RLIMIT_NOFILE, &files) != 0) return;
  files.rlim_cur = files.rlim_max;
  (void)setrlimit(RLIMIT_NOFILE, &files);
}

bool WantsJson(const Options& options) {
  return options.fResult.fFormat == MCHost::FileFormat::kJson && options.fResult.fFile.empty();
}

int Run(int argc, char** argv) {
  InstallInterruptHandlers();
  Options options;
  try {
    ParseOptions(argc, argv, options);
    const int code = Act(options);
    if (code == kCancelled) SayStopped();
    return code;
  } catch (const std::exception& error) {
    const Failure failure = FailureOf(error);
    Report(failure, WantsJson(options));
    if (failure.fbAtOnce) {
      std::fflush(nullptr);
      _exit(failure.fCode);
    }
    return failure.fCode;
  }
}

}  // namespace

int main(int argc, char** argv) {
  ReserveStandardStreams();
  AllowManyFiles();
  try {
    return Run(argc, argv);
  } catch (const std::exception&) {  // there was not even room for the message
    EndWithoutMemory();
  }
}
