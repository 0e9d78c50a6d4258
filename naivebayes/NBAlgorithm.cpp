#include "naivebayes/NBAlgorithm.h"

#include <new>
#include <ostream>

using MCNaive::MCStatus;

NBAlgorithm::NBAlgorithm(const NaiveBayesSettings& settings, const NBVarList& varList)
    : fSettings(settings),
      fVarList(varList),
      fWorkers(settings.GetNThreads()),
      fCancel(settings.GetCancelPointer()) {
  fVarList.UpdateNumbersOfCategories();
  fOutput.Setup(fVarList.GetNOutputCats());
  fOutput.SetVariable(fVarList.GetVarAt(fVarList.GetTargetIndex()));
}

std::string NBAlgorithm::GetComponentVersion() const {
  try {
    return "Naive Bayes Component Ver. 1.0 of PredSelect";
  } catch (const std::bad_alloc&) {
    return "";
  }
}

MCStatus NBAlgorithm::Raise(const MCStatus& status) {
  if (!fStatus.IsError() && !status.IsOK()) fStatus = status;
  return fStatus;
}

MCStatus NBAlgorithm::Changed(const MCStatus& status) {
  if (status.GetErrorCode() != MCNaive::kNoMemory) return status;
  fbBuilt = false;
  return Raise(status);
}

void NBAlgorithm::DoCancel() {
  fbBuilt = false;
  static_cast<void>(Raise(MCNaive::Error(MCNaive::kCancelled)));
}

bool NBAlgorithm::MustStop() {
  if (fCancel.IsCancel()) DoCancel();
  return fStatus.IsError();
}

void NBAlgorithm::SetCancelPtr(MCQueryCancel* cancel) {
  fSettings.SetCancelPointer(cancel);
  fCancel.SetCancelPtr(cancel);
}

void NBAlgorithm::SetProgressListener(ProgressListener* listener) {
  fSettings.SetProgressListener(listener);
}

void NBAlgorithm::GetNValidNExcluded(double& validWeight, double& excludedWeight, int& nValid,
                                     int& nExcluded) const {
  validWeight = fTotalWeight;
  excludedWeight = fExcluded.fWeight;
  nValid = fNRecords;
  nExcluded = fExcluded.fNRecords;
}

void NBAlgorithm::Display(std::ostream& os) const {
  os << GetComponentVersion() << '\n'
     << "Model " << (fbBuilt ? "built" : "not built") << ", records " << fNRecords << ", weight "
     << fTotalWeight << '\n';
  if (fStatus.IsError()) os << "Error " << fStatus.GetErrorCode() << '\n';
  fSettings.Display(os);
  fVarList.Display(os);
  if (fpPreparator) fpPreparator->Display(os);
  fOutput.Display(os);
  for (const NBayesInput& input : fInputs) input.Display(os);
}
