// The results of one SELECTPRED run as notes, tables, a chart and macros.
//
// Reads the specifications and, through the driver, the component; owns nothing. Each table returns
// at once when its option is off.
#pragma once

#include <string>
#include <vector>

#include "backend/predselect/drivers/PRSSelection.h"
#include "host/output/OutputText.h"

class BpCategory;
class BpDimension;
class BpGroup;
class BpPivotTable;
class BpProcedure;
class IFSAlgorithm;
class KOVA_Variable;
class PRSUniFactory;
class PRSValidSpecs;
class ProcedureDataSource;

class SelOutput {
 public:
  // All borrowed, none null (asserted).
  SelOutput(PRSValidSpecs* pValidSpecs, PRSUniFactory* pFactory, ProcedureDataSource* pActiveDS,
            BpProcedure* pProcedure);

  // How missing values and cases are treated. May be called before the run.
  void AddToNotesTable() const;

  // Everything below, in the order of its declaration. REQUIRES: the component has run.
  void DisplayTables() const;

  void BpCaseSummary() const;
  // The predictors that were excluded, by reason; a warning when there are none.
  void BpExcludedPred() const;
  void BpPredSummary() const;
  void BpEffects() const;
  void ChartPredSummary() const;
  // A warning takes the table's place when nothing was selected, even if no table was asked for.
  void BpSelPredictors() const;

  // A warning when rounding to 0 has tied p-values of predictors that are selected or shown.
  void WarnOfTiesAtZero() const;

  // Gives the macros of the command the selected predictors, in rank order; whatever is printed.
  void SetMacros() const;

 private:
  struct Row;

  const IFSAlgorithm& Algorithm() const;
  const KOVA_Variable& Predictor(int index) const;
  PRSSelection Selection() const;
  // Names of the selected predictors of one kind, in rank order.
  std::vector<std::string> SelectedNames(bool categorical) const;
  std::vector<Row> SummaryRows(BpDimension& dimension) const;
  void FillCategorical(BpPivotTable& table, const std::vector<Row>& rows) const;
  void FillContinuous(BpPivotTable& table, const std::vector<Row>& rows) const;
  void FillStatTypes(BpPivotTable& table, const std::vector<Row>& rows) const;

  PRSValidSpecs* fpValidSpecs;
  PRSUniFactory* fpFactory;
  ProcedureDataSource* fpActiveDS;
  BpProcedure* fpProcedure;
};
