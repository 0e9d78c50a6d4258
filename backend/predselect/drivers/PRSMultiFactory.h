// Runs the Naive Bayes engine for one NAIVEBAYES command: learns the categories and ranges of the
// data, describes the variables to the engine (PRSMultiMetaData), selects predictors or takes them
// all and writes the model file (PRSMultiModel), and scores every case (PRSMultiScoring).
//
// The stages are called in the order of their declaration, each only when the one before returned
// true and no error was raised; a stage that returns false has said why through the host.
// Specifications and data are borrowed; adapter, engine and variable list live as long as this, for
// the output to read.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "backend/predselect/PRSFindings.h"
#include "backend/predselect/drivers/PRSMultiMetaData.h"
#include "backend/predselect/drivers/PRSMultiModel.h"
#include "backend/predselect/drivers/PRSMultiParts.h"
#include "backend/predselect/drivers/PRSMultiRun.h"
#include "backend/predselect/drivers/PRSMultiScreening.h"
#include "common/evaluation/Evaluation.h"

class INBAlgorithm;
class NaiveDataSourceIter;
class PRSMultiScoring;
class NBVarList;
class PRSValidSpecs;
class ProcedureDataSource;
class UAInputAdapter;

class PRSMultiFactory {
 public:
  // Opens the adapter and the stream of training cases, and that of test cases when they choose the
  // subset. Without a training case the status becomes the error 70000 and the host says so.
  PRSMultiFactory(PRSValidSpecs* specs, ProcedureDataSource& source);
  PRSMultiFactory(const PRSMultiFactory&) = delete;
  PRSMultiFactory& operator=(const PRSMultiFactory&) = delete;
  ~PRSMultiFactory();

  // Where the session wants the answer of a part alone: gives it, or says why there is none, and
  // returns true; nothing else is to be done then.
  [[nodiscard]] bool AnswerPart();

  // Opens the model file, then reads all cases once, so that the adapter knows every variable's
  // categories and range; and screens the predictors by the training cases, if asked to.
  [[nodiscard]] bool PreliminaryDataPass();

  // Describes the variables to the engine; predictors that are missing or constant in all cases are
  // dropped. False when what is left does not suffice for what the command asks.
  [[nodiscard]] bool CompleteMetaData();

  // Selects and trains, writes the model file, scores the cases.
  [[nodiscard]] bool RunNBComponent();

  // After everything is shown: raises the error of a model file that could not be written, beside
  // which nothing is lost.
  void ReportLostModel() { fModel.ReportLostModel(); }

  // The engine is null before RunNBComponent, the list empty before CompleteMetaData.
  const INBAlgorithm* GetINBAlgorithm() const { return fModel.GetINBAlgorithm(); }
  const NBVarList* GetNaiveVarListPtr() const { return &fMetaData.VarList(); }
  const UAInputAdapter* GetUAInputAdapter() const { return &fRun.Adapter(); }

  // What the stages found; said there.
  const std::vector<int>& GetMissPredictors() const { return fMetaData.GetMissPredictors(); }
  const std::vector<int>& GetConstPredictors() const { return fMetaData.GetConstPredictors(); }
  std::vector<int> GetScreenedPredictors(MCFSCommon::PredictorDelReason reason) const {
    return fScreening.LeftOutFor(reason);
  }
  std::vector<int> GetDroppedInTraining() const { return fModel.GetDroppedInTraining(); }
  const std::vector<int>& GetSelectPredictors() const { return fModel.GetSelectPredictors(); }
  const std::vector<double>& GetAverageLogValues() const { return fModel.GetAverageLogValues(); }
  const std::vector<std::pair<int, double>>& GetSelectResults() const {
    return fModel.GetSelectResults();
  }
  const NBCrossValidation& GetValidation() const { return fModel.GetValidation(); }
  std::vector<int> GetForcedInputs() const { return fModel.GetForcedInputs(); }
  bool IsClassified() const { return fRun.IsClassified(); }
  const std::optional<MCCommon::Evaluation>& GetEvaluation() const { return fEvaluation; }

  int GetNTrainRecords() const { return fRun.Adapter().GetRecordCount(); }
  int GetNTestRecords() const { return fNTestRecords; }

  // The engine's status, or the driver's; it sticks once it is an error.
  const MCNaive::MCStatus& GetStatus() const { return fRun.GetStatus(); }

  // Raises the text of an error or warning of the engine; codes without a text raise nothing.
  void DisplayMessage(const MCNaive::MCStatus& status) const { fRun.DisplayMessage(status); }

 private:
  // REQUIRES: the stream of training cases has ended without one.
  const char* WhyNoCase() const;
  static const char* WhyNoCase(std::int64_t cases, std::int64_t testCases);
  // The first stage over parts.
  bool LookAtParts();
  // The model, and the classification table, over parts or over the cases that are here.
  bool BuildModel();
  bool BuildOfPart();
  bool Classify(PRSMultiScoring& scoring);
  // What a part answers; nothing after an error, which was said.
  void AnswerLook();
  void AnswerEncode();
  void AnswerClassify(const std::string& model);
  // Learns the ranges of a part and describes the variables, as all parts do.
  bool PreparePart(const PartRequest& request);
  // False, with a message, for what cannot be done with a part, or with parts.
  bool CheckParts();
  // Warns where the selection will not see the training cases themselves.
  void WarnOfSimulation() const;
  // To a session that wants them.
  void HandOverFindings(const PRSMultiScoring& scoring) const;
  std::vector<PRSLeftOut> LeftOut() const;

  PRSValidSpecs& fSpecs;
  PRSMultiRun fRun;
  PRSMultiScreening fScreening;
  PRSMultiMetaData fMetaData;
  PRSMultiModel fModel;
  PRSParts fParts;
  std::optional<PartRequest> fPartRequest;
  std::unique_ptr<PRSMultiParts> fpParts;               // null unless the cases lie in parts
  std::unique_ptr<NaiveDataSourceIter> fpTrainRecIter;  // null if they do
  std::unique_ptr<NaiveDataSourceIter> fpTestRecIter;
  int fNTestRecords = 0;
  std::optional<MCCommon::Evaluation> fEvaluation;
};
