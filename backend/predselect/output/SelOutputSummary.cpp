// The predictor summary: table and chart.
#include <algorithm>

#include "backend/predselect/drivers/PRSUniFactory.h"
#include "backend/predselect/output/SelOutput.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MissingValue.h"
#include "feature/FSSettings.h"
#include "feature/IFSAlgorithm.h"
#include "host/data/ProcedureDataSource.h"
#include "host/output/FacSTDictionary.h"
#include "host/output/chart/ChartString.h"
#include "host/output/chart/XDocument.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "host/output/pivot/BpVariable.h"

// One row of the summary: a predictor and its place in the table.
struct SelOutput::Row {
  int fPredictor;
  BpCategory fCategory;
};

namespace {

using MCFSCommon::RankCriteria;

constexpr const char* kCriterionLabels[] = {"Pearson Chi-Square", "Likelihood Ratio Chi-Square",
                                            "Cramer's V", "Lambda"};

struct Stats {
  double fValue = KOVA_SystemMissing;
  double fOut2 = KOVA_SystemMissing;
  double fOut3 = KOVA_SystemMissing;
  double fOut4 = KOVA_SystemMissing;
  bool fbHas = false;  // the predictor has statistics for the criterion
};

Stats StatsOf(const IFSAlgorithm& algorithm, RankCriteria criterion, int predictor) {
  Stats stats;
  stats.fbHas = algorithm.GetPredictorStats(criterion, predictor, stats.fValue, stats.fOut2,
                                            stats.fOut3, stats.fOut4);
  return stats;
}

double At(const std::vector<double>& values, int predictor) {
  const auto place = static_cast<std::size_t>(predictor);
  return place < values.size() ? values[place] : KOVA_SystemMissing;
}

// Shown from 1; missing for a predictor without a rank.
double RankOf(const IFSAlgorithm& algorithm, RankCriteria criterion, int predictor) {
  const std::vector<int>& ranks = algorithm.GetRanks(criterion);
  const auto place = static_cast<std::size_t>(predictor);
  if (place >= ranks.size() || ranks[place] < 0) return KOVA_SystemMissing;
  return ranks[place] + 1;
}

void SetIfThere(BpPivotTable& table, const BpCategory& row, const BpCategory& column,
                double value) {
  if (!MCMV::IsMissing(value)) table.SetCell({row, column}, value);
}

// The value of F, with a note where it could not be computed although its p-value is known.
void SetF(BpPivotTable& table, const BpCategory& row, BpCategory column, const Stats& stats) {
  if (!stats.fbHas) return;
  table.SetCell({row, column}, stats.fOut2);
  if (MCMV::IsMissing(stats.fOut2) && stats.fValue == 0.0) {
    column.CellNote({row}, BpString("No within-factor variation..."));
  }
}

void SetT(BpPivotTable& table, const BpCategory& row, const BpCategory& correlation, BpCategory t,
          const Stats& stats) {
  if (!stats.fbHas) return;
  BpCategory noted = correlation;
  table.SetCell({row, correlation}, stats.fOut2);
  table.SetCell({row, t}, stats.fOut3);
  if (MCMV::IsMissing(stats.fOut3) && stats.fValue == 0.0) {
    noted.CellNote({row}, BpString("Pearson correlation equals one..."));
  }
}

}  // namespace

void SelOutput::BpPredSummary() const {
  if (!fpValidSpecs->GetPrintSummary()) return;
  BpPivotTable table("Predictor Summary", "PredictorSummary");
  BpDimension dimension = table.RowDimension("Predictor");
  const std::vector<Row> rows = SummaryRows(dimension);
  if (rows.empty()) return;
  const bool mixed = Algorithm().GetSettings()->GetTypeAllPredictors() == MCFSCommon::kMixed;
  if (fpValidSpecs->GetDependCatVar()) {
    FillCategorical(table, rows);
  } else if (mixed) {
    FillStatTypes(table, rows);
  } else {
    FillContinuous(table, rows);
  }
  table.Show();
}

std::vector<SelOutput::Row> SelOutput::SummaryRows(BpDimension& dimension) const {
  const PRSSelection selection = Selection();
  BpGroup selected = dimension.AddGroup(BpString("Selected"));
  BpGroup unselected = dimension.AddGroup(BpString("Unselected"));
  std::vector<Row> rows;
  for (std::size_t i = 0; i < selection.fIndices.size(); ++i) {
    const bool isSelected = static_cast<int>(i) < selection.fNSelected;
    BpGroup& group = isSelected ? selected : unselected;
    const int predictor = selection.fIndices[i];
    rows.push_back({predictor, group.AddCategory(BpVariable(Predictor(predictor)))});
  }
  const std::size_t shown = rows.size() - static_cast<std::size_t>(selection.fNSelected);
  if (selection.fbLimited && shown > 0) {
    BpComposite note("Limited to the first ^1 unselected predictors.");
    unselected.Note(note.AddLiteral(std::to_string(shown)).Finish());
  }
  return rows;
}

void SelOutput::FillCategorical(BpPivotTable& table, const std::vector<Row>& rows) const {
  const IFSAlgorithm& algorithm = Algorithm();
  const FSSettings& settings = *algorithm.GetSettings();
  BpDimension columns = table.ColumnDimension("Statistics");
  const bool allScale = settings.GetTypeAllPredictors() == MCFSCommon::kAllContinuous;
  for (int code = 0; code < 4 && !allScale; ++code) {
    const auto criterion = static_cast<RankCriteria>(code);
    if (!settings.GetCriterion(criterion)) continue;
    const bool significance = PRSSelection::HasSignificance(criterion);
    BpGroup group = columns.AddGroup(BpString(kCriterionLabels[code]));
    const BpCategory rank = group.AddCategory(BpString("Rank"), fpProcedure->Count());
    std::vector<BpCategory> more;
    if (significance) {
      more.push_back(group.AddCategory(BpString("Unadjusted Sig."), fpProcedure->Significance()));
    }
    const BpCategory value = group.AddCategory(BpString("Value"), fpProcedure->GeneralStat());
    if (significance) more.push_back(group.AddCategory(BpString("df"), fpProcedure->Count()));
    for (const Row& row : rows) {
      const Stats stats = StatsOf(algorithm, criterion, row.fPredictor);
      const double known = At(algorithm.GetCriterionValues(criterion), row.fPredictor);
      SetIfThere(table, row.fCategory, rank, RankOf(algorithm, criterion, row.fPredictor));
      if (significance) SetIfThere(table, row.fCategory, more[0], known);
      if (!stats.fbHas) continue;
      table.SetCell({row.fCategory, value}, significance ? stats.fOut2 : stats.fValue);
      if (significance) table.SetCell({row.fCategory, more[1]}, stats.fOut3);
    }
  }
  if (settings.GetTypeAllPredictors() == MCFSCommon::kAllCategorical) return;
  BpGroup f = columns.AddGroup(BpString("F"));
  const BpCategory rank = f.AddCategory(BpString("Rank"), fpProcedure->Count());
  const BpCategory sig = f.AddCategory(BpString("Unadjusted Sig."), fpProcedure->Significance());
  const BpCategory value = f.AddCategory(BpString("Value"), fpProcedure->GeneralStat());
  const BpCategory df1 = f.AddCategory(BpString("df1"), fpProcedure->Count());
  const BpCategory df2 = f.AddCategory(BpString("df2"), fpProcedure->Count());
  for (const Row& row : rows) {
    const Stats stats = StatsOf(algorithm, MCFSCommon::kFStat, row.fPredictor);
    if (!stats.fbHas) continue;
    SetIfThere(table, row.fCategory, rank, RankOf(algorithm, MCFSCommon::kFStat, row.fPredictor));
    table.SetCell({row.fCategory, sig}, stats.fValue);
    SetF(table, row.fCategory, value, stats);
    table.SetCell({row.fCategory, df1}, stats.fOut3);
    table.SetCell({row.fCategory, df2}, stats.fOut4);
  }
}

void SelOutput::FillContinuous(BpPivotTable& table, const std::vector<Row>& rows) const {
  const IFSAlgorithm& algorithm = Algorithm();
  const RankCriteria criterion = Selection().fCriterion;
  const bool scale = criterion == MCFSCommon::kTStat;
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory rank = columns.AddCategory(BpString("Rank"), fpProcedure->Count());
  const BpCategory sig =
      columns.AddCategory(BpString("Unadjusted Sig."), fpProcedure->Significance());
  BpGroup group = columns.AddGroup(BpString(scale ? "Pearson Correlation" : "F"));
  const BpCategory value = group.AddCategory(
      BpString("Value"), scale ? fpProcedure->Correlation() : fpProcedure->GeneralStat());
  const BpCategory second = group.AddCategory(
      BpString(scale ? "t" : "df1"), scale ? fpProcedure->GeneralStat() : fpProcedure->Count());
  const BpCategory df = scale ? columns.AddCategory(BpString("df"), fpProcedure->Count())
                              : group.AddCategory(BpString("df2"), fpProcedure->Count());
  for (const Row& row : rows) {
    const Stats stats = StatsOf(algorithm, criterion, row.fPredictor);
    SetIfThere(table, row.fCategory, rank, RankOf(algorithm, criterion, row.fPredictor));
    table.SetCell({row.fCategory, sig}, stats.fValue);
    if (scale) {
      SetT(table, row.fCategory, value, second, stats);
    } else {
      SetF(table, row.fCategory, value, stats);
      table.SetCell({row.fCategory, second}, stats.fOut3);
    }
    table.SetCell({row.fCategory, df}, stats.fOut4);
  }
}

void SelOutput::FillStatTypes(BpPivotTable& table, const std::vector<Row>& rows) const {
  const IFSAlgorithm& algorithm = Algorithm();
  BpDimension types = table.ColumnDimension("Stat Type");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory f = types.AddCategory(BpString("F"));
  const BpCategory correlation = types.AddCategory(BpString("Pearson Correlation"));
  const BpCategory rank = columns.AddCategory(BpString("Rank"), fpProcedure->Count());
  const BpCategory sig =
      columns.AddCategory(BpString("Unadjusted Sig."), fpProcedure->Significance());
  BpCategory value = columns.AddCategory(BpString("Value"), fpProcedure->GeneralStat());
  const BpCategory t = columns.AddCategory(BpString("t"), fpProcedure->GeneralStat());
  const BpCategory df = columns.AddCategory(BpString("df"), fpProcedure->Count());
  const BpCategory df1 = columns.AddCategory(BpString("df1"), fpProcedure->Count());
  const BpCategory df2 = columns.AddCategory(BpString("df2"), fpProcedure->Count());
  for (const Row& row : rows) {
    const bool categorical = algorithm.GetSettings()->IsCatPredictor(row.fPredictor);
    const RankCriteria criterion = categorical ? MCFSCommon::kFStat : MCFSCommon::kTStat;
    const BpCategory& type = categorical ? f : correlation;
    const BpCategory& place = row.fCategory;
    const Stats stats = StatsOf(algorithm, criterion, row.fPredictor);
    const double ranked = RankOf(algorithm, MCFSCommon::kFStat, row.fPredictor);
    if (!MCMV::IsMissing(ranked)) table.SetCell({place, type, rank}, ranked);
    table.SetCell({place, type, sig}, stats.fValue);
    table.SetCell({place, type, value}, stats.fOut2);
    if (categorical) {
      table.SetCell({place, type, df1}, stats.fOut3);
      table.SetCell({place, type, df2}, stats.fOut4);
    } else {
      table.SetCell({place, type, t}, stats.fOut3);
      table.SetCell({place, type, df}, stats.fOut4);
    }
    const double lost = categorical ? stats.fOut2 : stats.fOut3;
    if (MCMV::IsMissing(lost) && stats.fValue == 0.0) {
      value.CellNote({place, type}, BpString(categorical ? "No within-factor variation..."
                                                         : "Pearson correlation equals one..."));
    }
  }
}

void SelOutput::ChartPredSummary() const {
  if (!fpValidSpecs->GetPlotSummary()) return;
  const PRSSelection selection = Selection();
  if (selection.fIndices.empty()) return;
  FacSTDictionary texts;
  texts.SetGlobalStringTable();
  texts.SetProcedure(fpProcedure->GetName());
  const bool significance = PRSSelection::HasSignificance(selection.fCriterion);
  XVariable color(XVariable::kCategorical, texts.Lookup("Predictors"));
  color.addRelabel(0, texts.Lookup("Selected"));
  color.addRelabel(1, texts.Lookup("Unselected"));
  XVariable x(XVariable::kCategorical, texts.Lookup("Predictor"));
  XVariable y(XVariable::kScale,
              texts.Lookup(significance ? "Unadjusted Significance"
                                        : kCriterionLabels[selection.fCriterion]));
  y.SetNumberFormat(XVariable::kThreeDecimals);
  XDocument chart("Predictor Summary Chart", XGraph(std::move(x), std::move(y)));
  XGraph& graph = chart.GetGraph();
  graph.GetElement().colorByVariable(color);
  const int n = static_cast<int>(selection.fIndices.size());
  for (int i = 0; i < n; ++i) {
    const auto place = static_cast<std::size_t>(i);
    const KOVA_Variable& variable = Predictor(selection.fIndices[place]);
    graph.GetXVariable().addRelabel(
        i, variable.GetLabel().empty() ? variable.GetName() : variable.GetLabel());
    graph.GetElement().AddPoint(i, selection.fValues[place], i < selection.fNSelected ? 0 : 1);
  }
  chart.SetFrameHeight(std::max(1.0, n / 20.0));
  graph.GetXAxis().SetTickFontSize(n >= 19 ? 8 : 12);
  graph.GetXAxis().SetMargins(0.1, 0.1);
  graph.GetXAxis().HideLabel();
  graph.GetYAxis().SetMargins(0.0, 0.05);
  graph.GetYAxis().SetNice(true);
  graph.GetYAxis().SetInterval(0.0, 1.0);
  graph.GetYAxis().invertScale(1.0);
  if (significance) {
    graph.AddYReferenceLine(fpValidSpecs->GetUniPCutOff(), "dash");
    ChartString note(texts.Lookup("The line is at p-value..."));
    chart.AddFootnote(note.append(" ").appendDouble(fpValidSpecs->GetUniPCutOff()).GetText());
  }
  if (selection.fbLimited && n > selection.fNSelected) {
    ChartString note(texts.Lookup("Unselected predictors limited..."));
    chart.AddFootnote(note.append(" ").appendInteger(n - selection.fNSelected).GetText());
  }
  chart.Show();
}
