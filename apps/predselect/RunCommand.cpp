#include "apps/predselect/RunCommand.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "apps/predselect/ChartFiles.h"
#include "apps/predselect/ExitCode.h"
#include "apps/predselect/FileUses.h"
#include "apps/predselect/LiveOutput.h"
#include "apps/predselect/OpenTable.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgramSurroundings.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/SaveTable.h"
#include "apps/predselect/Terminal.h"
#include "apps/predselect/UsageError.h"
#include "host/command/CommandSplitter.h"
#include "host/data/DataTable.h"
#include "host/session/HostIOError.h"
#include "operations/FreeMemory.h"
#include "operations/ReadsOnce.h"
#include "operations/RunCommands.h"

namespace PredSelectApp {

namespace {

using MCHost::DataTable;

std::string ReadAll(std::istream& in) {
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The texts of -c as one, each ended as a text is.
std::string JoinTexts(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts) {
    if (!joined.empty()) joined += "\n";
    joined += text;
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    const bool isOpen = last != std::string::npos && text[last] != '.';
    if (isOpen && texts.size() > 1) joined += "\n.";
  }
  return joined;
}

std::string ReadCommandText(const Options& options) {
  if (options.fCommandFile.empty()) return JoinTexts(options.fCommandTexts);
  if (options.fCommandFile == "-") {
    if (options.fData.fFile == "-") {
      throw UsageError("standard input cannot give both the data and the commands.");
    }
    return ReadAll(std::cin);
  }
  std::ifstream file(options.fCommandFile, std::ios::binary);
  std::string text = file ? ReadAll(file) : "";
  if (!file) {
    throw MCHost::HostIOError(options.fCommandFile, "",
                              std::string("cannot be read: ") + std::strerror(errno));
  }
  return text;
}

// Measured when the data are in memory.
double MemoryOf(const Options& options) {
  return options.fMemory == Options::kAutoMemory ? PredSelect::AutomaticMemory() : options.fMemory;
}

}  // namespace

int RunCommands(const Options& options) {
  const std::string commands = ReadCommandText(options);
  // Said before the data are read, which may take long.
  if (MCHost::SplitCommands(commands).empty()) {
    throw UsageError("there is no command to run; see predselect run --help.");
  }
  DataOptions data = options.fData;
  data.fbOnce = !data.fbSaved && PredSelect::ReadsOnce(commands);
  ProgressLine progress(WantsProgress(options.fResult));
  const std::unique_ptr<DataTable> table = OpenTable(data, progress);
  const SaveTable saved(*table, options.fSave);
  std::set<std::string> notes;
  ShowNotes(*table, options.fResult, notes);

  LiveOutput document(options.fResult, progress, options.fData.fFile);
  const PredSelect::Outcome outcome =
      PredSelect::RunCommands(*table, document,
                              {commands, options.fSaveState, options.fResults,
                               [&options](const std::string& path) { return UseOf(path, options); },
                               MemoryOf(options), options.fExport},
                              ProgramSurroundings(options, progress));
  progress.Clear();
  ShowNotes(*table, options.fResult, notes);

  // Files first, whatever becomes of the reader of the results; and results whatever becomes of
  // the file.
  const int code = saved.WriteAfter(outcome);
  WriteChartFiles(document, options.fCharts);
  WriteDocument(document, options.fResult);
  return code;
}

}  // namespace PredSelectApp
