// Everything that a text of commands brought forth, kept for the renderers: the embedded host's own
// output sink.
//
// The application opens a run for each command and adds what the procedure does not send through
// the sink (macros, new variables, files). What arrives before the first run opens one without a
// command. Owns everything; one thread at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/output/IOutputSink.h"
#include "host/output/OutputChart.h"
#include "host/output/OutputMessage.h"
#include "host/output/OutputNote.h"
#include "host/output/OutputTable.h"

namespace MCHost {

struct OutputVariable {
  std::string fName;
  std::string fLabel;
  int fType = 0;  // 0 numeric, otherwise the width in bytes
  std::string fFormat;
};

// One command's results.
struct OutputRun {
  std::string fCommand;
  bool fbCompleted = false;
  std::vector<OutputMessage> fMessages;
  std::vector<OutputNote> fNotes;
  std::vector<OutputTable> fTables;
  std::vector<OutputChart> fCharts;
  std::vector<std::pair<std::string, std::vector<std::string>>> fMacros;
  std::vector<OutputVariable> fNewVariables;
  std::vector<std::string> fFiles;
  // What a report shows of predictors and model besides the tables, as JSON text for its page;
  // empty for none.
  std::string fFindings;
};

// What has ended the work before it was done.
struct OutputFailure {
  int fExitCode = 0;
  std::string fText;
  std::string fFile;  // which file it is about, and where in it; empty for none
  std::string fPlace;
};

class OutputDocument : public IOutputSink {
 public:
  std::string fVersion;     // of the program
  std::string fDataSource;  // where the active data came from
  std::int64_t fNCases = 0;
  int fNVariables = 0;
  std::vector<std::string> fReadingNotes;  // on how the data were read
  std::optional<OutputFailure> fFailure;
  bool fbFindings = false;  // whether findings are wanted: a report will be made of the document

  // Opens the next run and makes it the current one. The reference holds until the next run.
  OutputRun& BeginRun(const std::string& command);
  OutputRun& CurrentRun();
  const std::vector<OutputRun>& GetRuns() const { return fRuns; }

  void AddMessage(OutputMessage message) override;
  void AddNote(OutputNote note) override;
  void AddTable(OutputTable table) override;
  void AddChart(OutputChart chart) override;

 private:
  std::vector<OutputRun> fRuns;
};

}  // namespace MCHost
