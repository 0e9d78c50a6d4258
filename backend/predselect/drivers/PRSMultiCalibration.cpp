#include "backend/predselect/drivers/PRSMultiCalibration.h"

#include <cstdio>
#include <string>

#include "backend/predselect/drivers/NaiveDataSourceIter.h"
#include "backend/predselect/drivers/PRSProgress.h"
#include "host/cases/MCStopProcessor.h"
#include "host/output/AddNotes.h"
#include "host/output/BpError.h"
#include "host/output/OutputNote.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpString.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBCalibrator.h"
#include "naivebayes/model/NBScoredBlock.h"

using MCHost::CalibrationWish;

bool PRSMultiCalibration::Calibrate() {
  const CalibrationWish wish = MCHost::CurrentSession().Calibration();
  if (wish.fMethod == CalibrationWish::kNone) return true;
  if (fRun.Specs().GetMultiTrainSamp()) {
    NBCalibrator calibrator(fModel, wish.fSeed);
    if (!Pass(PRSMultiRun::Sample::kTest, Step::kAdd, calibrator)) return false;
    if (calibrator.GetNCases() > 0) {
      Finish(calibrator, true);
      return true;
    }
  }
  NBCalibrator calibrator(fModel, wish.fSeed);
  if (!Pass(PRSMultiRun::Sample::kTraining, Step::kDivide, calibrator)) return false;
  calibrator.SetFolds();
  if (!Pass(PRSMultiRun::Sample::kTraining, Step::kAdd, calibrator)) return false;
  Finish(calibrator, false);
  return true;
}

bool PRSMultiCalibration::Pass(PRSMultiRun::Sample sample, Step step, NBCalibrator& calibrator) {
  const std::unique_ptr<NaiveDataSourceIter> stream = fRun.NewStream(sample);
  if (!stream->NewPass(true)) return fRun.IsPassComplete(*stream);
  MCStopProcessor& stop = *fRun.Specs().GetStopProcessorPtr();
  const std::size_t most =
      NBScoredBlock::PreferredCases(fModel.GetNTargetCategories(), fModel.GetNumberOfInputVars());
  while (stream->HasMore() && !stop.IsCancel()) {
    const MCCommon::RecordBlock& block = stream->NextBlock(most);
    step == Step::kDivide ? calibrator.Divide(block) : calibrator.Add(block);
    PRSProgress::Show("Calibrating the model", fRun.Adapter().GetCaseNumber());
  }
  return fRun.IsPassComplete(*stream);
}

void PRSMultiCalibration::Finish(const NBCalibrator& calibrator, bool byTestCases) {
  const bool isWarm =
      MCHost::CurrentSession().Calibration().fMethod == CalibrationWish::kTemperature;
  fModel.SetCalibration(
      calibrator.Fit(isWarm ? NBCalibration::kTemperature : NBCalibration::kIsotonic));
  if (fModel.GetCalibration().GetMethod() == NBCalibration::kNone) {
    MCHost::RaiseMessage(MCHost::OutputMessage::kWarning,
                         "The model is not calibrated: ^1 cases...",
                         {std::to_string(calibrator.GetNCases())});
    return;
  }
  if (fRun.IsModelSaved()) {
    MCHost::RaiseMessage(MCHost::OutputMessage::kWarning,
                         "The model file does not hold the calibration...");
  }
  if (byTestCases) {
    Say(isWarm ? "Temperature ^1, by ^2 test cases..." : "Isotonic, by ^2 test cases...",
        calibrator.GetNCases());
  } else {
    Say(isWarm ? "Temperature ^1, by ^2 training cases in ^3 folds..."
               : "Isotonic, by ^2 training cases in ^3 folds...",
        calibrator.GetNCases());
  }
}

void PRSMultiCalibration::Say(const char* key, std::size_t cases) const {
  char temperature[32];
  const int length = std::snprintf(temperature, sizeof temperature, "%.4g",
                                   fModel.GetCalibration().GetTemperature());
  BpComposite text(key);
  text.AddLiteral(std::string(temperature, static_cast<std::size_t>(length)));
  text.AddLiteral(std::to_string(cases)).AddLiteral(std::to_string(NBCalibrator::kFolds));
  AddNotes(MCHost::OutputNote::kMethod, BpString("Calibration"), text.Finish());
}
