// Runs the feature selection engine for one SELECTPRED command: opens the cases, makes the
// component, passes once over the data, and says what went wrong.
//
// Specifications and data are borrowed. Adapter, case stream and component live as long as this,
// for the output to read.
#pragma once

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "backend/predselect/PRSFindings.h"
#include "backend/predselect/drivers/PRSEffects.h"
#include "backend/predselect/drivers/PRSParts.h"
#include "feature/MCStatus.h"
#include "host/cases/UAInpAdaptMsg.h"

namespace MCHost {
class HostIOError;
}
struct FSCriterion;
class IFSAlgorithm;
class PRSValidSpecs;
class ProcedureDataSource;
class ProgressListener;
class UAInputAdapter;
class UAProcDataSourceIter;
class UAVarValidSpecs;
struct StateDictionary;

class PRSUniFactory {
 public:
  // Opens the adapter and, unless the cases lie in parts elsewhere, the case stream. Without a
  // valid case the status becomes the error 80002 and the host says so.
  PRSUniFactory(PRSValidSpecs* specs, ProcedureDataSource& source);
  PRSUniFactory(const PRSUniFactory&) = delete;
  PRSUniFactory& operator=(const PRSUniFactory&) = delete;
  ~PRSUniFactory();

  // Accumulates, screens and ranks in one pass; effects of scale variables, where the command asks
  // for them, take a second one. True when that succeeded, if with a warning, and
  // the target is not constant; otherwise a message has said why, or the answer of a part was all
  // that was wanted. Call at most once.
  [[nodiscard]] bool RunFSComponent();

  MCFeature::MCStatus GetStatus() const { return fStatus; }

  // Raises the text of an error or warning of the component; codes without a text raise nothing.
  void DisplayMessage(const MCFeature::MCStatus& status) const;

  // Dumps for debugging, on the host's log (standard error): the status in one line, every message
  // that the component's status gives, and the component's results in labelled lists.
  void DisplayStatus() const;
  void DisplayAllMessages() const;
  void DisplayOutput() const;
  // Every statistic of every predictor that is not excluded; a part of DisplayOutput().
  // REQUIRES: the component is there.
  void GetOutputStats() const;

  // Null before RunFSComponent().
  const IFSAlgorithm* GetIFSAlgorithm() const { return fpAlgorithm.get(); }
  const UAInputAdapter* GetUAInputAdapter() const { return fpAdapter.get(); }

  // Of the predictors that are shown; empty unless the command asks for them.
  const PRSEffects& GetEffects() const { return fEffects; }

 private:
  // The data pass: over the cases that are here, or over the parts.
  MCFeature::MCStatus Count();
  MCFeature::MCStatus CountInParts();
  // Says what went wrong in the parts, unless they were stopped.
  MCFeature::MCStatus FailureInParts(const MCHost::HostIOError& error);
  // Whether what was counted can be merged with other parts of the data, be it without a case.
  bool IsWholePass() const;
  // False, with a message, when the state could not be written.
  bool SaveCounts() const;
  // Answers what is asked of this part; false with a message where that failed.
  bool AnswerPart(const PartRequest& request);
  UAPartCounts PartCounts(std::string component) const;
  void ReportNoCases();
  // Keeps the state of data without a row, which may be a part of others.
  void SaveEmptyPart();
  StateDictionary Dictionary() const;
  // False, with a message, when a document could not be written.
  bool WriteResultDocuments() const;
  // False, with a message, when the second pass failed or was stopped.
  bool FindEffects();
  bool WriteVariables() const;
  // To a session that wants them.
  void HandOverFindings() const;
  bool IsTargetConstant() const;
  void WarnOfLeaks() const;
  // False, with a message, when reading failed or the run was stopped.
  bool IsPassComplete();
  std::string NameOf(int predictor) const;
  void DisplayCriterion(std::ostream& log, const FSCriterion& criterion) const;
  void DisplayTop(std::ostream& log, const std::string& kind, const std::vector<int>& predictors,
                  const std::vector<double>& values) const;
  void DisplayDeleted(std::ostream& log) const;

  PRSValidSpecs* fpSpecs;
  UAVarValidSpecs* fpVarSpecs;
  ProcedureDataSource* fpSource;
  UAInpAdaptMsg fMessages;
  std::unique_ptr<UAInputAdapter> fpAdapter;
  std::unique_ptr<UAProcDataSourceIter> fpIterator;  // null over parts
  PRSParts fParts;
  std::optional<PartRequest> fPartRequest;
  std::unique_ptr<IFSAlgorithm> fpAlgorithm;
  std::unique_ptr<ProgressListener> fpProgress;
  MCFeature::MCStatus fStatus;
  PRSEffects fEffects;
  std::vector<PRSBinnedProfile> fBinned;  // for the findings
  PRSBins fTargetBins;
};
