#include "operations/InspectState.h"

#include <map>
#include <utility>
#include <vector>

#include "backend/predselect/output/PRSFormats.h"
#include "common/MissingValue.h"
#include "feature/FSCriterion.h"
#include "feature/FSSettings.h"
#include "feature/FSWithinMemory.h"
#include "host/data/MemoryTable.h"
#include "host/output/OutputDocument.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"
#include "host/text/CsvText.h"
#include "modelfiles/ComponentFile.h"
#include "naivebayes/NBAlgorithm.h"
#include "operations/DocumentParts.h"
#include "operations/Findings.h"
#include "operations/ModelCategories.h"
#include "operations/RequestError.h"
#include "operations/ShowEvidence.h"
#include "operations/ShowRanges.h"

namespace PredSelect {

namespace {

using MCFSCommon::RankCriteria;
using MCHost::OutputText;

// A table of named facts.
class FactTable {
 public:
  explicit FactTable(const char* title)
      : fTable(title, title),
        fRows(fTable.RowDimension("Property")),
        fColumns(fTable.ColumnDimension("Value")),
        fValue(fColumns.AddCategory(BpString("Value"))) {}

  void Add(const char* fact, const std::string& text) {
    fTable.SetCell({fRows.AddCategory(BpString(fact)), fValue}, OutputText::Literal(text));
  }
  void Add(const char* fact, double number) {
    fTable.SetCell({fRows.AddCategory(BpString(fact), BpProcedure::Count()), fValue}, number);
  }
  void Show() { fTable.Show(); }

 private:
  BpPivotTable fTable;
  BpDimension fRows;
  BpDimension fColumns;
  BpCategory fValue;
};

// The columns of one criterion, filled for every predictor that it has ranked.
class RankingColumns {
 public:
  RankingColumns(BpDimension& dimension, const IFSAlgorithm& component,
                 const FSCriterion& criterion)
      : fComponent(component), fCriterion(criterion) {
    BpGroup group = dimension.AddGroup(BpString(criterion.fHeading));
    fColumns.push_back(group.AddCategory(BpString("Rank"), BpProcedure::Count()));
    for (const FSOutput& output : criterion.fOutputs) {
      fColumns.push_back(group.AddCategory(
          BpString(output.fHeading), PRSFormatAmongOthers(output.fKind, *component.GetSettings())));
    }
  }

  // A predictor of the kind that the criterion is not for has no cells; one that is only ranked
  // beside the others has only its rank and significance here.
  void Fill(BpPivotTable& table, const BpCategory& row, int predictor) const {
    const auto place = static_cast<std::size_t>(predictor);
    const FSSettings& settings = *fComponent.GetSettings();
    const FSPart part =
        fCriterion.PartOf(settings.IsCatPredictor(predictor), settings.IsCatTarget());
    const int rank = fComponent.GetRanks(fCriterion.fCode)[place];
    if (rank < 0 || part == FSPart::kNone) return;
    table.SetCell({row, fColumns[0]}, rank + 1);
    double values[FSCriterion::kMaxOutputs];
    fComponent.GetPredictorStats(fCriterion.fCode, predictor, values[0], values[1], values[2],
                                 values[3]);
    values[0] = fComponent.GetCriterionValues(fCriterion.fCode)[place];
    const std::size_t nShown = part == FSPart::kShown ? fColumns.size() - 1 : 1;
    for (std::size_t i = 0; i < nShown; ++i) {
      if (!MCMV::IsMissing(values[i])) table.SetCell({row, fColumns[i + 1]}, values[i]);
    }
  }

 private:
  const IFSAlgorithm& fComponent;
  const FSCriterion& fCriterion;
  std::vector<BpCategory> fColumns;
};

// Names of the variables, or their positions where the file has none.
class FeatureNames {
 public:
  explicit FeatureNames(const ComponentFile& file) : fFile(file) {}

  std::string Predictor(int i) const {
    if (!fFile.fDictionary) return "predictor " + std::to_string(i);
    return fFile.fDictionary->fPredictors[static_cast<std::size_t>(i)].fName;
  }
  std::string Target() const {
    return fFile.fDictionary ? fFile.fDictionary->fTarget.fName : std::string("(not named)");
  }
  // Empty where there is none, or none is named.
  std::string Weight() const { return fFile.fDictionary ? fFile.fDictionary->fWeight : ""; }
  std::string TargetCategory(int code) const {
    return IsKnown(code) ? fFile.fDictionary->fTarget.GetCategoryText(code) : std::to_string(code);
  }
  // The order in which categories are shown: by value, then those without one by code.
  bool IsBefore(int code, int other) const {
    const bool areKnown = IsKnown(code) && IsKnown(other);
    if (areKnown) return fFile.fDictionary->fTarget.IsLess(code, other);
    return IsKnown(code) || (!IsKnown(other) && code < other);
  }

 private:
  bool IsKnown(int code) const {
    return fFile.fDictionary && code >= 0 && code < fFile.fDictionary->fTarget.GetNCategories();
  }

  const ComponentFile& fFile;
};

void ShowFeatureFacts(const IFSAlgorithm& component, const FeatureNames& names) {
  const FSSettings& settings = *component.GetSettings();
  double valid = 0.0;
  double excluded = 0.0;
  int nValid = 0;
  int nExcluded = 0;
  component.GetNValidNExcluded(valid, excluded, nValid, nExcluded);
  std::string criteria;
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (!settings.GetCriterion(criterion.fCode)) continue;
    criteria += (criteria.empty() ? "" : ", ") + std::string(criterion.fHeading);
  }
  FactTable facts("Component");
  facts.Add("Component", component.GetComponentVersion());
  facts.Add("Stage", component.ArePredictorsRanked() ? "ranked"
                     : component.IsDataAccumulated() ? "counted"
                                                     : "empty");
  facts.Add("Dependent variable", names.Target());
  if (!names.Weight().empty()) facts.Add("Weight variable", names.Weight());
  facts.Add("Candidate predictors", settings.GetNPredictors());
  facts.Add("Ranking criteria", criteria);
  if (settings.ArePValuesExact()) facts.Add("p-values", "exact");
  facts.Add("Valid cases", nValid);
  facts.Add("Excluded cases", nExcluded);
  facts.Add("Valid weight", valid);
  facts.Add("Excluded weight", excluded);
  facts.Show();
}

void ShowTargetCounts(const IFSAlgorithm& component, const FeatureNames& names) {
  if (component.GetNTargetCategories() == 0) return;
  BpPivotTable table("Target Categories", "TargetCategories");
  BpDimension rows = table.RowDimension("Value");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory n = columns.AddCategory(BpString("N"), BpProcedure::Count());
  const BpCategory unweighted = columns.AddCategory(BpString("Unweighted N"), BpProcedure::Count());
  const auto isBefore = [&names](int a, int b) { return names.IsBefore(a, b); };
  std::map<int, std::pair<int, double>, decltype(isBefore)> categories(isBefore);
  for (int i = 0; i < component.GetNTargetCategories(); ++i) {
    int code = 0;
    std::pair<int, double> counts;
    if (component.GetTargetCategoryInfo(i, code, counts)) categories.emplace(code, counts);
  }
  for (const auto& [code, counts] : categories) {
    const BpCategory row = rows.AddCategory(OutputText::Literal(names.TargetCategory(code)));
    table.SetCell({row, n}, counts.second);
    table.SetCell({row, unweighted}, counts.first);
  }
  table.Show();
}

void ShowExcluded(const IFSAlgorithm& component, const FeatureNames& names) {
  const std::vector<int>& indices = component.GetIndicesDelPred();
  if (indices.empty()) return;
  BpPivotTable table("Excluded Predictors", "ExcludedPredictors");
  BpDimension rows = table.RowDimension("Predictor");
  BpDimension columns = table.ColumnDimension("Properties");
  const BpCategory reason = columns.AddCategory(BpString("Reason"));
  for (std::size_t i = 0; i < indices.size(); ++i) {
    const BpCategory row = rows.AddCategory(OutputText::Literal(names.Predictor(indices[i])));
    table.SetCell(
        {row, reason},
        OutputText::Literal(MCFSCommon::GetDelReasonName(component.GetReasonsDelPred()[i])));
  }
  table.Show();
}

// Every predictor that is left, the best first by the first criterion that ranks it.
void ShowRanking(const IFSAlgorithm& component, const FeatureNames& names) {
  if (!component.ArePredictorsRanked()) return;
  BpPivotTable table("Ranking", "Ranking");
  BpDimension rows = table.RowDimension("Predictor");
  BpDimension columns = table.ColumnDimension("Statistics");
  std::vector<RankingColumns> criteria;
  std::vector<int> order;
  std::vector<bool> isListed(static_cast<std::size_t>(component.GetSettings()->GetNPredictors()));
  for (const FSCriterion& criterion : FSCriterion::All()) {
    const RankCriteria code = criterion.fCode;
    // A criterion that was asked for after the ranking has no ranks.
    if (!component.GetSettings()->GetCriterion(code) || component.GetRanks(code).empty()) continue;
    criteria.emplace_back(columns, component, criterion);
    std::vector<int> ranked;
    std::vector<double> values;
    FSThrowWantOfMemory(component.GetTopPredictors(code, ranked, values, 0));
    for (const int predictor : ranked) {
      if (!isListed[static_cast<std::size_t>(predictor)]) order.push_back(predictor);
      isListed[static_cast<std::size_t>(predictor)] = true;
    }
  }
  for (const int predictor : order) {
    const BpCategory row = rows.AddCategory(OutputText::Literal(names.Predictor(predictor)));
    for (const RankingColumns& columnsOfCriterion : criteria) {
      columnsOfCriterion.Fill(table, row, predictor);
    }
  }
  if (!order.empty()) table.Show();
}

// Counts are screened and ranked here, as the command that counted them would have done next.
void Rank(IFSAlgorithm& component, bool screening) {
  if (!component.IsDataAccumulated() || component.ArePredictorsRanked()) return;
  (void)component.ScreenAndRank(screening, 0);
}

void ShowFeature(const ComponentFile& file) {
  const FeatureNames names(file);
  ShowFeatureFacts(*file.fpFeature, names);
  ShowTargetCounts(*file.fpFeature, names);
  Rank(*file.fpFeature, !file.fDictionary || file.fDictionary->fbScreening);
  ShowExcluded(*file.fpFeature, names);
  ShowRanking(*file.fpFeature, names);
}

// Empty for none.
std::string CalibrationText(const INBAlgorithm& component) {
  const auto* model = dynamic_cast<const NBAlgorithm*>(&component);
  const NBCalibration calibration = model == nullptr ? NBCalibration() : model->GetCalibration();
  if (calibration.GetMethod() == NBCalibration::kNone) return "";
  if (calibration.GetMethod() == NBCalibration::kIsotonic) return "isotonic";
  std::string text = "temperature ";
  MCHost::AppendNumber(text, calibration.GetTemperature());
  return text;
}

void ShowNaiveFacts(const INBAlgorithm& component) {
  const NBVarList& variables = component.GetVarList();
  double valid = 0.0;
  double excluded = 0.0;
  int nValid = 0;
  int nExcluded = 0;
  component.GetNValidNExcluded(valid, excluded, nValid, nExcluded);
  FactTable facts("Component");
  facts.Add("Component", component.GetComponentVersion());
  facts.Add("Stage", component.IsModelBuilt() ? "model built" : "no model");
  facts.Add("Dependent variable",
            variables.GetVarAt(variables.GetTargetIndex())->GetVariableName());
  facts.Add("Predictors of the model", component.GetNumberOfInputVars());
  if (const std::string text = CalibrationText(component); !text.empty()) {
    facts.Add("Calibration", text);
  }
  facts.Add("Valid cases", nValid);
  facts.Add("Excluded cases", nExcluded);
  facts.Add("Valid weight", valid);
  facts.Add("Excluded weight", excluded);
  facts.Show();
}

void ShowNaiveVariables(const NBVarList& variables) {
  BpPivotTable table("Variables", "Variables");
  BpDimension rows = table.RowDimension("Variable");
  BpDimension columns = table.ColumnDimension("Properties");
  const BpCategory role = columns.AddCategory(BpString("Role"));
  const BpCategory level = columns.AddCategory(BpString("Level"));
  const BpCategory categories = columns.AddCategory(BpString("Categories"), BpProcedure::Count());
  const BpCategory label = columns.AddCategory(BpString("Label"));
  for (int i = 0; i < variables.Size(); ++i) {
    const INBVariable& variable = *variables.GetVarAt(i);
    const BpCategory row = rows.AddCategory(OutputText::Literal(variable.GetVariableName()));
    table.SetCell({row, role},
                  OutputText::Literal(INBVariable::GetRoleName(variable.GetVariableRole())));
    table.SetCell({row, level},
                  OutputText::Literal(INBVariable::GetLevelName(variable.GetMeasureLevel())));
    table.SetCell({row, categories}, variable.GetNumberOfCategories());
    table.SetCell({row, label}, OutputText::Literal(variable.GetVariableLabel()));
  }
  table.Show();
}

void ShowPriors(const INBAlgorithm& component) {
  const auto* model = dynamic_cast<const NBAlgorithm*>(&component);
  if (model == nullptr || !component.IsModelBuilt()) return;
  BpPivotTable table("Target Categories", "TargetCategories");
  BpDimension rows = table.RowDimension("Value");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory n = columns.AddCategory(BpString("N"), BpProcedure::Count());
  const BpCategory prior = columns.AddCategory(BpString("Prior"), BpProcedure::GeneralStat());
  const NBVarList& variables = component.GetVarList();
  for (int k = 0; k < component.GetNTargetCategories(); ++k) {
    const BpCategory row = rows.AddCategory(
        OutputText::Literal(CategoryText(*variables.GetVarAt(variables.GetTargetIndex()), k)));
    table.SetCell({row, n}, component.GetTargetCategoryCount(k));
    table.SetCell({row, prior}, model->GetOutput().GetPriors()[static_cast<std::size_t>(k)]);
  }
  table.Show();
}

void ShowPart(const NBPartModel& part) {
  FactTable facts("Counts of Parts");
  facts.Add("Parts", static_cast<double>(part.fParts.size()));
  facts.Add("Cases", static_cast<double>(part.fCounts.fNCases));
  facts.Add("Valid cases", static_cast<double>(part.fCounts.fNRecords));
  facts.Add("Valid weight", part.fCounts.fWeight);
  facts.Add("Predictors", static_cast<double>(part.fCounts.fInputs.size()));
  facts.Show();
}

void ShowNaive(const INBAlgorithm& component) {
  ShowNaiveFacts(component);
  ShowNaiveVariables(component.GetVarList());
  ShowPriors(component);
}

}  // namespace

void InspectState(ComponentFile& state, MCHost::OutputDocument& document,
                  const InspectRequest& request) {
  if (request.fbWeights && state.fpNaive == nullptr) {
    throw RequestError("weights", state.fpFeature != nullptr
                                      ? "a ranking of predictors has no weights of evidence."
                                      : "there is no model here, and so no weights of evidence.");
  }
  MCHost::MemoryTable none;
  MCHost::Session session(none, document);
  const MCHost::SessionScope scope(session);
  RecordData(document, 0, 0);
  document.BeginRun("inspect").fbCompleted = true;
  if (state.fRanges) return ShowRanges(*state.fRanges);
  if (state.fpPart != nullptr) ShowPart(*state.fpPart);
  if (state.fpNaive != nullptr) ShowNaive(*state.fpNaive);
  if (state.fpFeature != nullptr) ShowFeature(state);
  if (request.fbWeights) ShowEvidence(*state.fpNaive);
  if (document.fbFindings) document.CurrentRun().fFindings = FindingsText(state);
}

}  // namespace PredSelect
