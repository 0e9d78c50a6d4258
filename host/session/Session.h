// The embedded host's own session: one user at work on one table.
//
// An application makes it with its table and output sink, then for each command of a text calls
// SetCommand() and the procedure entry (under a SessionScope). Macros that one command sets are
// there for the later ones. Nothing is owned but the texts; one thread at a time.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/session/HostBlocks.h"
#include "host/session/ISession.h"

namespace MCHost {

class Session : public ISession {
 public:
  // Both are borrowed and must outlive the session.
  Session(ITable& table, IOutputSink& output) : fTable(table), fOutput(output) {}

  // Makes `text` the current command: its first word becomes the command word, and the error flag
  // of the command before is cleared. `line` and `column` (from 1) say where it starts in the text
  // it was taken from.
  void SetCommand(const std::string& text, int line = 1, int column = 1);

  // What the application tells its procedures; set before the first command.
  void SetAppParams(AppParams params) { fAppParams = std::move(params); }

  // Without a trailing separator; "/tmp" unless set.
  void SetTempPath(std::string path) { fTempPath = std::move(path); }

  // How many threads a command may use, this one among them; 1 unless set. No result depends on it.
  void SetThreads(int threads) { fNThreads = threads; }

  // Asked whether the user wants to stop (an atomic flag read by a lambda, say). Must be cheap.
  void SetCancelQuery(std::function<bool()> query) { fCancelQuery = std::move(query); }

  // Receives how far a long pass has come.
  void SetProgressListener(std::function<void(const std::string&)> listener) {
    fProgressListener = std::move(listener);
  }

  const std::string& CommandText() const override { return fCommandText; }
  int CommandLine() const override { return fCommandLine; }
  int CommandColumn() const override { return fCommandColumn; }
  CmaSys& SystemBlock() override { return fSystemBlock; }
  CmnGlb& CommonBlock() override { return fCommonBlock; }
  ITable& Table() override { return fTable; }
  IOutputSink& Output() override { return fOutput; }

  // Macro names are equal without regard to the case of ASCII letters.
  void SetMacro(const std::string& name, const std::vector<std::string>& values) override;
  const std::vector<std::string>* FindMacro(const std::string& name) const override;

  const AppParams& GetAppParams() const override { return fAppParams; }
  std::string TempPath() const override { return fTempPath; }
  int Threads() const override { return fNThreads; }
  bool IsCancelled() const override { return fCancelQuery && fCancelQuery(); }
  void ReportProgress(const std::string& text) override;

 private:
  ITable& fTable;
  IOutputSink& fOutput;
  std::string fCommandText;
  int fCommandLine = 1;
  int fCommandColumn = 1;
  CmaSys fSystemBlock;
  CmnGlb fCommonBlock;
  std::map<std::string, std::vector<std::string>> fMacros;  // by name in upper case
  AppParams fAppParams;
  std::string fTempPath = "/tmp";
  int fNThreads = 1;
  std::function<bool()> fCancelQuery;
  std::function<void(const std::string&)> fProgressListener;
};

}  // namespace MCHost
