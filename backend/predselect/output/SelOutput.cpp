#include "backend/predselect/output/SelOutput.h"

#include <algorithm>
#include <map>
#include <utility>

#include "backend/predselect/command/PRSMessages.h"
#include "backend/predselect/drivers/PRSUniFactory.h"
#include "backend/predselect/output/PRSReasons.h"
#include "backend/predselect/output/PRSTables.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MCAssert.h"
#include "common/MissingValue.h"
#include "feature/FSCriterion.h"
#include "feature/FSSettings.h"
#include "feature/IFSAlgorithm.h"
#include "host/cases/UAInputAdapter.h"
#include "host/data/ProcedureDataSource.h"
#include "host/output/BpError.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "host/output/pivot/BpVariable.h"

namespace {

constexpr const char* kSource = "backend/predselect/SelOutput";

}  // namespace

SelOutput::SelOutput(PRSValidSpecs* pValidSpecs, PRSUniFactory* pFactory,
                     ProcedureDataSource* pActiveDS, BpProcedure* pProcedure)
    : fpValidSpecs(pValidSpecs),
      fpFactory(pFactory),
      fpActiveDS(pActiveDS),
      fpProcedure(pProcedure) {
  MCCommon::Assert(pValidSpecs != nullptr, "pValidSpecs != 0", kSource);
  MCCommon::Assert(pFactory != nullptr, "pFactory != 0", kSource);
  MCCommon::Assert(pActiveDS != nullptr, "pActiveDS != 0", kSource);
  MCCommon::Assert(pProcedure != nullptr, "pProcedure != 0", kSource);
}

void SelOutput::AddToNotesTable() const {
  PRSAddCaseNotes(*fpValidSpecs, "Only valid data used ...");
}

void SelOutput::DisplayTables() const {
  BpCaseSummary();
  BpExcludedPred();
  BpPredSummary();
  BpEffects();
  ChartPredSummary();
  BpSelPredictors();
  WarnOfTiesAtZero();
}

void SelOutput::BpCaseSummary() const {
  if (!fpValidSpecs->GetPrintCPS()) return;
  const IFSAlgorithm& algorithm = Algorithm();
  PRSCaseCounts counts;
  int nValid = 0;
  int nExcluded = 0;
  algorithm.GetNValidNExcluded(counts.fValid.fWeight, counts.fExcluded.fWeight, nValid, nExcluded);
  counts.fValid.fCases = nValid;
  counts.fExcluded.fCases = nExcluded;
  const KOVA_Variable& target = fpActiveDS->GetVariable(fpValidSpecs->GetDependVar());
  std::map<KOVA_Value, PRSCaseCount> categories;  // whatever the order of the cases
  for (int i = 0; i < algorithm.GetNTargetCategories(); ++i) {
    int code = 0;
    std::pair<int, double> found{0, 0.0};
    if (!algorithm.GetTargetCategoryInfo(i, code, found)) continue;
    int kovaVar = -1;
    const KOVA_Value value = fpFactory->GetUAInputAdapter()->DecodeCatValue(
        algorithm.GetSettings()->GetTargetPosition(), code, kovaVar);
    categories[value] = {found.second, found.first};
  }
  for (const auto& [value, count] : categories) {
    counts.fCategories.push_back({PRSCategoryLabel(target, value), count});
  }
  PRSShowCaseSummary(*fpValidSpecs, target, counts, nullptr);
}

void SelOutput::BpExcludedPred() const {
  if (!fpValidSpecs->GetPrintExclude() || !fpValidSpecs->GetScreenStatusOn()) return;
  const IFSAlgorithm& algorithm = Algorithm();
  const std::vector<int>& indices = algorithm.GetIndicesDelPred();
  const std::vector<int>& reasons = algorithm.GetReasonsDelPred();
  if (indices.empty()) {
    PRSMessages().NoPredsExcluded();
    return;
  }
  BpPivotTable table("Excluded Predictors", "ExcludedPredictors");
  table.Caption(BpString("Screening performed in displayed order ..."));
  table.MinDataColumnWidth(kPRSListWidth);
  BpDimension rows = table.RowDimension("Reason");
  BpDimension columns = table.ColumnDimension("Predictors");
  const BpCategory column = columns.AddCategory(BpString("Predictors"));
  for (const bool categorical : {true, false}) {
    BpGroup group = rows.AddGroup(BpString(categorical ? "Categorical" : "Scale"));
    for (const MCFSCommon::PredictorDelReason reason : PRSReasons()) {
      std::vector<std::string> names;
      for (std::size_t i = 0; i < indices.size(); ++i) {
        const bool here = reasons[i] == reason &&
                          algorithm.GetSettings()->IsCatPredictor(indices[i]) == categorical;
        if (here) names.push_back(Predictor(indices[i]).GetName());
      }
      if (names.empty()) continue;
      table.SetCell({group.AddCategory(PRSReasonLabel(*fpValidSpecs, reason)), column},
                    PRSListCell("[%1:\n ^1:]1", names));
    }
  }
  table.Show();
}

void SelOutput::BpSelPredictors() const {
  const PRSSelection selection = Selection();
  if (selection.IsEmpty()) {
    MCHost::RaiseMessage(MCHost::OutputMessage::kWarning, "No predictors were selected.");
    return;
  }
  if (!fpValidSpecs->GetPrintSelect()) return;
  std::vector<std::string> lists[] = {SelectedNames(true), SelectedNames(false)};
  for (std::vector<std::string>& names : lists) std::sort(names.begin(), names.end());
  PRSShowSelected(lists[0], lists[1]);
}

// Perfect relations are 0 without rounding: among them alone nothing could be told apart.
void SelOutput::WarnOfTiesAtZero() const {
  const PRSSelection selection = Selection();
  if (Algorithm().GetSettings()->ArePValuesExact()) return;
  if (!FSCriterion::Of(selection.fCriterion).HasSignificance()) return;
  int nTied = 0;
  bool isRounded = false;
  for (std::size_t i = 0; i < selection.fIndices.size(); ++i) {
    if (selection.fValues[i] != 0.0) continue;
    ++nTied;
    const FSEffect effect =
        Algorithm().GetPredictorEffect(selection.fCriterion, selection.fIndices[i]);
    isRounded = isRounded || !MCMV::IsMissing(effect.fLogP);
  }
  if (nTied > 1 && isRounded) PRSMessages().TiedAtZero(nTied);
}

void SelOutput::SetMacros() const {
  PRSSetMacros(*fpValidSpecs, SelectedNames(true), SelectedNames(false));
}

const IFSAlgorithm& SelOutput::Algorithm() const {
  const IFSAlgorithm* algorithm = fpFactory->GetIFSAlgorithm();
  MCCommon::Assert(algorithm != nullptr, "fpAlgorithm != 0", kSource);
  return *algorithm;
}

const KOVA_Variable& SelOutput::Predictor(int index) const {
  return fpActiveDS->GetVariable(
      fpValidSpecs->GetPredListPtr()->at(static_cast<std::size_t>(index)));
}

PRSSelection SelOutput::Selection() const { return SelectPredictors(*fpValidSpecs, Algorithm()); }

std::vector<std::string> SelOutput::SelectedNames(bool categorical) const {
  const PRSSelection selection = Selection();
  std::vector<std::string> names;
  for (int i = 0; i < selection.fNSelected; ++i) {
    const int index = selection.fIndices[static_cast<std::size_t>(i)];
    if (Algorithm().GetSettings()->IsCatPredictor(index) == categorical) {
      names.push_back(Predictor(index).GetName());
    }
  }
  return names;
}
