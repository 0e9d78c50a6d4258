// The command line of PredSelect: reads options, runs what they ask for, and turns every failure
// into one message and an exit code.

#include <fcntl.h>
#include <unistd.h>

#include <exception>
#include <new>
#include <string>

#include "apps/predselect/DescribeCommand.h"
#include "apps/predselect/ExitCode.h"
#include "apps/predselect/ExportCommand.h"
#include "apps/predselect/FileUses.h"
#include "apps/predselect/InspectCommand.h"
#include "apps/predselect/Interrupt.h"
#include "apps/predselect/MergeCommand.h"
#include "apps/predselect/ModelVerb.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/RankVerb.h"
#include "apps/predselect/RunCommand.h"
#include "apps/predselect/ScoreCommand.h"
#include "apps/predselect/Terminal.h"
#include "apps/predselect/UsageError.h"
#include "host/session/HostIOError.h"
#include "operations/RequestError.h"

namespace {

using namespace PredSelectApp;

int Act(const Options& options) {
  if (options.fAction != Options::kNone) CheckOutputs(options);
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
    case Options::kExport:
      return ExportModel(options);
    case Options::kMerge:
      return MergeStates(options);
    default:
      return options.fExitCode;
  }
}

// A standard stream that the caller has closed must not become the first file that is opened.
void ReserveStandardStreams() {
  int descriptor = 0;
  while (descriptor >= 0 && descriptor <= STDERR_FILENO) descriptor = open("/dev/null", O_RDONLY);
  if (descriptor > STDERR_FILENO) close(descriptor);
}

int Report(const std::string& text, int code) {
  PrintError("predselect: " + text);
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  ReserveStandardStreams();
  InstallInterruptHandlers();
  try {
    return Act(ParseOptions(argc, argv));
  } catch (const UsageError& error) {
    return Report(error.what(), kWrongUsage);
  } catch (const PredSelect::RequestError& error) {
    return Report(error.TextWithDashes(), kWrongUsage);
  } catch (const MCHost::HostIOError& error) {
    return Report(error.what(), kDataError);
  } catch (const std::bad_alloc&) {
    return Report(
        "there is not enough memory for what the commands count and show; fewer variables, or "
        "fewer categories, take less",
        kDataError);
  } catch (const std::exception& error) {
    return Report(error.what(), kBrokenInvariant);
  }
}
