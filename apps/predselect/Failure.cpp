#include "apps/predselect/Failure.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <system_error>

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/Terminal.h"
#include "apps/predselect/UsageError.h"
#include "host/output/OutputDocument.h"
#include "host/output/render/RenderJson.h"
#include "host/session/HostIOError.h"
#include "operations/RequestError.h"
#include "operations/Version.h"

namespace PredSelectApp {

namespace {

// Whoever was to read the results has had enough, as `head` has: nothing to complain about.
bool IsReaderGone(const MCHost::HostIOError& trouble) {
  return trouble.File() == "standard output" && trouble.Reason().ends_with(std::strerror(EPIPE));
}

}  // namespace

Failure FailureOf(const std::exception& error) {
  if (const auto* usage = dynamic_cast<const UsageError*>(&error)) {
    return {.fCode = kWrongUsage, .fText = usage->what(), .fAdvice = usage->Advice()};
  }
  if (const auto* request = dynamic_cast<const PredSelect::RequestError*>(&error)) {
    return {.fCode = kWrongUsage, .fText = request->TextWithDashes()};
  }
  if (const auto* trouble = dynamic_cast<const MCHost::HostIOError*>(&error)) {
    if (IsReaderGone(*trouble)) return {kDataError, ""};
    return {kDataError, trouble->what(), trouble->File(), trouble->Place()};
  }
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
    return {kDataError,
            "there is not enough memory for what the commands count and show; fewer variables, or "
            "fewer categories, take less"};
  }
  if (const auto* system = dynamic_cast<const std::system_error*>(&error)) {
    return {kDataError,
            std::string("the system refuses what the program needs: ") + system->what()};
  }
  return {kBrokenInvariant, error.what()};
}

void Report(const Failure& failure, bool asJson) {
  if (!failure.fText.empty()) PrintError("predselect: " + failure.fText);
  std::fputs(failure.fAdvice.c_str(), stderr);
  if (!asJson) return;
  MCHost::OutputDocument document;
  document.fVersion = PredSelect::Version();
  document.fFailure = {failure.fCode, failure.fText, failure.fFile, failure.fPlace};
  std::fputs(MCHost::RenderJson(document).c_str(), stdout);
}

}  // namespace PredSelectApp
