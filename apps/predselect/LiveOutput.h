// The document of the results, and messages on standard error as they come.
#pragma once

#include "host/output/OutputDocument.h"

namespace PredSelectApp {

class ProgressLine;
struct ResultOptions;

class LiveOutput : public MCHost::OutputDocument {
 public:
  // Both are borrowed. Quiet options keep warnings, never errors, from standard error.
  LiveOutput(const ResultOptions& options, ProgressLine& progress)
      : fOptions(options), fProgress(progress) {}

  void AddMessage(MCHost::OutputMessage message) override;

 private:
  const ResultOptions& fOptions;
  ProgressLine& fProgress;
};

}  // namespace PredSelectApp
