#include "apps/predselect/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "apps/predselect/Options.h"
#include "host/output/render/RenderJson.h"
#include "host/session/HostIOError.h"
#include "host/session/OutputFile.h"
#include "host/text/VisibleText.h"

namespace PredSelectApp {

namespace {

constexpr int kDefaultWidth = 100;
constexpr int kLeastWidth = 40;

int WidthOf(int descriptor) {
  if (const char* columns = std::getenv("COLUMNS")) {
    int width = 0;
    (void)std::from_chars(columns, columns + std::strlen(columns), width);
    if (width > 0) return width;
  }
  winsize size{};
  const bool known = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : kDefaultWidth;
}

bool WantsColor(Color color, int descriptor) {
  if (color != Color::kAuto) return color == Color::kAlways;
  const char* noColor = std::getenv("NO_COLOR");
  return isatty(descriptor) != 0 && (noColor == nullptr || *noColor == '\0');
}

}  // namespace

MCHost::TextOptions PageOptions(const ResultOptions& options, bool forMessages) {
  const int descriptor = forMessages ? STDERR_FILENO : STDOUT_FILENO;
  const bool toFile = !forMessages && !options.fFile.empty();
  MCHost::TextOptions page;
  page.fWidth =
      static_cast<std::size_t>(std::max(toFile ? kDefaultWidth : WidthOf(descriptor), kLeastWidth));
  page.fbColor = toFile ? options.fColor == Color::kAlways : WantsColor(options.fColor, descriptor);
  page.fbMessages = toFile;  // otherwise they have been shown as they came
  return page;
}

bool WantsProgress(const ResultOptions& options) {
  return isatty(STDERR_FILENO) != 0 && options.fbProgress && !options.fbQuiet;
}

void PrintError(const std::string& line) {
  std::fputs((MCHost::VisibleText(line, "") + "\n").c_str(), stderr);
}

void WriteResults(const ResultOptions& options, const std::string& text) {
  if (!options.fFile.empty()) {
    MCHost::OutputFile file(options.fFile);
    file.Write(text);
    file.Commit();
    return;
  }
  const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  if (!written || std::fflush(stdout) != 0) {
    throw MCHost::HostIOError("standard output", "",
                              std::string("cannot be written: ") + std::strerror(errno));
  }
}

void WriteDocument(const MCHost::OutputDocument& document, const ResultOptions& options) {
  const bool json = options.fFormat == OutputFormat::kJson;
  WriteResults(options, json ? MCHost::RenderJson(document)
                             : MCHost::RenderText(document, PageOptions(options, false)));
}

}  // namespace PredSelectApp
