#include "apps/predselect/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include "apps/predselect/Interrupt.h"
#include "apps/predselect/Options.h"
#include "host/arrow/DataFile.h"
#include "host/data/MemoryTable.h"
#include "host/output/OutputDocument.h"
#include "host/output/render/FlatRecords.h"
#include "host/output/render/RenderJson.h"
#include "host/output/report/RenderReport.h"
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

// Null where nothing was shown.
const MCHost::OutputTable* FirstFlat(const MCHost::OutputDocument& document) {
  for (const MCHost::OutputRun& run : document.GetRuns()) {
    for (const MCHost::OutputTable& table : run.fTables) {
      if (table.fbFlat) return &table;
    }
  }
  return nullptr;
}

// The file's own name says what a report is of; it stands on the page of whoever gets it.
std::string HeadingOf(const MCHost::OutputDocument& document) {
  const std::string name = std::filesystem::path(document.fDataSource).filename().string();
  return name == "-" || name.empty() ? "Standard input" : name;
}

void WriteRecords(const MCHost::OutputTable& table, const ResultOptions& options) {
  using MCHost::RecordsForm;
  const std::unique_ptr<MCHost::MemoryTable> records = MCHost::FlatRecords(table);
  if (options.fFormat == OutputFormat::kColumns) {
    MCHost::WriteDataFile(*records, options.fFile);
    return;
  }
  constexpr RecordsForm kForms[] = {RecordsForm::kCsv, RecordsForm::kTsv, RecordsForm::kJsonLines,
                                    RecordsForm::kMarkdown};
  const int place = static_cast<int>(options.fFormat) - static_cast<int>(OutputFormat::kCsv);
  WriteResults(options, MCHost::RenderRecords(*records, kForms[place]));
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
  return IsTerminal(STDERR_FILENO) && options.fbProgress && !options.fbQuiet;
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
  const auto& runs = document.GetRuns();
  const auto isCompleted = [](const MCHost::OutputRun& run) { return run.fbCompleted; };
  if (IsInterrupted() && std::ranges::none_of(runs, isCompleted)) return;
  if (options.fFormat == OutputFormat::kText) {
    WriteResults(options, MCHost::RenderText(document, PageOptions(options, false)));
  } else if (options.fFormat == OutputFormat::kJson) {
    WriteResults(options, MCHost::RenderJson(document));
  } else if (options.fFormat == OutputFormat::kHtml) {
    WriteResults(options, MCHost::RenderReport(document, HeadingOf(document)));
  } else if (const MCHost::OutputTable* table = FirstFlat(document)) {
    WriteRecords(*table, options);
  }
}

}  // namespace PredSelectApp
