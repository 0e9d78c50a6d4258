#include "backend/predselect/output/NaiveOutput.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "backend/predselect/drivers/PRSMultiFactory.h"
#include "backend/predselect/drivers/PRSMultiRun.h"
#include "backend/predselect/output/PRSReasons.h"
#include "backend/predselect/output/PRSTables.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MCAssert.h"
#include "common/MissingValue.h"
#include "host/cases/UAInputAdapter.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/output/AddNotes.h"
#include "host/output/BpError.h"
#include "host/output/OutputNote.h"
#include "host/output/evaluation/ShowCrossValidation.h"
#include "host/output/evaluation/ShowEvaluation.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpNumber.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "host/output/pivot/BpVariable.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/selection/NBFormulas.h"

namespace {

constexpr const char* kSource = "backend/predselect/NaiveOutput";
constexpr int kSubsetWidth = 100;  // points

}  // namespace

// Predictors that were dropped for one reason, by index in the data.
struct NaiveOutput::Dropped {
  MCHost::OutputText fReason;
  std::vector<int> fVariables;
};

// One subset of the selection, 0 being the initial one.
struct NaiveOutput::SubsetRow {
  int fSize = 0;  // predictors, forced ones included
  const KOVA_Variable* fpAdded = nullptr;
  double fRank = KOVA_SystemMissing;  // from 1
  double fCriterion = KOVA_SystemMissing;
  double fLogLikelihood = KOVA_SystemMissing;
};

NaiveOutput::NaiveOutput(PRSValidSpecs* pValidSpecs, PRSMultiFactory* pFactory,
                         ProcedureDataSource* pActiveDS, BpProcedure* pProcedure)
    : fpValidSpecs(pValidSpecs),
      fpVarValidSpecs(pValidSpecs == nullptr ? nullptr : pValidSpecs->GetVarValidSpecsPtr()),
      fpFactory(pFactory),
      fpActiveDS(pActiveDS),
      fpProcedure(pProcedure) {
  MCCommon::Assert(pValidSpecs != nullptr, "pValidSpecs != 0", kSource);
  MCCommon::Assert(fpVarValidSpecs != nullptr, "fpVarValidSpecs != 0", kSource);
  MCCommon::Assert(pFactory != nullptr, "pFactory != 0", kSource);
  MCCommon::Assert(pActiveDS != nullptr, "pActiveDS != 0", kSource);
  MCCommon::Assert(pProcedure != nullptr, "pProcedure != 0", kSource);
}

void NaiveOutput::AddToNotesTable() const {
  PRSAddCaseNotes(*fpValidSpecs, "Only valid data used ...");
  const std::string& file = fpValidSpecs->GetModelFileName();
  if (file.empty()) return;
  AddNotes(MCHost::OutputNote::kFile, BpString("Model File"), MCHost::OutputText::Literal(file));
}

void NaiveOutput::DisplayTables() {
  fpInpAdapt = fpFactory->GetUAInputAdapter();
  MCCommon::Assert(fpInpAdapt != nullptr, "fpInpAdapt != 0", kSource);
  fpAlgorithm = fpFactory->GetINBAlgorithm();
  MCCommon::Assert(fpAlgorithm != nullptr, "fpAlgorithm != 0", kSource);
  fpSettings = &fpAlgorithm->GetSettings();
  MCCommon::Assert(fpSettings != nullptr, "fpSettings != 0", kSource);
  fpNBVarList = &fpAlgorithm->GetVarList();
  MCCommon::Assert(fpNBVarList != nullptr, "fpNBVarList != 0", kSource);
  const bool isSelected = !fpValidSpecs->GetMultiNoSelection();
  if (fpValidSpecs->GetPrintCPS()) DisplayCPS();
  if (fpValidSpecs->GetPrintExclude()) DisplayScreened();
  if (fpValidSpecs->GetPrintSummary() && isSelected) DisplaySubsets();
  if (fpValidSpecs->GetPrintSelect() && isSelected) DisplaySelected();
  if (fpValidSpecs->GetPrintClassify()) DisplayClassification();
  if (fpFactory->GetEvaluation()) DisplayEvaluation();
  if (!fpFactory->GetValidation().fvRuns.empty()) DisplayValidation();
}

MCHost::OutputText NaiveOutput::TargetCategory(int code) const {
  const int target = fpValidSpecs->GetDependVar();
  int kovaVar = -1;
  const KOVA_Value value =
      fpInpAdapt->DecodeCatValue(fpVarValidSpecs->GetRecVarIndex(target), code, kovaVar);
  return PRSCategoryLabel(fpActiveDS->GetVariable(target), value);
}

const KOVA_Variable& NaiveOutput::VariableAt(int listPosition) const {
  return fpActiveDS->GetVariable(fpVarValidSpecs->GetKOVAVarIndex(listPosition));
}

void NaiveOutput::DisplayCPS() const {
  PRSCaseCounts counts;
  int nValid = 0;
  int nExcluded = 0;
  fpAlgorithm->GetNValidNExcluded(counts.fValid.fWeight, counts.fExcluded.fWeight, nValid,
                                  nExcluded);
  counts.fValid.fCases = nValid;
  counts.fExcluded.fCases = nExcluded;
  for (int k = 0; k < fpAlgorithm->GetNTargetCategories(); ++k) {
    counts.fCategories.push_back(
        {TargetCategory(k),
         {fpAlgorithm->GetTargetCategoryCount(k), fpAlgorithm->GetTargetCategoryRecords(k)}});
  }
  PRSShowCaseSummary(
      *fpValidSpecs, fpActiveDS->GetVariable(fpValidSpecs->GetDependVar()), counts,
      fpValidSpecs->GetMultiTrainSamp() ? "Cases of the training sample..." : nullptr);
}

std::vector<std::string> NaiveOutput::NamesOf(const std::vector<int>& variables,
                                              bool categorical) const {
  std::vector<std::string> names;
  for (const int var : variables) {
    if (fpVarValidSpecs->GetKOVACatVar(var) != categorical) continue;
    names.push_back(fpActiveDS->GetVariable(var).GetName());
  }
  return names;
}

// The predictors that were dropped, by reason.
std::vector<NaiveOutput::Dropped> NaiveOutput::DroppedPredictors() const {
  std::vector<Dropped> dropped;
  const auto add = [&](MCFSCommon::PredictorDelReason reason, const std::vector<int>& variables) {
    if (!variables.empty()) dropped.push_back({PRSReasonLabel(*fpValidSpecs, reason), variables});
  };
  add(MCFSCommon::kAllMissing, fpFactory->GetMissPredictors());
  add(MCFSCommon::kAllConstant, fpFactory->GetConstPredictors());
  for (const MCFSCommon::PredictorDelReason reason : PRSReasons()) {
    add(reason, fpFactory->GetScreenedPredictors(reason));
  }
  const std::vector<int> inTraining = fpFactory->GetDroppedInTraining();
  if (!inTraining.empty()) dropped.push_back({BpString("Training Cases Constant"), inTraining});
  return dropped;
}

void NaiveOutput::DisplayScreened() const {
  const std::vector<Dropped> dropped = DroppedPredictors();
  if (dropped.empty()) return;
  BpPivotTable table("Excluded Predictors", "ExcludedPredictors");
  table.Caption(BpString("Screening performed in displayed order ..."));
  table.MinDataColumnWidth(kPRSListWidth);
  BpDimension reasons = table.RowDimension("Reason");
  BpDimension types = table.RowDimension("Type");
  BpDimension columns = table.ColumnDimension("Predictors");
  const BpCategory column = columns.AddCategory(BpString("Predictors"));
  std::vector<std::pair<bool, BpCategory>> typeRows;
  for (const bool categorical : {true, false}) {
    const bool isShown = std::any_of(dropped.begin(), dropped.end(), [&](const Dropped& some) {
      return !NamesOf(some.fVariables, categorical).empty();
    });
    if (!isShown) continue;
    typeRows.emplace_back(categorical,
                          types.AddCategory(BpString(categorical ? "Categorical" : "Scale")));
  }
  for (const Dropped& some : dropped) {
    const BpCategory row = reasons.AddCategory(some.fReason);
    for (const auto& [categorical, type] : typeRows) {
      const std::vector<std::string> names = NamesOf(some.fVariables, categorical);
      if (!names.empty()) table.SetCell({row, type, column}, PRSListCell("[%1:\n ^1:]1", names));
    }
  }
  table.Show();
}

std::vector<NaiveOutput::SubsetRow> NaiveOutput::SubsetRows() const {
  const std::vector<int>& fSelectPredictors = fpFactory->GetSelectPredictors();
  const std::vector<double>& logs = fpFactory->GetAverageLogValues();
  const auto numForced = static_cast<int>(fpFactory->GetForcedInputs().size());
  const int nAdded = static_cast<int>(logs.size()) - numForced;
  std::vector<SubsetRow> rows;
  for (int j = 0; j <= nAdded; ++j) {
    SubsetRow row;
    row.fSize = numForced + j;
    if (row.fSize > 0) row.fLogLikelihood = logs[static_cast<std::size_t>(row.fSize - 1)];
    if (j > 0) {
      const auto place = static_cast<std::size_t>(row.fSize - 1);
      MCCommon::Assert(place < fSelectPredictors.size(), "numForced + j < fSelectPredictors.size()",
                       kSource);
      row.fpAdded = &VariableAt(fSelectPredictors[place]);
    }
    rows.push_back(row);
  }
  const auto& results = fpFactory->GetSelectResults();
  for (std::size_t rank = 0; rank < results.size(); ++rank) {
    SubsetRow& row = rows.at(static_cast<std::size_t>(results[rank].first - numForced));
    row.fRank = static_cast<double>(rank) + 1.0;
    row.fCriterion = results[rank].second;
  }
  if (IsExact()) AddPseudoBIC(rows);
  return rows;
}

bool NaiveOutput::IsExact() const { return fpValidSpecs->GetMultiExactSize() >= 1; }

// An exact size compares nothing, but shows what the sizes on the way would have been compared by.
void NaiveOutput::AddPseudoBIC(std::vector<SubsetRow>& rows) const {
  double weight, excludedWeight;
  int nValid, nExcluded;
  fpAlgorithm->GetNValidNExcluded(weight, excludedWeight, nValid, nExcluded);
  for (SubsetRow& row : rows) {
    if (row.fSize == 0 || row.fLogLikelihood == KOVA_SystemMissing) continue;
    row.fCriterion = NBFormulas::ComputePseudoBIC(row.fSize, weight, row.fLogLikelihood);
  }
}

// The row of the chosen subset: the best one, or the last one where nothing was ranked: for an
// exact size, and where the training cases left no predictor.
int NaiveOutput::ChosenSubset(int numSubsets) const {
  const auto& fSelectResults = fpFactory->GetSelectResults();
  const auto numForced = static_cast<int>(fpFactory->GetForcedInputs().size());
  // Without forced predictors the initial subset is empty and has no result.
  const int nRanked = numForced > 0 ? numSubsets : numSubsets - 1;
  MCCommon::Assert(IsExact() || static_cast<int>(fSelectResults.size()) == nRanked,
                   "fSelectResults.size() == numSubsets", kSource);
  const int subsetIndex =
      fSelectResults.empty() ? numSubsets - 1 : fSelectResults.front().first - numForced;
  MCCommon::Assert(subsetIndex >= 0, "subsetIndex >= 0", kSource);
  MCCommon::Assert(subsetIndex < numSubsets, "subsetIndex < numSubsets", kSource);
  return subsetIndex;
}

void NaiveOutput::DisplaySubsets() const {
  const std::vector<SubsetRow> subsets = SubsetRows();
  const bool isRanked = !fpFactory->GetSelectResults().empty();
  const auto count = fpProcedure->Count();
  const auto general = fpProcedure->GeneralStat();
  BpPivotTable table("Subset Summary", "SubsetSummary");
  table.MinDataColumnWidth(kSubsetWidth);
  BpDimension rowDimension = table.RowDimension("Subset");
  BpDimension columns = table.ColumnDimension("Statistics");
  BpCategory added = columns.AddCategory(BpString("Predictor Added"));
  std::vector<BpCategory> rank, criterion;
  if (isRanked) rank.push_back(columns.AddCategory(BpString("Rank"), count));
  if (isRanked || IsExact()) {
    const bool isBIC = fpValidSpecs->GetMultiPseudoBIC() || IsExact();
    criterion.push_back(
        columns.AddCategory(BpString(isBIC ? "Pseudo-BIC" : "Test Data Criterion"), general));
    if (!isBIC && IsSimulated()) criterion.back().Note(BpString("Computed using simulated..."));
  }
  BpCategory logLikelihood = columns.AddCategory(BpString("Average Log-Likelihood"), general);
  if (AreStepsSimulated()) {
    NoteSimulatedSteps(added, logLikelihood);
    if (IsExact()) criterion.back().Note(BpString("Estimated with simulated..."));
  }
  std::vector<BpCategory> rows;
  for (const SubsetRow& subset : subsets) {
    const auto number = static_cast<double>(rows.size());
    rows.push_back(rowDimension.AddCategory(BpNumber(number, count)));
    const BpCategory& row = rows.back();
    table.SetCell({row, added}, subset.fpAdded == nullptr ? BpString("(Initial Subset)")
                                                          : BpVariable(*subset.fpAdded));
    if (subset.fSize == 0) continue;
    for (const BpCategory& column : rank) table.SetCell({row, column}, subset.fRank);
    for (const BpCategory& column : criterion) table.SetCell({row, column}, subset.fCriterion);
    table.SetCell({row, logLikelihood}, subset.fLogLikelihood);
  }
  NoteSubsets(rows, added);
  table.Show();
}

void NaiveOutput::NoteSubsets(const std::vector<BpCategory>& rows, BpCategory& added) const {
  added.CellNote({rows.front()}, InitialSubset());
  BpCategory chosen = rows[static_cast<std::size_t>(ChosenSubset(static_cast<int>(rows.size())))];
  chosen.Note(BpString("The chosen subset..."));
  added.CellNote({chosen}, BpString("The chosen subset..."));
}

MCHost::OutputText NaiveOutput::InitialSubset() const {
  const std::vector<int> forced = fpFactory->GetForcedInputs();
  if (forced.empty()) return BpString("The initial subset is empty.");
  BpComposite text("The initial subset contains [%1:, ^1:]1");
  text.Sublist();
  for (const int var : forced) text.Add(BpVariable(fpActiveDS->GetVariable(var)));
  return text.EndSublist().Finish();
}

bool NaiveOutput::IsSimulated() const {
  const long records = long{fpFactory->GetNTrainRecords()} + fpFactory->GetNTestRecords();
  return records > fpSettings->GetMaxRecordsInMemory();
}

bool NaiveOutput::AreStepsSimulated() const {
  return fpFactory->GetNTrainRecords() > fpSettings->GetMaxRecordsInMemory();
}

// A ranking by pseudo-BIC computes the log-likelihoods anew from the training cases.
void NaiveOutput::NoteSimulatedSteps(BpCategory& added, BpCategory& logLikelihood) const {
  const bool isAnew = fpValidSpecs->GetMultiPseudoBIC() && !IsExact();
  if (isAnew) {
    added.Note(BpString("Added by simulated..."));
  } else {
    logLikelihood.Note(BpString("Estimated with simulated..."));
  }
}

std::vector<std::string> NaiveOutput::SelectedNames(bool categorical) const {
  const NBVarList& varList = fpFactory->GetINBAlgorithm()->GetVarList();
  std::vector<std::string> names;
  for (int i = 0; i < varList.Size(); ++i) {
    const bool isHere =
        varList.GetVariableRole(i) == INBVariable::kInput &&
        (varList.GetVarAt(i)->GetMeasureLevel() != INBVariable::kContinuous) == categorical;
    if (isHere) names.push_back(varList.GetVarAt(i)->GetVariableName());
  }
  return names;
}

void NaiveOutput::SetMacros() const {
  PRSSetMacros(*fpValidSpecs, SelectedNames(true), SelectedNames(false));
}

void NaiveOutput::DisplaySelected() const {
  PRSShowSelected(SelectedNames(true), SelectedNames(false));
}

bool NaiveOutput::IsCalibrated() const {
  const auto* model = dynamic_cast<const NBAlgorithm*>(fpAlgorithm);
  return model != nullptr && model->GetCalibration().GetMethod() != NBCalibration::kNone;
}

void NaiveOutput::DisplayEvaluation() const {
  std::vector<MCHost::OutputText> classes;
  for (int k = 0; k < fpAlgorithm->GetNTargetCategories(); ++k)
    classes.push_back(TargetCategory(k));
  const char* ofTest =
      IsCalibrated() ? "Of the test cases, which calibrated it..." : "Of the test cases.";
  const bool isTest = fpValidSpecs->GetMultiTrainSamp();
  MCHost::ShowEvaluation(*fpFactory->GetEvaluation(), classes,
                         BpString(isTest ? ofTest : "Training accuracy flatters..."));
}

void NaiveOutput::DisplayValidation() const {
  const NBCrossValidation& validation = fpFactory->GetValidation();
  const std::vector<int>& candidates = validation.fvCandidates;
  std::vector<MCHost::OutputText> names;
  for (const int position : candidates) names.push_back(BpVariable(VariableAt(position)));
  std::vector<MCHost::ShownFold> folds;
  for (const NBFoldRun& run : validation.fvRuns) {
    MCHost::ShownFold& fold = folds.emplace_back();
    fold.fRepeat = run.fRepeat;
    fold.fFold = run.fFold;
    fold.fTestShare = run.fTestWeight / run.fTrainingWeight;
    fold.fEvaluation = run.fEvaluation;
    for (const int position : run.fvChosen) {
      const auto found = std::ranges::find(candidates, position);  // a forced one is none
      if (found != candidates.end()) {
        fold.fvChosen.push_back(static_cast<int>(found - candidates.begin()));
      }
    }
  }
  MCHost::ShowCrossValidation(folds, names, IsCalibrated());
}

void NaiveOutput::DisplayClassification() const {
  const int nCats = fpAlgorithm->GetNTargetCategories();
  if (!fpFactory->IsClassified()) {
    MCHost::RaiseMessage(MCHost::OutputMessage::kWarning,
                         "Too many categories to show classification: ^1, ^2...",
                         {std::to_string(nCats), std::to_string(PRSMultiRun::kMostClassified)});
    return;
  }
  const NBOutputStatistics* train = fpAlgorithm->GetTrainOutStats();
  const NBOutputStatistics* test = fpAlgorithm->GetTestOutStats();
  if (train == nullptr && test == nullptr) return;
  BpPivotTable table("Classification", "Classification");
  BpComposite caption("Dependent Variable ^1");
  caption.Add(BpVariable(fpActiveDS->GetVariable(fpValidSpecs->GetDependVar())));
  table.Caption(caption.Finish());
  BpDimension observed = table.RowDimension("Observed");
  BpDimension predicted = table.ColumnDimension("Predicted");
  BpDimension samples = table.LayerDimension("Sample");
  predicted.ShowName();
  BpGroup rowGroup = observed.AddGroup(BpString("Values"));
  BpGroup columnGroup = predicted.AddGroup(BpString("Values"));
  std::vector<BpCategory> rows;
  std::vector<BpCategory> columns;
  for (int k = 0; k < nCats; ++k) {
    rows.push_back(rowGroup.AddCategory(TargetCategory(k), fpProcedure->Count()));
    columns.push_back(columnGroup.AddCategory(TargetCategory(k)));
  }
  rows.push_back(observed.AddCategory(BpString("Overall Percent"), fpProcedure->Percent()));
  columns.push_back(predicted.AddCategory(BpString("Percent Correct"), fpProcedure->Percent()));
  const auto fill = [&](const char* name, const NBOutputStatistics* stats) {
    if (stats == nullptr) return;
    BpCategory sample = samples.AddCategory(BpString(name));
    FillClassificationLayer(table, *stats, sample, rows, columns);
    NoteLargestCategory(*stats, sample, rows.back(), columns.back());
    if (test != nullptr) return;
    sample.CellNote({rows.back(), columns.back()}, BpString("Training accuracy flatters..."));
  };
  fill("Training", train);
  fill("Test", test);
  table.Show();
}

// What always guessing the sample's most frequent category would get right, beside what the model
// does.
void NaiveOutput::NoteLargestCategory(const NBOutputStatistics& stats, BpCategory& sample,
                                      const BpCategory& row, const BpCategory& column) const {
  int largest = -1;
  double count = 0.0;
  for (int observed = 0; observed < stats.GetNCategories(); ++observed) {
    const std::vector<double> cases = stats.GetMisClassRow(observed);
    const double total = std::accumulate(cases.begin(), cases.end(), 0.0);
    if (total > count) largest = observed;
    count = std::max(count, total);
  }
  if (largest < 0) return;
  BpComposite note("The most frequent category, ^1, holds ^2...");
  note.Add(TargetCategory(largest))
      .Add(BpNumber(count / stats.GetTotalWeight() * 100.0, BpProcedure::Percent()));
  sample.CellNote({row, column}, note.Finish());
}

// Rows and columns end with the percentages.
void NaiveOutput::FillClassificationLayer(BpPivotTable& table, const NBOutputStatistics& stats,
                                          const BpCategory& sample,
                                          const std::vector<BpCategory>& rows,
                                          const std::vector<BpCategory>& columns) const {
  const auto percent = [](double part, double total) {
    return total > 0.0 ? part / total * 100.0 : KOVA_SystemMissing;
  };
  const int nCats = stats.GetNCategories();
  const double grandTotal = stats.GetTotalWeight();
  double correct = 0.0;
  std::vector<double> columnTotals(static_cast<std::size_t>(nCats), 0.0);
  for (int i = 0; i < nCats; ++i) {
    const BpCategory& row = rows[static_cast<std::size_t>(i)];
    double rowTotal = 0.0;
    for (int j = 0; j < nCats; ++j) {
      const double count = stats.GetMisClassElement(i, j);
      const auto column = static_cast<std::size_t>(j);
      table.SetCell({row, columns[column], sample}, count);
      rowTotal += count;
      columnTotals[column] += count;
    }
    const double hits = stats.GetMisClassElement(i, i);
    correct += hits;
    table.SetCell({row, columns.back(), sample}, percent(hits, rowTotal));
  }
  for (std::size_t j = 0; j < columnTotals.size(); ++j) {
    table.SetCell({rows.back(), columns[j], sample}, percent(columnTotals[j], grandTotal));
  }
  table.SetCell({rows.back(), columns.back(), sample}, percent(correct, grandTotal));
}
