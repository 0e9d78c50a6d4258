#include "operations/RankPredictors.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string>
#include <utility>

#include "common/MissingValue.h"
#include "host/command/KovaVarName.h"
#include "host/data/DataTable.h"
#include "host/output/ShowText.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"
#include "operations/Findings.h"
#include "operations/TableReader.h"

namespace PredSelect {

namespace {

using MCHost::OutputFormat;
using MCHost::OutputText;

constexpr const char* kSizes[] = {"Bias-Corrected V", "Eta Squared", "Correlation"};
constexpr double kFalseDiscoveries = 0.05;

// The default is not said, since it would be idle where the target is continuous.
const char* RankingOption(RankBy by) {
  constexpr const char* kOptions[] = {"", " RANKING=LRCHISQ", " RANKING=CRAMERSV",
                                      " RANKING=LAMBDA", ""};
  return kOptions[static_cast<int>(by)];
}

double NumberOf(const std::string& text) {
  double number = MCMV::gMissingValue;
  (void)std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

// The rows of the table of effects.
class EffectRows {
 public:
  explicit EffectRows(const MCHost::OutputTable& table) : fTable(table), fReader(table) {}

  std::vector<RankedPredictor> Read() const {
    std::vector<RankedPredictor> rows;
    for (const int row : fReader.Leaves(0)) {
      rows.push_back(ReadRow(row));
      rows.back().fRank = static_cast<int>(rows.size());
    }
    return rows;
  }

 private:
  double Number(int row, const char* column) const {
    return fReader.Number({row, fReader.Find(1, column)});
  }

  RankedPredictor ReadRow(int row) const {
    RankedPredictor read{};
    read.fName = fReader.LabelOf(0, row).fKey;
    read.fLabel = fReader.LabelOf(0, row).fLabel;
    read.fTest = MCHost::TextId(fReader.Text({row, fReader.Find(1, "Test: Type")}));
    read.fStatistic = Number(row, "Test: Value");
    ReadDf(row, read);
    read.fLog10P = Number(row, "Test: Log10 p");
    read.fAdjusted = Number(row, "Test: Adjusted p: Benjamini-Hochberg");
    read.fHolm = Number(row, "Test: Adjusted p: Holm");
    read.fSize = MCMV::gMissingValue;
    for (const char* size : kSizes) ReadSize(row, size, read);
    read.fLow = Number(row, "Effect: Confidence Interval: Lower");
    read.fHigh = Number(row, "Effect: Confidence Interval: Upper");
    read.fBits = Number(row, "Effect: Bits");
    read.fMissing = Number(row, "Effect: Missing");
    return read;
  }

  // The two of F are a list.
  void ReadDf(int row, RankedPredictor& read) const {
    const std::vector<int> place = {row, fReader.Find(1, "Test: df")};
    const OutputText list = fReader.Text(place);
    read.fDf1 = fReader.Number(place);
    read.fDf2 = MCMV::gMissingValue;
    if (list.fArguments.empty() || list.fArguments.front().fItems.size() != 2) return;
    read.fDf1 = NumberOf(list.fArguments.front().fItems[0].fKey);
    read.fDf2 = NumberOf(list.fArguments.front().fItems[1].fKey);
  }

  void ReadSize(int row, const char* size, RankedPredictor& read) const {
    const int column = fReader.Find(1, std::string("Effect: ") + size);
    if (column < 0 || fReader.At({row, column}) == nullptr) return;
    read.fEffect = size;
    read.fSize = fReader.Number({row, column});
    const MCHost::OutputCell* test = fReader.At({row, fReader.Find(1, "Test: Value")});
    if (test == nullptr) return;
    for (const int note : test->fNotes) {
      read.fNotes.push_back(fTable.fFootnotes[static_cast<std::size_t>(note)]);
    }
  }

  const MCHost::OutputTable& fTable;
  TableReader fReader;
};

void RankByBits(std::vector<RankedPredictor>& predictors) {
  std::stable_sort(predictors.begin(), predictors.end(),
                   [](const RankedPredictor& left, const RankedPredictor& right) {
                     return left.fBits > right.fBits;  // a missing value is the least of all
                   });
  for (std::size_t i = 0; i < predictors.size(); ++i) {
    predictors[i].fRank = static_cast<int>(i) + 1;
  }
}

// The columns in the order of their weight, since a page shows the first ones.
class RankingTable {
 public:
  explicit RankingTable(BpPivotTable& table)
      : fTable(table),
        fRows(table.RowDimension("Predictor")),
        fColumns(table.ColumnDimension("Statistics")) {
    Add(fColumns, "Rank", BpProcedure::Count());
    BpGroup test = fColumns.AddGroup(BpString("Test"));
    Add(test, "Type", OutputFormat::kText);
    Add(test, "Value", OutputFormat::kTenths);
    BpGroup effect = fColumns.AddGroup(BpString("Effect"));
    Add(effect, "Type", OutputFormat::kText);
    Add(effect, "Size", OutputFormat::kStrength);
    Add(fColumns, "Log10 p", OutputFormat::kTenths);
    Add(fColumns, "FDR-Adjusted p", BpProcedure::Significance());
    Add(fColumns, "Missing", BpProcedure::Percent());
    Add(fColumns, "Bits", BpProcedure::Correlation());
    Add(fColumns, "Lower", BpProcedure::Correlation());
    Add(fColumns, "Upper", BpProcedure::Correlation());
    Add(fColumns, "Holm-Adjusted p", BpProcedure::Significance());
    Add(fColumns, "df1", BpProcedure::Count());
    Add(fColumns, "df2", BpProcedure::Count());
  }

  // Values in the order of the columns.
  void AddRow(const RankedPredictor& shown) {
    const BpCategory row = fRows.AddCategory(OutputText::Variable(shown.fName, shown.fLabel));
    std::size_t column = 0;
    const auto set = [&](auto value) { fTable.SetCell({row, fPlaces[column++]}, value); };
    set(static_cast<double>(shown.fRank));
    set(BpString(shown.fTest));
    fTable.SetCell({row, fPlaces[column]}, shown.fStatistic);
    for (const OutputText& note : shown.fNotes) fPlaces[column].CellNote({row}, note);
    ++column;
    set(BpString(shown.fEffect));
    for (const double value :
         {shown.fSize, shown.fLog10P, shown.fAdjusted, shown.fMissing, shown.fBits, shown.fLow,
          shown.fHigh, shown.fHolm, shown.fDf1, shown.fDf2}) {
      set(value);
    }
  }

 private:
  template <class Place>
  void Add(Place& place, const char* key, OutputFormat format) {
    fPlaces.push_back(place.AddCategory(BpString(key), format));
  }

  BpPivotTable& fTable;
  BpDimension fRows;
  BpDimension fColumns;
  std::vector<BpCategory> fPlaces;
};

// What the ranking means, in a sentence.
OutputText Meaning(const Ranking& ranking, const std::string& target) {
  const auto& predictors = ranking.fPredictors;
  const auto found =
      std::count_if(predictors.begin(), predictors.end(), [](const RankedPredictor& predictor) {
        return !MCMV::IsMissing(predictor.fAdjusted) && predictor.fAdjusted < kFalseDiscoveries;
      });
  BpComposite text(found > 0 ? "^1 of ^2 predictors go with ^3, most of all ^4..."
                             : "None of ^2 predictors goes with ^3...");
  text.AddLiteral(std::to_string(found)).AddLiteral(std::to_string(predictors.size()));
  text.AddLiteral(target);
  if (found > 0) {
    text.Add(OutputText::Variable(predictors.front().fName, predictors.front().fLabel));
  }
  return text.Finish();
}

void ShowRanking(const Ranking& ranking, const RankRequest& request) {
  const auto& predictors = ranking.fPredictors;
  const std::size_t nShown =
      request.fTop > 0 ? std::min(predictors.size(), static_cast<std::size_t>(request.fTop))
                       : predictors.size();
  if (predictors.empty() && ranking.fLeftOut.empty()) return;
  BpPivotTable table("Ranking", "Ranking");
  table.Flat();
  RankingTable rows(table);
  for (std::size_t i = 0; i < nShown; ++i) rows.AddRow(predictors[i]);
  std::vector<OutputText> below;
  if (nShown < predictors.size()) {
    BpComposite more("^1 more predictors are not shown...");
    below.push_back(more.AddLiteral(std::to_string(predictors.size() - nShown)).Finish());
  }
  if (!predictors.empty()) below.push_back(Meaning(ranking, request.fTarget));
  if (!ranking.fLeftOut.empty()) below.push_back(LeftOutText(ranking.fLeftOut));
  table.Caption(Paragraphs(std::move(below)));
  table.Show();
}

}  // namespace

std::string RankCommand(const MCHost::ITable& table, const RankRequest& request) {
  NamedVariable(table, request.fTarget);
  const std::string screening = ScreeningOfDates(table);
  return "SELECTPRED " + KovaVarName(request.fTarget).Quoted() +
         ExceptSubcommand(table, request.fExcept) +
         (screening.empty() ? "" : "\n  /SCREENING " + screening) +
         "\n  /CRITERIA TIMER=0 PVALUES=EXACT" + RankingOption(request.fBy) +
         " SHOWUNSELECTED=" + std::to_string(table.ColumnCount()) +
         "\n  /PRINT EXCLUDED EFFECTS.\n";
}

Outcome RankPredictors(MCHost::DataTable& table, MCHost::OutputDocument& document,
                       const RankRequest& request, const Surroundings& surroundings,
                       Ranking* ranking) {
  const std::string command = RankCommand(table, request);
  CommandRun run(document, "rank");
  run.Withhold("No predictors were selected.");  // a ranking selects none
  const Outcome outcome = run.Run(table, {.fCommands = command}, surroundings);
  if (outcome != Outcome::kCompleted) return outcome;
  Ranking found;
  if (const MCHost::OutputTable* effects = run.Find("PredictorEffects")) {
    found.fPredictors = EffectRows(*effects).Read();
  }
  found.fLeftOut = LeftOutPredictors(run);
  if (request.fBy == RankBy::kBits) {
    RankByBits(found.fPredictors);
    std::string& findings = document.CurrentRun().fFindings;
    findings = FindingsByBits(findings);
  }
  MCHost::Session session(table, document);
  const MCHost::SessionScope scope(session);
  ShowRanking(found, request);
  if (ranking != nullptr) *ranking = std::move(found);
  return outcome;
}

}  // namespace PredSelect
