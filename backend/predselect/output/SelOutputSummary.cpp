// The predictor summary as a table.
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "backend/predselect/output/PRSFormats.h"
#include "backend/predselect/output/SelOutput.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MissingValue.h"
#include "feature/FSCriterion.h"
#include "feature/FSSettings.h"
#include "feature/IFSAlgorithm.h"
#include "host/data/ProcedureDataSource.h"
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

// The output that a note stands on: the statistic, behind its significance.
constexpr std::size_t kNoted = 1;

// The outputs of one criterion for one predictor, in their order.
struct Stats {
  Stats(const IFSAlgorithm& algorithm, const FSCriterion& criterion, int predictor)
      : fCriterion(criterion) {
    algorithm.GetPredictorStats(criterion.fCode, predictor, fValues[0], fValues[1], fValues[2],
                                fValues[3]);
  }

  // The key of what is said of an output that could not be computed although the p-value is known;
  // null for nothing.
  const char* Note() const {
    for (std::size_t i = 0; i < fCriterion.fOutputs.size() && fValues[0] == 0.0; ++i) {
      const char* note = fCriterion.fOutputs[i].fNoteIfLost;
      if (note != nullptr && MCMV::IsMissing(fValues[i])) return note;
    }
    return nullptr;
  }

  const FSCriterion& fCriterion;
  double fValues[FSCriterion::kMaxOutputs];
};

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

// The columns of one criterion: rank and outputs.
class CriterionColumns {
 public:
  CriterionColumns(const IFSAlgorithm& algorithm, const FSCriterion& criterion)
      : fAlgorithm(algorithm), fCriterion(criterion) {}

  // All of them under its heading, beside those of other criteria.
  void AddGroup(BpDimension& columns) {
    BpGroup group = columns.AddGroup(BpString(fCriterion.fHeading));
    fColumns.push_back(group.AddCategory(BpString("Rank"), BpProcedure::Count()));
    for (const FSOutput& output : fCriterion.fOutputs) {
      fColumns.push_back(
          group.AddCategory(BpString(output.fHeading),
                            PRSFormatAmongOthers(output.fKind, *fAlgorithm.GetSettings())));
    }
    // Where predictors of both kinds are ranked, they share the column of p-values.
    fbSharesFirst = fCriterion.fContCat.fPart == FSPart::kBeside;
  }

  // A table of its own: those of the statistic under its heading.
  void AddTo(BpDimension& columns) {
    fColumns.push_back(columns.AddCategory(BpString("Rank"), BpProcedure::Count()));
    std::optional<BpGroup> group;
    for (const FSOutput& output : fCriterion.fOutputs) {
      const MCHost::OutputText label = BpString(output.fHeading);
      const MCHost::OutputFormat format = PRSFormatOf(output.fKind, *fAlgorithm.GetSettings());
      if (!output.fbBeside && !group) group = columns.AddGroup(BpString(fCriterion.fHeading));
      fColumns.push_back(output.fbBeside ? columns.AddCategory(label, format)
                                         : group->AddCategory(label, format));
    }
  }

  void Fill(BpPivotTable& table, const BpCategory& row, int predictor) const {
    const FSSettings& settings = *fAlgorithm.GetSettings();
    const FSPart part =
        fCriterion.PartOf(settings.IsCatPredictor(predictor), settings.IsCatTarget());
    if (part == FSPart::kNone) return;
    SetIfThere(table, row, fColumns[0], RankOf(fAlgorithm, fCriterion.fCode, predictor));
    if (fbSharesFirst) SetIfThere(table, row, fColumns[1], ValueOf(predictor));
    if (part != FSPart::kShown) return;
    const Stats stats(fAlgorithm, fCriterion, predictor);
    for (std::size_t i = fbSharesFirst ? 1 : 0; i < fCriterion.fOutputs.size(); ++i) {
      table.SetCell({row, fColumns[i + 1]}, stats.fValues[i]);
    }
    if (const char* note = stats.Note()) {
      BpCategory noted = fColumns[kNoted + 1];
      noted.CellNote({row}, BpString(note));
    }
  }

 private:
  double ValueOf(int predictor) const {
    const std::vector<double>& values = fAlgorithm.GetCriterionValues(fCriterion.fCode);
    const auto place = static_cast<std::size_t>(predictor);
    return place < values.size() ? values[place] : KOVA_SystemMissing;
  }

  const IFSAlgorithm& fAlgorithm;
  const FSCriterion& fCriterion;
  std::vector<BpCategory> fColumns;
  bool fbSharesFirst = false;
};

// Columns for the outputs of all criteria in effect, shared by those of one name; those of the last
// criterion come first.
std::map<std::string, BpCategory> AddNamed(BpDimension& columns, const FSSettings& settings) {
  std::map<std::string, BpCategory> named;
  for (std::size_t left = FSCriterion::All().size(); left > 0; --left) {
    const FSCriterion& criterion = FSCriterion::All()[left - 1];
    if (!settings.GetCriterion(criterion.fCode)) continue;
    for (const FSOutput& output : criterion.fOutputs) {
      if (named.contains(output.fHeading)) continue;
      named.emplace(output.fHeading,
                    columns.AddCategory(BpString(output.fHeading),
                                        PRSFormatAmongOthers(output.fKind, settings)));
    }
  }
  return named;
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
  BpDimension columns = table.ColumnDimension("Statistics");
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (!Algorithm().GetSettings()->GetCriterion(criterion.fCode)) continue;
    CriterionColumns shown(Algorithm(), criterion);
    shown.AddGroup(columns);
    for (const Row& row : rows) shown.Fill(table, row.fCategory, row.fPredictor);
  }
}

void SelOutput::FillContinuous(BpPivotTable& table, const std::vector<Row>& rows) const {
  BpDimension columns = table.ColumnDimension("Statistics");
  CriterionColumns shown(Algorithm(), FSCriterion::Of(Selection().fCriterion));
  shown.AddTo(columns);
  for (const Row& row : rows) shown.Fill(table, row.fCategory, row.fPredictor);
}

// Each predictor by the criterion that shows its kind, ranked by the one that ranks all.
void SelOutput::FillStatTypes(BpPivotTable& table, const std::vector<Row>& rows) const {
  const FSSettings& settings = *Algorithm().GetSettings();
  const RankCriteria ranking = Selection().fCriterion;
  BpDimension types = table.ColumnDimension("Stat Type");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory rank = columns.AddCategory(BpString("Rank"), BpProcedure::Count());
  const std::map<std::string, BpCategory> named = AddNamed(columns, settings);
  std::vector<std::pair<const FSCriterion*, BpCategory>> typed;
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (!settings.GetCriterion(criterion.fCode)) continue;
    typed.emplace_back(&criterion, types.AddCategory(BpString(criterion.fHeading)));
  }
  for (const auto& [predictor, row] : rows) {
    const bool categorical = settings.IsCatPredictor(predictor);
    for (const auto& [criterion, type] : typed) {
      if (criterion->PartOf(categorical, settings.IsCatTarget()) != FSPart::kShown) continue;
      const double ranked = RankOf(Algorithm(), ranking, predictor);
      if (!MCMV::IsMissing(ranked)) table.SetCell({row, type, rank}, ranked);
      const Stats stats(Algorithm(), *criterion, predictor);
      const std::span<const FSOutput> outputs = criterion->fOutputs;
      const auto column = [&](std::size_t i) { return named.at(outputs[i].fHeading); };
      for (std::size_t i = 0; i < outputs.size(); ++i) {
        table.SetCell({row, type, column(i)}, stats.fValues[i]);
      }
      if (const char* note = stats.Note()) column(kNoted).CellNote({row, type}, BpString(note));
    }
  }
}
