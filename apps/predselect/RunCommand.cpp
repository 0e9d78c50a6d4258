#include "apps/predselect/RunCommand.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/LiveOutput.h"
#include "apps/predselect/OpenTable.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgramSurroundings.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/Terminal.h"
#include "apps/predselect/UsageError.h"
#include "host/arrow/DataFile.h"
#include "host/command/CommandSplitter.h"
#include "host/data/DataTable.h"
#include "host/session/HostIOError.h"
#include "host/session/SameFile.h"
#include "operations/RunCommands.h"

namespace PredSelectApp {

namespace {

using MCHost::DataTable;

std::string ReadAll(std::istream& in) {
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string ReadCommandText(const Options& options) {
  if (options.fCommandFile.empty()) return options.fCommandText;
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

// What a file of the command line besides the state's is there for; empty for any other file.
std::string UseOf(const std::string& path, const Options& options) {
  const std::pair<std::string, const char*> files[] = {{options.fData.fFile, "the data"},
                                                       {options.fData.fSchema, "the schema"},
                                                       {options.fCommandFile, "the commands"},
                                                       {options.fResult.fFile, "the output"},
                                                       {options.fSaveData, "the data to be saved"}};
  for (const auto& [file, use] : files) {
    if (MCHost::IsSameFile(path, file)) return use;
  }
  return "";
}

void ShowNotes(const DataTable& table, const ResultOptions& options) {
  if (options.fbQuiet) return;
  for (const std::string& note : table.Notes()) {
    std::fprintf(stderr, "Note: %s\n", note.c_str());
  }
}

}  // namespace

int RunCommands(const Options& options) {
  const std::string commands = ReadCommandText(options);
  // Said before the data are read, which may take long.
  if (MCHost::SplitCommands(commands).empty()) {
    throw UsageError("there is no command to run; see predselect run --help.");
  }
  const std::unique_ptr<DataTable> table = OpenTable(options.fData);
  ShowNotes(*table, options.fResult);

  ProgressLine progress(IsErrorTerminal() && options.fResult.fbProgress &&
                        !options.fResult.fbQuiet);
  LiveOutput document(options.fResult, progress, options.fData.fFile);
  const PredSelect::Outcome outcome = PredSelect::RunCommands(
      *table, document,
      {commands, options.fSaveState, options.fResults,
       [&options](const std::string& path) { return UseOf(path, options); }},
      ProgramSurroundings(progress));
  progress.Clear();

  WriteDocument(document, options.fResult);
  if (options.fSaveData.empty()) return ExitCodeOf(outcome);
  if (outcome == PredSelect::Outcome::kCompleted) {
    MCHost::WriteDataFile(*table, options.fSaveData);
  } else {
    std::fprintf(stderr, "predselect: %s was not written, since not all commands completed.\n",
                 options.fSaveData.c_str());
  }
  return ExitCodeOf(outcome);
}

}  // namespace PredSelectApp
