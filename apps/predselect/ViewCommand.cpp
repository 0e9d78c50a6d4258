#include "apps/predselect/ViewCommand.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include "apps/predselect/ChildProcess.h"
#include "apps/predselect/ExitCode.h"
#include "apps/predselect/Interrupt.h"
#include "apps/predselect/LiveOutput.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/Terminal.h"
#include "apps/predselect/UsageError.h"
#include "host/output/report/RenderReport.h"
#include "host/session/HostIOError.h"
#include "host/session/OutputFile.h"
#include "host/session/Unfinished.h"
#include "operations/InspectState.h"
#include "operations/StateFile.h"
#include "operations/StateKey.h"

namespace PredSelectApp {

namespace {

// A folder of the user's own, with the page in it, for as long as this lives.
class PrivatePage {
 public:
  explicit PrivatePage(const std::string& page) {
    const char* place = std::getenv("TMPDIR");
    fFolder = std::string(place != nullptr && *place != '\0' ? place : "/tmp");
    fFolder += "/predselect-view-XXXXXX";
    if (mkdtemp(fFolder.data()) == nullptr) {
      throw MCHost::HostIOError(fFolder, "",
                                std::string("cannot be made: ") + std::strerror(errno));
    }
    fPath = fFolder + "/report.html";
    fFolderSlot = MCHost::RegisterUnfinished(fFolder.c_str());
    fFileSlot = MCHost::RegisterUnfinished(fPath.c_str());
    MCHost::OutputFile file(fPath);
    file.Write(page);
    file.Commit();
  }
  PrivatePage(const PrivatePage&) = delete;
  PrivatePage& operator=(const PrivatePage&) = delete;
  ~PrivatePage() {
    std::error_code ignored;
    std::filesystem::remove_all(fFolder, ignored);
    for (const int slot : {fFolderSlot, fFileSlot}) MCHost::ForgetUnfinished(slot);
  }

  const std::string& Path() const { return fPath; }

 private:
  std::string fFolder;
  std::string fPath;
  int fFolderSlot = -1;
  int fFileSlot = -1;
};

bool IsJson(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return (file >> std::ws).peek() == '{';
}

std::string ReadWhole(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (file.bad()) {
    throw MCHost::HostIOError(path, "", std::string("cannot be read: ") + std::strerror(errno));
  }
  return text;
}

std::string PageOf(const Options& options) {
  const std::string& path = options.fStates.front();
  if (IsJson(path)) return MCHost::RenderReportOfJson(ReadWhole(path), path);
  ComponentFile state = PredSelect::LoadState(path, PredSelect::ReadStateKey(options.fVerifyKey));
  ProgressLine progress(false);
  ResultOptions report = options.fResult;
  report.fFormat = MCHost::FileFormat::kHtml;
  LiveOutput document(report, progress, path);
  PredSelect::InspectState(state, document);
  return MCHost::RenderReport(document, std::filesystem::path(path).filename().string());
}

// Until a key, the end of the terminal, or an interrupt.
void WaitForUser() {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  while (!IsInterrupted() && poll(&input, 1, 20) <= 0) {
  }
}

}  // namespace

int ViewFile(const Options& options) {
  const bool isFile = !options.fResult.fFile.empty();
  if (!isFile && isatty(STDIN_FILENO) == 0) {
    throw UsageError("view waits at a terminal until you have seen the report; -o writes a file.");
  }
  const std::string text = PageOf(options);
  if (isFile) {
    WriteResults(options.fResult, text);
    return kCompleted;
  }
  const PrivatePage page(text);
  const char* browser = std::getenv("BROWSER");
  const bool isNamed = browser != nullptr && *browser != '\0';
  const bool isOpened = StartChild({isNamed ? browser : "xdg-open", page.Path()});
  if (!isOpened) PrintError("No browser was found (BROWSER, xdg-open). Open the file yourself.");
  PrintError(page.Path());
  PrintError("The file is there until you press Return here.");
  WaitForUser();
  return IsInterrupted() ? kCancelled : kCompleted;
}

}  // namespace PredSelectApp
