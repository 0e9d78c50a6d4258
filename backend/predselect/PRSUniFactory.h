// Runs the feature selection engine for one SELECTPRED command: opens the cases, makes the
// component, passes once over the data, and says what went wrong.
//
// Specifications and data are borrowed. Adapter, case stream and component live as long as this,
// for the output to read.
#pragma once

#include <memory>

#include "feature/MCStatus.h"
#include "host/cases/UAInpAdaptMsg.h"

class IFSAlgorithm;
class PRSValidSpecs;
class ProcedureDataSource;
class UAInputAdapter;
class UAProcDataSourceIter;
class UAVarValidSpecs;

class PRSUniFactory {
 public:
  // Opens the adapter and the case stream. Without a valid case the status becomes the error 80002
  // and the host says so.
  PRSUniFactory(PRSValidSpecs* specs, ProcedureDataSource& source);
  PRSUniFactory(const PRSUniFactory&) = delete;
  PRSUniFactory& operator=(const PRSUniFactory&) = delete;
  ~PRSUniFactory();

  // Accumulates, screens and ranks in one pass. True when that succeeded, if with a warning, and
  // the target is not constant; otherwise a message has said why. Call at most once.
  [[nodiscard]] bool RunFSComponent();

  MCFeature::MCStatus GetStatus() const { return fStatus; }

  // Null before RunFSComponent().
  const IFSAlgorithm* GetIFSAlgorithm() const { return fpAlgorithm.get(); }
  const UAInputAdapter* GetUAInputAdapter() const { return fpAdapter.get(); }

 private:
  bool IsTargetConstant() const;
  // False, with a message, when reading failed or the run was stopped.
  bool IsPassComplete();
  void DisplayMessage(const MCFeature::MCStatus& status) const;

  PRSValidSpecs* fpSpecs;
  UAVarValidSpecs* fpVarSpecs;
  ProcedureDataSource* fpSource;
  UAInpAdaptMsg fMessages;
  std::unique_ptr<UAInputAdapter> fpAdapter;
  std::unique_ptr<UAProcDataSourceIter> fpIterator;
  std::unique_ptr<IFSAlgorithm> fpAlgorithm;
  MCFeature::MCStatus fStatus;
};
