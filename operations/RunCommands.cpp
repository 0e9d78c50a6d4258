#include "operations/RunCommands.h"

#include <string>
#include <utility>
#include <vector>

#include "backend/predselect/predsele.h"
#include "host/command/CommandSplitter.h"
#include "host/data/DataTable.h"
#include "host/output/BpError.h"
#include "host/output/OutputDocument.h"
#include "host/session/OutputFile.h"
#include "host/session/OutputGroup.h"
#include "host/session/SameFile.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"
#include "operations/DocumentParts.h"
#include "operations/Findings.h"
#include "operations/RequestError.h"

namespace PredSelect {

namespace {

using MCHost::DataTable;

// A session that tells the document which macros a command has set and which files it has written,
// and the procedures where to write and where not.
class RunSession : public MCHost::Session {
 public:
  RunSession(DataTable& table, MCHost::OutputDocument& document, const RunRequest& request,
             const Surroundings& surroundings)
      : Session(table, document), fDocument(document), fRequest(request) {
    SetAppParams(surroundings.fApplication);
    SetTempPath(surroundings.fTempPath);
    SetThreads(surroundings.fThreads);
    fStateKey = surroundings.fStateKey;
    SetCancelQuery(surroundings.fIsCancelled);
    SetProgressListener(surroundings.fReportProgress);
  }

  double MemoryForCases() override {
    fbMemoryTaken = true;
    return fRequest.fMemory;
  }
  MCHost::CalibrationWish Calibration() override {
    fbCalibrationTaken = true;
    return fRequest.fCalibration;
  }
  void SetMacro(const std::string& name, const std::vector<std::string>& values) override {
    Session::SetMacro(name, values);
    fDocument.CurrentRun().fMacros.emplace_back(name, values);
  }
  void ReportFile(const std::string& path) override {
    fDocument.CurrentRun().fFiles.push_back(path);
  }
  bool BeginsWork(const MCHost::CommandPlan& plan) override {
    if (fRequest.fpPlans == nullptr) return true;
    fRequest.fpPlans->push_back(plan);
    return false;
  }
  void ReportLostFile() override { fbFileLost = true; }
  bool WantsFindings() const override { return fDocument.fbFindings; }
  void TakeFindings(const PRSFindings& findings) override {
    fDocument.CurrentRun().fFindings = FindingsText(findings, &Table());
  }
  std::string StatePath() const override { return fbLast ? fRequest.fStatePath : ""; }
  std::string StateKey() const override { return fStateKey; }
  std::string ResultsPrefix() const override {
    if (fRequest.fResultsFolder.empty()) return "";
    return fRequest.fResultsFolder + "/" + std::to_string(fDocument.GetRuns().size()) + "-";
  }
  std::string UseOf(const std::string& path) const override {
    std::string use = fRequest.fUseOf ? fRequest.fUseOf(path) : "";
    return use.empty() && MCHost::IsSameFile(path, fRequest.fStatePath) ? "the state" : use;
  }

  bool IsExportWanted() const { return !fRequest.fExport.fFile.empty(); }
  bool IsModelWanted() const override { return fbLast && IsExportWanted(); }
  bool TakeModel(const INBAlgorithm& model) override {
    using MCHost::OutputMessage;
    try {
      for (const std::string& note : WriteModelFile(model, fRequest.fExport)) {
        MCHost::RaiseMessage(OutputMessage::kWarning, "Exported model: ^1", {note});
      }
      ReportFile(fRequest.fExport.fFile);
      return true;
    } catch (const std::runtime_error& error) {
      MCHost::RaiseMessage(OutputMessage::kError, "File cannot be written: ^1", {error.what()});
      return false;
    }
  }

  bool fbLast = false;         // the last command is being run: its state is saved
  bool fbMemoryTaken = false;  // some command has asked for it
  bool fbCalibrationTaken = false;
  bool fbFileLost = false;  // is all that the command failed in

 private:
  MCHost::OutputDocument& fDocument;
  const RunRequest& fRequest;
  std::string fStateKey;
};

// The last command is the one whose model is exported.
void CheckModelComes(const MCHost::CommandText& last, RunSession& session) {
  if (!session.IsExportWanted()) return;
  session.SetCommand(last.fText, last.fLine, last.fColumn);
  if (session.SystemBlock().fCommandWord == "NAIVEBAYES") return;
  throw RequestError("export", "the last command builds no model; NAIVEBAYES does.");
}

Outcome RunOne(const MCHost::CommandText& command, RunSession& session, DataTable& table,
               MCHost::OutputDocument& document) {
  session.SetCommand(command.fText, command.fLine, command.fColumn);
  MCHost::OutputRun& run = document.BeginRun(session.SystemBlock().fCommandWord);
  const int variables = table.ColumnCount();
  session.fbFileLost = false;
  {
    const MCHost::SessionScope scope(session);
    predsele_();
  }
  run.fbCompleted = !session.CommonBlock().IsErrorSet() && !session.IsCancelled();
  RecordNewVariables(table, variables, run);
  if (run.fbCompleted) return Outcome::kCompleted;
  return session.fbFileLost ? Outcome::kFileLost : Outcome::kCommandError;
}

void ReportIdle(RunSession& session, const char* what) {
  const MCHost::SessionScope scope(session);
  MCHost::RaiseMessage(MCHost::OutputMessage::kWarning, what);
}

// Of what was asked for, what no command has taken.
void ReportIdleWishes(RunSession& session, const RunRequest& request) {
  if (request.fMemory > 0.0 && !session.fbMemoryTaken) {
    ReportIdle(session, "Memory for cases has no effect...");
  }
  const bool isCalibrated = request.fCalibration.fMethod != MCHost::CalibrationWish::kNone;
  if (isCalibrated && !session.fbCalibrationTaken) {
    ReportIdle(session, "Calibration has no effect...");
  }
}

}  // namespace

void CheckOutputs(const RunRequest& request) {
  if (!request.fStatePath.empty()) MCHost::OutputFile::Check(request.fStatePath);
  if (!request.fResultsFolder.empty()) MCHost::CheckOutputFolder(request.fResultsFolder);
  if (!request.fExport.fFile.empty()) CheckModelFile(request.fExport);
}

Outcome RunCommands(DataTable& table, MCHost::OutputDocument& document, const RunRequest& request,
                    const Surroundings& surroundings) {
  const std::vector<MCHost::CommandText> commands =
      MCHost::SplitCommands(request.fCommands, {"SELECTPRED", "NAIVEBAYES"});
  if (commands.empty()) throw RequestError("there is no command to run.");
  CheckOutputs(request);
  RecordData(document, table.CaseCount(), table.ColumnCount());
  RunSession session(table, document, request, surroundings);
  CheckModelComes(commands.back(), session);
  MCHost::OutputGroup outputs;
  const bool isDone = request.fpPlans == nullptr;
  if (isDone && !request.fResultsFolder.empty()) outputs.MakeFolder(request.fResultsFolder);
  Outcome outcome = Outcome::kCompleted;
  for (const MCHost::CommandText& command : commands) {
    if (session.IsCancelled()) break;
    session.fbLast = &command == &commands.back();
    const Outcome one = RunOne(command, session, table, document);
    if (outcome != Outcome::kCommandError && one != Outcome::kCompleted) outcome = one;
  }
  if (session.IsCancelled()) return Outcome::kCancelled;
  outputs.Commit();
  if (outcome == Outcome::kCompleted && isDone) ReportIdleWishes(session, request);
  return outcome;
}

}  // namespace PredSelect
