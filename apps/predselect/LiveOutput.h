// The document of the results, and messages on standard error as they come.
#pragma once

#include <string>

#include "host/arrow/DatabaseAddress.h"
#include "host/output/OutputDocument.h"

namespace MCHost {
class DataTable;
}

namespace PredSelectApp {

class ProgressLine;
struct ResultOptions;

class LiveOutput : public MCHost::OutputDocument {
 public:
  // `source` says which data the results are of; the others are borrowed. Quiet options keep
  // warnings, never errors, from standard error.
  LiveOutput(const ResultOptions& options, ProgressLine& progress, const std::string& source)
      : fOptions(options), fProgress(progress) {
    fDataSource = MCHost::WithoutPassword(source);
    fbFindings = WantsFindings(options);
  }

  void AddMessage(MCHost::OutputMessage message) override;

  // What there is to say of how the data were read and has not been shown yet: reading a column may
  // tell something of it.
  void ShowNotes(const MCHost::DataTable& table);

 private:
  static bool WantsFindings(const ResultOptions& options);

  const ResultOptions& fOptions;
  ProgressLine& fProgress;
};

}  // namespace PredSelectApp
