// The document of the results, and messages on standard error as they come.
#pragma once

#include <string>

#include "host/output/OutputDocument.h"

namespace MCHost {
class DataTable;
}

namespace PredSelectApp {

class ProgressLine;
struct ResultOptions;

class LiveOutput : public MCHost::OutputDocument {
 public:
  // Both are borrowed. Quiet options keep warnings, never errors, from standard error.
  LiveOutput(const ResultOptions& options, ProgressLine& progress)
      : fOptions(options), fProgress(progress) {}

  // Says which program and which data the results are of.
  void SetData(const std::string& source, const MCHost::DataTable& table);

  void AddMessage(MCHost::OutputMessage message) override;

 private:
  const ResultOptions& fOptions;
  ProgressLine& fProgress;
};

}  // namespace PredSelectApp
