#include "apps/predselect/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

#include "apps/predselect/ChosenRecords.h"
#include "apps/predselect/Interrupt.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/Pager.h"
#include "host/arrow/DataFile.h"
#include "host/data/ArrowCDataInterface.h"
#include "host/data/MemoryTable.h"
#include "host/output/OutputDocument.h"
#include "host/output/render/RenderJson.h"
#include "host/output/render/RenderRecords.h"
#include "host/output/report/RenderReport.h"
#include "host/session/HostIOError.h"
#include "host/session/OutputFile.h"
#include "host/session/OutputGroup.h"
#include "host/text/VisibleText.h"

namespace PredSelectApp {

namespace {

using MCHost::FileFormat;

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

// Whether it is a terminal that does what it is told by escapes.
bool IsTerminal(int descriptor) {
  const char* kind = std::getenv("TERM");
  return isatty(descriptor) != 0 && (kind == nullptr || std::strcmp(kind, "dumb") != 0);
}

bool WantsColor(Color color, int descriptor) {
  if (color != Color::kAuto) return color == Color::kAlways;
  const char* noColor = std::getenv("NO_COLOR");
  return IsTerminal(descriptor) && (noColor == nullptr || *noColor == '\0');
}

bool IsToFile(const ResultOptions& options) {
  return ResultPath(options) != MCHost::OutputFile::kStandardOutput;
}

// The file's own name says what a report is of; it stands on the page of whoever gets it.
std::string HeadingOf(const MCHost::OutputDocument& document) {
  const std::string name = std::filesystem::path(document.fDataSource).filename().string();
  return name == "-" || name.empty() ? "Standard input" : name;
}

bool IsOfBytes(FileFormat format) {
  return format == FileFormat::kParquet || format == FileFormat::kArrow;
}

void WriteRecords(MCHost::FlatRecords records, const ResultOptions& options) {
  if (!IsOfBytes(options.fFormat)) {
    WriteResults(options, MCHost::RenderRecords(records, options.fFormat));
    return;
  }
  ArrowArrayStream stream{};
  MCHost::WriteArrowStream(std::make_unique<MCHost::FlatBatches>(std::move(records)), &stream);
  MCHost::MemoryTable table(&stream);
  MCHost::WriteDataFile(table, {options.fFormat, ResultPath(options)});
}

// What was asked for may have nothing to tell: predictions without drift, no missing values. Then
// there are no records, and the run is none the worse for it.
void WriteRecordsOf(const MCHost::OutputDocument& document, const ResultOptions& options) {
  std::optional<MCHost::FlatRecords> records = ChosenRecords(document, options.fTable);
  const auto isCompleted = [](const MCHost::OutputRun& run) { return run.fbCompleted; };
  if (!records && !options.fTable.empty() && std::ranges::all_of(document.GetRuns(), isCompleted)) {
    if (!options.fbQuiet) PrintError("predselect: " + WithoutTable(document, options.fTable));
    records.emplace();
  }
  if (records) WriteRecords(*std::move(records), options);
}

// Whether block characters can be seen: not on a terminal of another encoding, or of no abilities.
bool HasBlocks(int descriptor) {
  if (isatty(descriptor) == 0) return true;
  if (!IsTerminal(descriptor)) return false;
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* locale = std::getenv(name);
    if (locale == nullptr || *locale == '\0') continue;
    std::string encoding = locale;
    for (char& c : encoding) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return encoding.find("utf-8") != std::string::npos ||
           encoding.find("utf8") != std::string::npos;
  }
  return false;
}

// On standard output.
void Show(const ResultOptions& options, const std::string& text) {
  const bool isPage = options.fFormat == FileFormat::kText && IsTerminal(STDOUT_FILENO);
  if (isPage && options.fbPager && ShowInPager(text)) return;
  const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  if (!written || std::fflush(stdout) != 0) {
    throw MCHost::HostIOError("standard output", "",
                              std::string("cannot be written: ") + std::strerror(errno));
  }
}

}  // namespace

MCHost::TextOptions PageOptions(const ResultOptions& options, bool forMessages) {
  const int descriptor = forMessages ? STDERR_FILENO : STDOUT_FILENO;
  const bool toFile = !forMessages && IsToFile(options);
  MCHost::TextOptions page;
  page.fWidth =
      static_cast<std::size_t>(std::max(toFile ? kDefaultWidth : WidthOf(descriptor), kLeastWidth));
  page.fbColor = toFile ? options.fColor == Color::kAlways : WantsColor(options.fColor, descriptor);
  page.fbBlocks = toFile || HasBlocks(descriptor);
  page.fbMessages = toFile;  // otherwise they have been shown as they came
  return page;
}

std::string ResultPath(const ResultOptions& options) {
  return options.fFile.empty() ? MCHost::OutputFile::kStandardOutput : options.fFile;
}

bool ShowsBytes(const ResultOptions& options) {
  return IsOfBytes(options.fFormat) && !IsToFile(options) && isatty(STDOUT_FILENO) != 0;
}

bool WantsProgress(const ResultOptions& options) {
  return IsTerminal(STDERR_FILENO) && options.fbProgress && !options.fbQuiet;
}

void PrintError(const std::string& line) {
  std::fputs((MCHost::VisibleText(line, "") + "\n").c_str(), stderr);
}

void WriteResults(const ResultOptions& options, const std::string& text) {
  if (IsToFile(options)) {
    MCHost::OutputFile file(options.fFile);
    file.Write(text);
    file.Commit();
    return;
  }
  // Files first, whatever becomes of the reader of the results; and results whatever becomes of the
  // files. A document says itself which files there are.
  std::exception_ptr lost;
  try {
    if (auto* files = MCHost::OutputGroup::Current()) files->Commit(IsInterrupted);
  } catch (const MCHost::HostIOError&) {
    if (options.fFormat == FileFormat::kJson) throw;
    lost = std::current_exception();
  }
  Show(options, text);
  if (lost) std::rethrow_exception(lost);
}

void WriteDocument(const MCHost::OutputDocument& document, const ResultOptions& options) {
  const auto& runs = document.GetRuns();
  const auto isCompleted = [](const MCHost::OutputRun& run) { return run.fbCompleted; };
  if (IsInterrupted() && std::ranges::none_of(runs, isCompleted)) return;
  if (options.fFormat == FileFormat::kText) {
    WriteResults(options, MCHost::RenderText(document, PageOptions(options, false)));
  } else if (options.fFormat == FileFormat::kJson) {
    WriteResults(options, MCHost::RenderJson(document));
  } else if (options.fFormat == FileFormat::kHtml) {
    WriteResults(options, MCHost::RenderReport(document, HeadingOf(document)));
  } else {
    WriteRecordsOf(document, options);
  }
}

}  // namespace PredSelectApp
