#include "backend/predselect/output/PRSTables.h"

#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MissingValue.h"
#include "host/cases/KOVA_Value.h"
#include "host/output/AddNotes.h"
#include "host/output/OutputNote.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpDataValue.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "host/output/pivot/BpVariable.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

MCHost::OutputText PRSListCell(const char* pattern, const std::vector<std::string>& names) {
  BpComposite list(pattern);
  list.Sublist();
  for (const std::string& name : names) list.AddLiteral(name);
  return list.EndSublist().Finish();
}

MCHost::OutputText PRSCategoryLabel(const KOVA_Variable& variable, const KOVA_Value& value) {
  return value.IsNumeric() ? BpDataValue(variable, value.GetNumber())
                           : BpDataValue(variable, value.GetString());
}

void PRSAddCaseNotes(const PRSValidSpecs& specs, const char* casesUsed) {
  AddNotes(MCHost::OutputNote::kMethod, BpString("Definition of Missing"),
           BpString(specs.IsMissingExclude() ? "UserMiss excluded ..." : "UserMiss included ..."));
  AddNotes(MCHost::OutputNote::kMethod, BpString("Cases Used"), BpString(casesUsed));
}

void PRSShowCaseSummary(const PRSValidSpecs& specs, const KOVA_Variable& target,
                        const PRSCaseCounts& counts, const char* caption) {
  const double total = counts.fValid.fWeight + counts.fExcluded.fWeight;
  BpPivotTable table("Case Processing Summary", "CaseProcessingSummary");
  if (caption != nullptr) table.Caption(BpString(caption));
  BpDimension rows = table.RowDimension("Value");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory n = columns.AddCategory(BpString("N"), BpProcedure::Count());
  const BpCategory percent = columns.AddCategory(BpString("Percent"), BpProcedure::Percent());
  std::vector<BpCategory> unweighted;
  if (specs.GetKOVAWeightVar() >= 0) {
    unweighted.push_back(columns.AddCategory(BpString("Unweighted N"), BpProcedure::Count()));
  }
  const auto fill = [&](const BpCategory& row, const PRSCaseCount& count) {
    const double share = count.fWeight / total * 100.0;
    table.SetCell({row, n}, count.fWeight);
    table.SetCell({row, percent}, total > 0.0 ? share : KOVA_SystemMissing);
    for (const BpCategory& column : unweighted) table.SetCell({row, column}, count.fCases);
  };
  if (!counts.fCategories.empty()) {
    BpGroup group = rows.AddGroup(BpVariable(target));
    for (const auto& category : counts.fCategories) {
      fill(group.AddCategory(category.fLabel), category.fCount);
    }
  }
  fill(rows.AddCategory(BpString("Valid")), counts.fValid);
  fill(rows.AddCategory(BpString("Excluded")), counts.fExcluded);
  fill(rows.AddCategory(BpString("Total")),
       {total, counts.fValid.fCases + counts.fExcluded.fCases});
  table.Show();
}

void PRSShowSelected(const std::vector<std::string>& categorical,
                     const std::vector<std::string>& scale) {
  if (categorical.empty() && scale.empty()) return;
  BpPivotTable table("Selected Predictors", "SelectedPredictors");
  table.MinDataColumnWidth(kPRSListWidth);
  BpDimension rows = table.RowDimension("Type");
  BpDimension columns = table.ColumnDimension("Predictors");
  const BpCategory column = columns.AddCategory(BpString("Predictors"));
  const auto fill = [&](const char* type, const std::vector<std::string>& names) {
    if (names.empty()) return;
    table.SetCell({rows.AddCategory(BpString(type)), column}, PRSListCell("[%1: ^1:]1", names));
  };
  fill("Categorical", categorical);
  fill("Scale", scale);
  table.Show();
}

void PRSSetMacros(const PRSValidSpecs& specs, const std::vector<std::string>& categorical,
                  const std::vector<std::string>& scale) {
  MCHost::ISession& session = MCHost::CurrentSession();
  const auto set = [&session](const KovaVarName& name, const std::vector<std::string>& values) {
    if (!name.IsEmpty()) session.SetMacro(name.GetName(), values);
  };
  set(specs.GetFactorMacroVar(), categorical);
  set(specs.GetCovariateMacroVar(), scale);
}
