// Runs the Naive Bayes engine for one NAIVEBAYES command: learns the categories and ranges of the
// data, describes the variables to the engine, selects predictors or takes them all, writes the
// model file, and scores every case.
//
// The stages are called in the order of their declaration, each only when the one before returned
// true and no error was raised; a stage that returns false has said why through the host. The
// status is the engine's and sticks once it is an error. Specifications and data are borrowed;
// adapter, engine and variable list live as long as this, for the output to read.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "backend/predselect/command/PRSMessages.h"
#include "host/cases/KOVA_Value.h"
#include "host/cases/UAInpAdaptMsg.h"
#include "host/cases/UAProcDataSourceIter.h"
#include "host/command/ParserMessage.h"
#include "naivebayes/MCStatus.h"
#include "naivebayes/variables/INBVariable.h"

class INBAlgorithm;
class KOVA_Variable;
class NaiveDataSourceIter;
class NBVarList;
class PRSValidSpecs;
class ProcedureDataSource;
class ProgressListener;
class UAInputAdapter;
class UAVarValidSpecs;
namespace MCCommon {
class Record;
}
namespace MCHost {
class OutputFile;
}

class PRSMultiFactory {
 public:
  // Opens the adapter and the stream of training cases, and that of test cases when they choose the
  // subset. Without a training case the status becomes the error 70000 and the host says so.
  PRSMultiFactory(PRSValidSpecs* specs, ProcedureDataSource& source);
  PRSMultiFactory(const PRSMultiFactory&) = delete;
  PRSMultiFactory& operator=(const PRSMultiFactory&) = delete;
  ~PRSMultiFactory();

  // Reads all cases once, so that the adapter knows every variable's categories and range.
  [[nodiscard]] bool PreliminaryDataPass();

  // Describes the variables to the engine; predictors that are missing or constant in all cases are
  // dropped. False when what is left does not suffice for what the command asks.
  [[nodiscard]] bool CompleteMetaData();

  // Selects and trains, writes the model file, scores the cases.
  [[nodiscard]] bool RunNBComponent();

  // Null until CompleteMetaData (the list) and RunNBComponent (the engine).
  const INBAlgorithm* GetINBAlgorithm() const { return fpNBAlgorithm.get(); }
  const NBVarList* GetNaiveVarListPtr() const { return fpNBVarList.get(); }
  const UAInputAdapter* GetUAInputAdapter() const { return fpAdapter.get(); }

  // Predictors dropped as missing or as constant in all cases: indices in the data, in the order
  // met, forced ones included.
  const std::vector<int>& GetMissPredictors() const { return fMissPredictors; }
  const std::vector<int>& GetConstPredictors() const { return fConstPredictors; }

  // Results of the selection. Predictors by position in the variable list, in order of entry,
  // forced ones first; average log-likelihoods by subset size (size 1 first); pairs of subset size
  // and criterion value, the best first (none for an exact size).
  const std::vector<int>& GetSelectPredictors() const { return fSelectPredictors; }
  const std::vector<double>& GetAverageLogValues() const { return fAverageLogValues; }
  const std::vector<std::pair<int, double>>& GetSelectResults() const { return fSelectResults; }

  // A table of all pairs of more categories than these helps nobody and may not fit into memory.
  static constexpr int kMostClassified = 1000;

  // Whether cases are counted by observed and predicted category: the command asks for it, and the
  // target has not too many categories.
  bool IsClassified() const;

  // The forced predictors that are in the model: indices in the data, in the order of the command's
  // list. One that is constant in the training cases is not. REQUIRES: the engine has run.
  std::vector<int> GetForcedInputs() const;

  int GetNTrainRecords() const;
  int GetNTestRecords() const { return fNTestRecords; }

  const MCNaive::MCStatus& GetStatus() const { return fStatus; }

  // Raises the text of an error or warning of the engine; codes without a text raise nothing.
  void DisplayMessage(const MCNaive::MCStatus& status) const;

 private:
  using VarIndex = int;

  bool Fail(int code);
  // False, with a message, after a read error or a stop.
  bool IsPassComplete(const UAProcDataSourceIter& stream);
  // True, with a message, once the user or the clock has ended the run.
  bool IsStopped();

  // Metadata.
  bool SetPredictors(const std::vector<int>* variables, const std::vector<bool>* categorical,
                     bool forced);
  bool CheckCounts();
  bool FitsIntoMemory() const;
  bool SetNBVariable(VarIndex var, bool categorical, bool input, bool forced);
  bool SetContinuous(const KOVA_Variable& variable, VarIndex var, INBVariable::VariableRole role);
  bool SetCategorical(const KOVA_Variable& variable, VarIndex var, bool input,
                      INBVariable::VariableRole role);
  void AddCategories(const KOVA_Variable& variable, VarIndex var, int nCats,
                     INBVariable::VariableRole role);
  void TargetUnusable(int nCats);
  void SetNBMissingValues(const KOVA_Variable& variable, int index);
  KOVA_Value Decode(VarIndex var, int code) const;

  // The model.
  bool OpenModelFile();
  bool CreateEngine();
  std::string NameIn(const MCNaive::MCStatus& status) const;
  void BuildOrSelect();
  bool FinishEngine();
  void NameDroppedInputs() const;
  bool WriteResultDocument();
  bool WriteModel();
  bool NeedsScoring() const;

  // Scoring.
  bool CreateNewVars();
  bool CreatePredictedValue();
  bool CreateProbabilities();
  bool ScoringDataPass();
  bool ScoreCases();
  bool SaveVarValues(ProcDSIterator* pDataIter, const MCCommon::Record* pRecord, bool isTraining);

  PRSValidSpecs* fpSpecs;
  UAVarValidSpecs* fpVarSpecs;
  ProcedureDataSource* fpSource;
  bool fbSaveModel;
  bool fbKeepValues;  // a model file or a saved state needs the values behind the codes
  bool fbRunSelection;
  std::unique_ptr<UAInputAdapter> fpAdapter;
  UAInpAdaptMsg fAdapterMessages;
  std::vector<bool> fTrainTestFlags;
  std::unique_ptr<NaiveDataSourceIter> fpTrainRecIter;
  std::unique_ptr<NaiveDataSourceIter> fpTestRecIter;
  std::unique_ptr<NaiveDataSourceIter> fpScoreRecIter;
  std::unique_ptr<ProgressListener> fpProgress;
  std::unique_ptr<INBAlgorithm> fpNBAlgorithm;
  std::unique_ptr<NBVarList> fpNBVarList;
  std::unique_ptr<MCHost::OutputFile> fpModelFile;
  int fNUniquePreds = 0;
  int fNForcePreds = 0;
  int fNTestRecords = 0;
  std::int64_t fNCasesRead = 0;  // in the first pass
  std::vector<int> fMissPredictors;
  std::vector<int> fConstPredictors;
  std::vector<int> fSelectPredictors;
  std::vector<double> fAverageLogValues;
  std::vector<std::pair<int, double>> fSelectResults;
  std::string fResultDocument;
  int fNSaveDepCats = 0;
  int fPredValVar = -1;
  std::vector<int> fPredProbVars;
  std::vector<KOVA_Value> fDependValues;  // by category
  ParserMessage fParserMessages;
  PRSMessages fMessages;
  MCNaive::MCStatus fStatus;
};
