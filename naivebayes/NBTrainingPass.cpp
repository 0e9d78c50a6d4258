#include "naivebayes/NBTrainingPass.h"

#include <cstddef>
#include <ctime>

#include "naivebayes/NBReporter.h"

using MCNaive::MCStatus;

NBTrainingPass::NBTrainingPass(const NaiveBayesSettings& settings, NBCancelInfo& cancel,
                               bool showProgress)
    : fSettings(settings),
      fCancel(cancel),
      fbShowProgress(showProgress && settings.GetProgressListener() != nullptr),
      fStart(std::clock()) {}

void NBTrainingPass::ReportProgress() const {
  if (fNRead % (std::int64_t{fSettings.GetNSkippedReports()} + 1) != 0) return;
  NBReporter report;
  report.SetValues(fNRead, static_cast<double>(std::clock() - fStart) / 1e6);
  fSettings.GetProgressListener()->Report(report);
}

std::size_t NBTrainingPass::ReadCases(const NBCodeBlock& codes) {
  std::size_t cases = 0;
  for (; cases < codes.Cases() && !fCancel.IsCancel(); ++cases) {
    fWeight.Add(codes.Weights()[cases]);
    ++fNRead;
    if (fbShowProgress) ReportProgress();
  }
  return cases;
}

MCStatus NBTrainingPass::Run(NBCodeSource& source, bool hasWeight, NBayesOutput& output,
                             std::vector<NBayesInput>& inputs) {
  while (!fCancel.IsCancel()) {
    const NBCodeBlock* codes = source.NextCodes();
    if (codes == nullptr) break;
    const std::size_t cases = ReadCases(*codes);
    output.AddCases(codes->Targets(), codes->Weights(), cases);
    for (int j = 0; j < codes->Inputs() && !fCancel.IsCancel(); ++j) {
      if (hasWeight) {
        inputs[j].AddCases(codes->Codes(j), codes->Targets(), codes->Weights(), cases);
      } else {
        inputs[j].AddUnitCases(codes->Codes(j), codes->Targets(), cases);
      }
    }
  }
  if (fCancel.IsCancel()) return MCNaive::Error(MCNaive::kCancelled);
  if (source.HasFailed()) return MCNaive::Error(MCNaive::kTemporaryFile);
  return fNRead == 0 ? MCNaive::Error(MCNaive::kNoRecordsFound) : MCStatus();
}
