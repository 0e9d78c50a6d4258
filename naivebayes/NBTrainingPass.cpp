#include "naivebayes/NBTrainingPass.h"

#include <cstddef>
#include <ctime>

#include "naivebayes/NBReporter.h"

using MCNaive::MCStatus;

NBTrainingPass::NBTrainingPass(const NaiveBayesSettings& settings, NBCancelInfo& cancel,
                               MCCommon::Workers& workers, bool showProgress)
    : fSettings(settings),
      fCancel(cancel),
      fWorkers(workers),
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

void NBTrainingPass::CountInputs(const NBCodeBlock& codes, std::size_t cases, bool hasWeight,
                                 std::vector<NBayesInput>& inputs) {
  const auto count = [&](std::size_t j, std::size_t) {
    const NBCodes column = codes.Codes(static_cast<int>(j));
    if (hasWeight) {
      inputs[j].AddCases(column, codes.Targets(), codes.Weights(), cases);
    } else {
      inputs[j].AddUnitCases(column, codes.Targets(), cases);
    }
  };
  const auto nInputs = static_cast<std::size_t>(codes.Inputs());
  fWorkers.For(cases * nInputs).ForEach(nInputs, count, [this] { return fCancel.IsCancel(); });
}

MCStatus NBTrainingPass::Run(NBCodeSource& source, bool hasWeight, NBayesOutput& output,
                             std::vector<NBayesInput>& inputs) {
  while (!fCancel.IsCancel()) {
    const NBCodeBlock* codes = source.NextCodes();
    if (codes == nullptr) break;
    const std::size_t cases = ReadCases(*codes);
    output.AddCases(codes->Targets(), codes->Weights(), cases);
    CountInputs(*codes, cases, hasWeight, inputs);
  }
  if (fCancel.IsCancel()) return MCNaive::Error(MCNaive::kCancelled);
  if (source.HasFailed()) return MCNaive::Error(MCNaive::kTemporaryFile);
  return fNRead == 0 ? MCNaive::Error(MCNaive::kNoRecordsFound) : MCStatus();
}
