#include "apps/predselect/RunCommand.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/Interrupt.h"
#include "apps/predselect/LiveOutput.h"
#include "apps/predselect/NewVariables.h"
#include "apps/predselect/OpenTable.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/SameFile.h"
#include "apps/predselect/Terminal.h"
#include "apps/predselect/UsageError.h"
#include "apps/predselect/Version.h"
#include "backend/predselect/predsele.h"
#include "host/arrow/DataFile.h"
#include "host/command/CommandSplitter.h"
#include "host/data/DataTable.h"
#include "host/session/HostIOError.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"

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

// A session that tells the document which macros a command has set and which files it has written,
// and the procedures where to write and where not.
class RunSession : public MCHost::Session {
 public:
  RunSession(DataTable& table, MCHost::OutputDocument& document, const Options& options)
      : Session(table, document), fDocument(document), fOptions(options) {}

  void SetMacro(const std::string& name, const std::vector<std::string>& values) override {
    Session::SetMacro(name, values);
    fDocument.CurrentRun().fMacros.emplace_back(name, values);
  }
  void ReportFile(const std::string& path) override {
    fDocument.CurrentRun().fFiles.push_back(path);
  }
  std::string StatePath() const override { return fStatePath; }
  std::string ResultsPrefix() const override {
    if (fOptions.fResults.empty()) return "";
    return fOptions.fResults + "/" + std::to_string(fDocument.GetRuns().size()) + "-";
  }

  std::string UseOf(const std::string& path) const override {
    const std::pair<std::string, const char*> files[] = {
        {fOptions.fData.fFile, "the data"},           {fOptions.fData.fSchema, "the schema"},
        {fOptions.fCommandFile, "the commands"},      {fOptions.fResult.fFile, "the output"},
        {fOptions.fSaveData, "the data to be saved"}, {fOptions.fSaveState, "the state"}};
    for (const auto& [file, use] : files) {
      if (IsSameFile(path, file)) return use;
    }
    return "";
  }

  std::string fStatePath;  // empty: no state is saved

 private:
  MCHost::OutputDocument& fDocument;
  const Options& fOptions;
};

// A folder that is not there is complained of when something needs it.
std::string TemporaryFolder() {
  const char* folder = std::getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

void MakeDirectory(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (error) throw MCHost::HostIOError(path, "", "cannot be made: " + error.message());
}

void RunOne(const MCHost::CommandText& command, RunSession& session, DataTable& table,
            MCHost::OutputDocument& document) {
  session.SetCommand(command.fText, command.fLine, command.fColumn);
  MCHost::OutputRun& run = document.BeginRun(session.SystemBlock().fCommandWord);
  const int variables = table.ColumnCount();
  {
    const MCHost::SessionScope scope(session);
    predsele_();
  }
  run.fbCompleted = !session.CommonBlock().IsErrorSet() && !IsInterrupted();
  RecordNewVariables(table, variables, run);
}

int ExitCodeOf(const MCHost::OutputDocument& document) {
  if (IsInterrupted()) return kCancelled;
  for (const MCHost::OutputRun& run : document.GetRuns()) {
    if (!run.fbCompleted) return kCommandError;
  }
  return kCompleted;
}

void ShowNotes(const DataTable& table, const ResultOptions& options) {
  if (options.fbQuiet) return;
  for (const std::string& note : table.Notes()) {
    std::fprintf(stderr, "Note: %s\n", note.c_str());
  }
}

}  // namespace

int RunCommands(const Options& options) {
  const std::vector<MCHost::CommandText> commands = MCHost::SplitCommands(ReadCommandText(options));
  if (commands.empty()) throw UsageError("there is no command to run; see predselect run --help.");
  const std::unique_ptr<DataTable> table = OpenTable(options.fData);
  ShowNotes(*table, options.fResult);

  ProgressLine progress(IsErrorTerminal() && options.fResult.fbProgress &&
                        !options.fResult.fbQuiet);
  LiveOutput document(options.fResult, progress);
  document.SetData(options.fData.fFile, *table);

  RunSession session(*table, document, options);
  session.SetAppParams({"PredSelect", kVersion, ""});  // the copyright line of the library
  session.SetTempPath(TemporaryFolder());
  session.SetCancelQuery(IsInterrupted);
  session.SetProgressListener([&progress](const std::string& text) { progress.Show(text); });
  if (!options.fResults.empty()) MakeDirectory(options.fResults);
  for (const MCHost::CommandText& command : commands) {
    if (IsInterrupted()) break;
    if (&command == &commands.back()) session.fStatePath = options.fSaveState;
    RunOne(command, session, *table, document);
  }
  progress.Clear();

  const int code = ExitCodeOf(document);
  WriteDocument(document, options.fResult);
  if (options.fSaveData.empty()) return code;
  if (code == kCompleted) {
    MCHost::WriteDataFile(*table, options.fSaveData);
  } else {
    std::fprintf(stderr, "predselect: %s was not written, since not all commands completed.\n",
                 options.fSaveData.c_str());
  }
  return code;
}

}  // namespace PredSelectApp
