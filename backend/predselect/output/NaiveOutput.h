// The results of one NAIVEBAYES run as notes and tables.
//
// Reads the specifications and, through the driver, the engine; owns nothing. Each table belongs to
// an option of the command.
#pragma once

#include <string>
#include <vector>

#include "host/output/OutputText.h"

class BpCategory;
class BpPivotTable;
class BpProcedure;
class INBAlgorithm;
class KOVA_Variable;
class NBOutputStatistics;
class NBVarList;
class NaiveBayesSettings;
class PRSMultiFactory;
class PRSValidSpecs;
class ProcedureDataSource;
class UAInputAdapter;
class UAVarValidSpecs;

class NaiveOutput {
 public:
  // All borrowed, none null (asserted).
  NaiveOutput(PRSValidSpecs* pValidSpecs, PRSMultiFactory* pFactory, ProcedureDataSource* pActiveDS,
              BpProcedure* pProcedure);

  // How missing values and cases are treated, and the model file. May be called before the run.
  void AddToNotesTable() const;

  // The tables that were asked for: case processing summary, excluded predictors, subset summary,
  // selected predictors, classification, evaluation. REQUIRES: the engine has run.
  void DisplayTables();

  // The predictors that were dropped, by reason and type; no table when there are none. Needs no
  // engine.
  void DisplayScreened() const;

  // Gives the macros of the command the predictors of the model, in the order of the variable list;
  // whatever is printed. REQUIRES: the engine has run.
  void SetMacros() const;

 private:
  struct SubsetRow;
  struct Dropped;

  void DisplayCPS() const;
  void DisplaySubsets() const;
  void DisplaySelected() const;
  void DisplayClassification() const;
  bool IsCalibrated() const;
  void DisplayEvaluation() const;
  void DisplayValidation() const;
  void FillClassificationLayer(BpPivotTable& table, const NBOutputStatistics& stats,
                               const BpCategory& sample, const std::vector<BpCategory>& rows,
                               const std::vector<BpCategory>& columns) const;
  void NoteLargestCategory(const NBOutputStatistics& stats, BpCategory& sample,
                           const BpCategory& row, const BpCategory& column) const;

  std::vector<std::string> NamesOf(const std::vector<int>& variables, bool categorical) const;
  std::vector<Dropped> DroppedPredictors() const;
  std::vector<SubsetRow> SubsetRows() const;
  bool IsExact() const;
  void AddPseudoBIC(std::vector<SubsetRow>& rows) const;
  int ChosenSubset(int numSubsets) const;
  void NoteSubsets(const std::vector<BpCategory>& rows, BpCategory& added) const;
  // Names of the model's predictors of one kind, in the order of the variable list.
  std::vector<std::string> SelectedNames(bool categorical) const;
  MCHost::OutputText InitialSubset() const;
  // Whether training and test cases together exceed the memory for cases.
  bool IsSimulated() const;
  // The steps forward work on simulated data when the training cases exceed it.
  bool AreStepsSimulated() const;
  void NoteSimulatedSteps(BpCategory& added, BpCategory& logLikelihood) const;
  const KOVA_Variable& VariableAt(int listPosition) const;
  MCHost::OutputText TargetCategory(int code) const;

  PRSValidSpecs* fpValidSpecs;
  UAVarValidSpecs* fpVarValidSpecs;
  PRSMultiFactory* fpFactory;
  ProcedureDataSource* fpActiveDS;
  BpProcedure* fpProcedure;
  const UAInputAdapter* fpInpAdapt = nullptr;
  const INBAlgorithm* fpAlgorithm = nullptr;
  const NaiveBayesSettings* fpSettings = nullptr;
  const NBVarList* fpNBVarList = nullptr;
};
