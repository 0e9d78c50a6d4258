// Pages and JSON documents of small results, character by character.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "common/MissingValue.h"
#include "host/data/ArrowCDataInterface.h"
#include "host/data/MemoryTable.h"
#include "host/output/AddNotes.h"
#include "host/output/BpError.h"
#include "host/output/chart/XDocument.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "host/output/render/DisplayWidth.h"
#include "host/output/render/LayFlat.h"
#include "host/output/render/RenderJson.h"
#include "host/output/render/RenderRecords.h"
#include "host/output/render/RenderText.h"
#include "host/output/render/TableRecords.h"
#include "tests/host/output/OutputHost.h"

namespace {

using MCHost::OutputText;
using nlohmann::json;

// Two selected and one unselected predictor, with nested headings, footnotes, an empty cell and a
// name of wide characters.
void ShowSummary() {
  BpPivotTable table("Predictor Summary", "PredictorSummary");
  BpDimension rows = table.RowDimension("Predictor");
  BpDimension columns = table.ColumnDimension("Statistics");
  BpGroup selected = rows.AddGroup(BpString("Selected"));
  BpGroup unselected = rows.AddGroup(BpString("Unselected"));
  BpComposite limit("Limited to the first ^1 unselected predictors.");
  unselected.Note(limit.AddLiteral("1").Finish());
  BpGroup chiSquare = columns.AddGroup(BpString("Pearson Chi-Square"));
  const BpCategory value = chiSquare.AddCategory(BpString("Value"), BpProcedure::GeneralStat());
  const BpCategory df = chiSquare.AddCategory(BpString("df"), BpProcedure::Count());
  BpCategory f = columns.AddCategory(BpString("F"), BpProcedure::GeneralStat());
  const BpCategory island = selected.AddCategory(OutputText::Variable("island", "Island"));
  const BpCategory wide = selected.AddCategory(OutputText::Variable("性別", ""));
  const BpCategory mass = unselected.AddCategory(OutputText::Variable("mass", ""));
  table.SetCell({island, value}, 299.55);
  table.SetCell({island, df}, 4);
  table.SetCell({wide, value}, 12.25);
  table.SetCell({wide, df}, 2);
  table.SetCell({mass, f}, KOVA_SystemMissing);
  f.CellNote({mass}, BpString("No within-factor variation..."));
  table.Show();
}

TEST(RenderText, DrawsAFlatTableALineARowAndAsManyColumnsAsFit) {
  using MCHost::OutputFormat;
  MCTest::OutputHost host;
  BpPivotTable table("Ranking", "Ranking");
  table.Flat();
  BpDimension rows = table.RowDimension("Predictor");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory rank = columns.AddCategory(BpString("Rank"), OutputFormat::kCount);
  BpGroup effect = columns.AddGroup(BpString("Effect"));
  const BpCategory type = effect.AddCategory(BpString("Type"));
  const BpCategory size = effect.AddCategory(BpString("Size"), OutputFormat::kStrength);
  BpCategory p = columns.AddCategory(BpString("Log10 p"), OutputFormat::kTenths);
  const BpCategory bits = columns.AddCategory(BpString("Bits"), OutputFormat::kCorrelation);
  const BpCategory first = rows.AddCategory(OutputText::Variable("a_name_too_long_for_it", ""));
  const BpCategory second = rows.AddCategory(OutputText::Variable("性別", ""));
  table.SetCell({first, rank}, 1.0);
  table.SetCell({first, type}, OutputText::Literal("V"));
  table.SetCell({first, size}, -0.75);
  table.SetCell({first, p}, -123.456);
  table.SetCell({first, bits}, 0.5);
  table.SetCell({second, rank}, 2.0);
  table.SetCell({second, size}, KOVA_SystemMissing);
  table.SetCell({second, p}, -0.01);
  p.CellNote({second}, OutputText::Literal("Hm."));
  table.Caption(OutputText::Literal("All about it."));
  table.Show();
  const std::pair<std::size_t, const char*> cases[] = {{80, R"(Ranking
Rank  Predictor               Effect              log10 p  Bits
───────────────────────────────────────────────────────────────
   1  a_name_too_long_for_it  V -.750 ███████▌     -123.5  .500
   2  性別                                        0.0 [a]

All about it.
[a] Hm.
)"},
                                                       {44, R"(Ranking
Rank  Predictor      Effect          log10 p
────────────────────────────────────────────
   1  a_name_too_l…  V -.750 ████▌    -123.5
   2  性別                           0.0 [a]

All about it.
[a] Hm.
)"}};
  for (const auto& [width, page] : cases) {
    EXPECT_EQ(MCHost::RenderText(host.fDocument, {.fWidth = width}), page);
  }
}

TEST(RenderRecords, KeepsEveryTextAndDigitInEachForm) {
  using MCHost::FileFormat;
  MCTest::OutputHost host;
  BpPivotTable table("Ranking", "Ranking");
  table.Flat();
  BpDimension rows = table.RowDimension("Predictor");
  BpDimension columns = table.ColumnDimension("Statistics");
  BpGroup effect = columns.AddGroup(BpString("Effect"));
  const BpCategory type = effect.AddCategory(BpString("Eta Squared"));
  const BpCategory p = columns.AddCategory(BpString("Log10 p"), MCHost::OutputFormat::kTenths);
  const BpCategory odd = rows.AddCategory(OutputText::Variable("a|\"b\",\tc", "Label"));
  const BpCategory plain = rows.AddCategory(OutputText::Variable("d", ""));
  table.SetCell({odd, type}, OutputText::Literal("x\ny"));
  table.SetCell({odd, p}, -1.0 / 3.0);
  table.SetCell({plain, p}, 12.0);
  table.Show();
  const MCHost::FlatRecords records = MCHost::LayFlat(host.fDocument.GetRuns()[0].fTables[0]);
  const std::pair<FileFormat, const char*> cases[] = {
      {FileFormat::kCsv,
       "predictor,effect_eta_squared,log10_p\n"
       "\"a|\"\"b\"\",\tc\",\"x\ny\",-0.3333333333333333\nd,,12\n"},
      {FileFormat::kTsv,
       "predictor\teffect_eta_squared\tlog10_p\n"
       "\"a|\"\"b\"\",\tc\"\t\"x\ny\"\t-0.3333333333333333\nd\t\t12\n"},
      {FileFormat::kJsonLines,
       R"({"predictor":"a|\"b\",\tc","effect_eta_squared":"x\ny","log10_p":-0.3333333333333333})"
       "\n"
       R"({"predictor":"d","effect_eta_squared":null,"log10_p":12})"
       "\n"},
      {FileFormat::kMarkdown,
       "| predictor | effect_eta_squared | log10_p |\n| --- | --- | ---: |\n"
       "| a\\|\"b\",\tc | x y | -0.333333 |\n| d |  | 12 |\n"}};
  for (const auto& [form, text] : cases) EXPECT_EQ(MCHost::RenderRecords(records, form), text);

  MCHost::FlatRecords steering;
  steering.fColumns = {{"name", "", false, {}, {"a\x1b[2Jb"}}};
  EXPECT_EQ(MCHost::RenderRecords(steering, FileFormat::kMarkdown),
            "| name |\n| --- |\n| a\xE2\x90\x9B[2Jb |\n");
}

TEST(RenderText, NestsHeadingsMarksFootnotesAndAlignsWideCharacters) {
  MCTest::OutputHost host;
  ShowSummary();
  EXPECT_EQ(MCHost::RenderText(host.fDocument, {}),
            R"(Predictor Summary
┌─────────────────────────┬────────────────────┬─────┐
│                         │ Pearson Chi-Square │     │
│                         ├─────────┬──────────┤     │
│ Predictor               │   Value │       df │   F │
├────────────────┬────────┼─────────┼──────────┼─────┤
│ Selected       │ Island │ 299.550 │        4 │     │
│                │ 性別   │  12.250 │        2 │     │
├────────────────┼────────┼─────────┼──────────┼─────┤
│ Unselected [a] │ mass   │         │          │ [b] │
└────────────────┴────────┴─────────┴──────────┴─────┘
[a] Limited to the first 1 unselected predictor.
[b] F could not be computed: there is no variation within the groups.
)");
}

TEST(RenderText, ContinuesAWideTableInPanelsThatRepeatTheRowLabels) {
  MCTest::OutputHost host;
  BpPivotTable table("Classification", "Classification");
  BpDimension rows = table.RowDimension("Observed");
  BpDimension columns = table.ColumnDimension("Predicted");
  BpDimension layers = table.LayerDimension("Sample");
  const BpCategory row = rows.AddCategory(OutputText::Value("a long observed value", ""));
  const BpCategory first = columns.AddCategory(OutputText::Value("Adelie", ""));
  const BpCategory second = columns.AddCategory(OutputText::Value("Gentoo", ""));
  const BpCategory training = layers.AddCategory(BpString("Training"));
  table.SetCell({row, first, training}, 5);
  table.SetCell({row, second, training}, 7);
  table.Show();
  MCHost::TextOptions narrow;
  narrow.fWidth = 30;
  EXPECT_EQ(MCHost::RenderText(host.fDocument, narrow), R"(Classification
Sample: Training
┌──────────────┬────────┐
│ Observed     │ Adelie │
├──────────────┼────────┤
│ a long       │  5.000 │
│ observed     │        │
│ value        │        │
└──────────────┴────────┘
┌──────────────┬────────┐
│ Observed     │ Gentoo │
├──────────────┼────────┤
│ a long       │  7.000 │
│ observed     │        │
│ value        │        │
└──────────────┴────────┘
)");
}

TEST(RenderText, WrapsTheHeadingsOfATableThatFitsThePageNoOtherWay) {
  MCTest::OutputHost host;
  BpPivotTable table("Classification", "Classification");
  BpDimension rows = table.RowDimension("Observed");
  BpDimension columns = table.ColumnDimension("Predicted");
  BpGroup values = columns.AddGroup(BpString("Values"));
  const OutputText adelie = OutputText::Literal("Adelie (Pygoscelis adeliae)");
  const BpCategory row = rows.AddCategory(adelie);
  table.SetCell({row, values.AddCategory(adelie, BpProcedure::Count())}, 103);
  table.SetCell({row, columns.AddCategory(BpString("Percent Correct"), BpProcedure::Percent())},
                99);
  table.Show();
  MCHost::TextOptions narrow;
  narrow.fWidth = 48;
  EXPECT_EQ(MCHost::RenderText(host.fDocument, narrow), R"(Classification
┌─────────────────────┬─────────────┬──────────┐
│                     │   Values    │          │
│                     ├─────────────┤          │
│                     │      Adelie │          │
│                     │ (Pygoscelis │  Percent │
│ Observed            │    adeliae) │  Correct │
├─────────────────────┼─────────────┼──────────┤
│ Adelie (Pygoscelis  │         103 │    99.0% │
│ adeliae)            │             │          │
└─────────────────────┴─────────────┴──────────┘
)");
}

TEST(RenderText, NarrowsTheRowLabelsWhereThatKeepsAGroupOfColumnsTogether) {
  MCTest::OutputHost host;
  BpPivotTable table("Predictor Effects", "PredictorEffects");
  BpDimension rows = table.RowDimension("Predictor");
  BpDimension columns = table.ColumnDimension("Statistics");
  const BpCategory row = rows.AddCategory(OutputText::Literal("the length of one flipper in mm"));
  for (const char* title : {"Test", "Effect"}) {
    BpGroup group = columns.AddGroup(BpString(title));
    for (const char* name : {"Value", "Lower", "Upper"}) {
      table.SetCell({row, group.AddCategory(BpString(name), BpProcedure::GeneralStat())}, 594.802);
    }
  }
  table.Show();
  MCHost::TextOptions narrow;
  narrow.fWidth = 50;
  EXPECT_EQ(MCHost::RenderText(host.fDocument, narrow), R"(Predictor Effects
┌──────────────────┬─────────────────────────────┐
│                  │            Test             │
│                  ├─────────┬─────────┬─────────┤
│ Predictor        │   Value │   Lower │   Upper │
├──────────────────┼─────────┼─────────┼─────────┤
│ the length of    │ 594.802 │ 594.802 │ 594.802 │
│ one flipper in   │         │         │         │
│ mm               │         │         │         │
└──────────────────┴─────────┴─────────┴─────────┘
┌──────────────────┬─────────────────────────────┐
│                  │           Effect            │
│                  ├─────────┬─────────┬─────────┤
│ Predictor        │   Value │   Lower │   Upper │
├──────────────────┼─────────┼─────────┼─────────┤
│ the length of    │ 594.802 │ 594.802 │ 594.802 │
│ one flipper in   │         │         │         │
│ mm               │         │         │         │
└──────────────────┴─────────┴─────────┴─────────┘
)");
}

TEST(RenderText, PutsListItemsOnLinesAndNotesAndMessagesInBlocks) {
  MCTest::OutputHost host;
  AddNotes(4, BpString("Definition of Missing"), BpString("UserMiss excluded ..."));
  AddNotesWithGroup(3, BpString("Predicted Probabilities"), OutputText::Literal("sex = f"),
                    OutputText::Literal("prob_1"));
  BpError(BpComposite("No predictors were selected."), 2, 2, "line 1\n  ^");
  BpPivotTable table("Excluded Predictors", "ExcludedPredictors");
  table.MinDataColumnWidth(120);
  BpDimension rows = table.RowDimension("Reason");
  BpDimension columns = table.ColumnDimension("Predictors");
  const BpCategory row = rows.AddCategory(BpString("All Cases Missing"));
  const BpCategory column = columns.AddCategory(BpString("Predictors"));
  BpComposite list("[%1:\n ^1:]1");
  list.Sublist().AddLiteral("age").AddLiteral("workclass").EndSublist();
  table.SetCell({row, column}, list.Finish());
  table.Show();
  host.fDocument.CurrentRun().fMacros = {{"f", {"island", "sex"}}, {"c", {}}};
  EXPECT_EQ(MCHost::RenderText(host.fDocument, {}), R"(Warning: No predictors were selected.
  line 1
    ^

Notes
  Definition of missing  User-defined missing values are treated as missing.
  Predicted probabilities
    sex = f              prob_1

Excluded Predictors
┌───────────────────┬─────────────────┐
│ Reason            │ Predictors      │
├───────────────────┼─────────────────┤
│ All cases missing │ age             │
│                   │ workclass       │
└───────────────────┴─────────────────┘

!f = island sex
!c = (empty)
)");
}

TEST(WrapText, BreaksAtBlanksAndInsideAWordOnlyWhereItMust) {
  using testing::ElementsAre;
  EXPECT_THAT(MCHost::WrapText("one two three", 7), ElementsAre("one two", "three"));
  EXPECT_THAT(MCHost::WrapText("abcdefgh ij", 5), ElementsAre("abcde", "fgh", "ij"));
  EXPECT_THAT(MCHost::WrapText("漢字漢字", 5), ElementsAre("漢字", "漢字"));
  EXPECT_THAT(MCHost::WrapText("a\n\nb", 5), ElementsAre("a", "", "b"));
  EXPECT_THAT(MCHost::WrapText("", 5), ElementsAre(""));
  EXPECT_EQ(MCHost::DisplayWidth("e\u0301\xff"), 2u);
}

TEST(RenderText, ShowsWhatWouldSteerATerminal) {
  MCTest::OutputHost host;
  const std::string evil = "\x1b[2J\xff\u009b\u202e\tx";
  const std::string shown = "\u241b[2J\ufffd\ufffd\ufffd\u2409x";
  BpError(BpComposite("^1").AddLiteral(evil), 2, 2, "a\t" + evil);
  AddNotesWithGroup(4, OutputText::Literal(evil + "\n"), OutputText::Literal(evil + "\n"),
                    OutputText::Literal(evil));
  BpPivotTable table("Classification", "Classification");
  BpDimension rows = table.RowDimension("Observed");
  BpDimension columns = table.ColumnDimension("Predicted");
  const BpCategory row = rows.AddCategory(OutputText::Value("1", evil));
  table.SetCell({row, columns.AddCategory(OutputText::Literal(evil))}, OutputText::Literal(evil));
  table.Show();
  host.fDocument.CurrentRun().fMacros = {{evil, {evil}}};
  host.fDocument.CurrentRun().fNewVariables = {{evil, evil + "\nb", 0, "F8.2"}};
  host.fDocument.CurrentRun().fFiles = {evil};
  EXPECT_EQ(MCHost::RenderText(host.fDocument, {}),
            "Warning: " + shown + "\n  a\t\u241b[2J\ufffd\ufffd\ufffd\tx\n\nNotes\n  " + shown +
                "\u240a\n    " + shown + "\u240a  " + shown + "\n\n" + R"(Classification
┌───────────┬───────────┐
│ Observed  │ ␛[2J���␉x │
├───────────┼───────────┤
│ ␛[2J���␉x │ ␛[2J���␉x │
└───────────┴───────────┘

!␛[2J���␉x = ␛[2J���␉x
New variable ␛[2J���␉x: ␛[2J���␉x
                        b
File written: ␛[2J���␉x
)");
  const std::string document = MCHost::RenderJson(host.fDocument);
  EXPECT_TRUE(json::accept(document));
  EXPECT_NE(document.find(R"(\u001b[2J)"), std::string::npos);
}

TEST(RenderText, KeepsATableInThePageWhateverTheLengthOfItsWords) {
  MCTest::OutputHost host;
  const OutputText word = OutputText::Literal(std::string(200000, 'x'));
  BpPivotTable table("Classification", "Classification");
  BpDimension rows = table.RowDimension("Observed");
  BpDimension columns = table.ColumnDimension("Predicted");
  BpGroup group = columns.AddGroup(word);
  table.SetCell({rows.AddCategory(word), group.AddCategory(word)}, word);
  table.Show();
  const std::string page = MCHost::RenderText(host.fDocument, {});
  for (std::size_t at = 0, end = 0; (end = page.find('\n', at)) != std::string::npos;
       at = end + 1) {
    ASSERT_LE(MCHost::DisplayWidth(page.substr(at, end - at)), 100U);
  }
}

TEST(RenderJson, GivesKeysPathsAndFullPrecision) {
  MCTest::OutputHost host;
  host.fDocument.fDataSource = "penguins.csv";
  host.fDocument.fNCases = 344;
  BpError(BpComposite("Parameter ^1 less than number of unique predictors in ^2...")
              .AddLiteral("CRITERIA SIZE")
              .AddLiteral("SELECTPRED"),
          2, 3);
  ShowSummary();
  const json document = json::parse(MCHost::RenderJson(host.fDocument));
  EXPECT_EQ(document["data"], (json{{"source", "penguins.csv"}, {"cases", 344}, {"variables", 0}}));
  const json& run = document["runs"][0];
  EXPECT_EQ(run["messages"][0]["arguments"], (json{"CRITERIA SIZE", "SELECTPRED"}));
  EXPECT_EQ(run["messages"][0]["text"],
            "CRITERIA SIZE must be less than the number of different predictors in SELECTPRED.");
  const json& table = run["tables"][0];
  EXPECT_EQ(table["dimensions"],
            json::parse(R"({"rows":["Predictor"],"columns":["Statistics"],"layers":[]})"));
  EXPECT_EQ(table["cells"][0], json::parse(R"({"row":["Selected","island"],
      "column":["Pearson Chi-Square","Value"],"layer":[],"value":299.55,"format":"general",
      "text":"299.550","notes":[]})"));
  EXPECT_EQ(table["cells"][4]["value"], nullptr);
  EXPECT_EQ(table["cells"][4]["notes"], json{1});
  EXPECT_EQ(table["caption"], nullptr);
  EXPECT_EQ(document["strings"]["Limited to the first ^1 unselected predictors."],
            "Limited to the first ^1 unselected {1:predictor|predictors}.");
}

// The first table of the document as a reader of its stream has it: names, then records.
std::vector<std::string> Flat(const MCHost::OutputDocument& document) {
  ArrowArrayStream stream{};
  const MCHost::OutputTable& source = document.GetRuns()[0].fTables[0];
  MCHost::WriteArrowStream(std::make_unique<MCHost::FlatBatches>(MCHost::TableRecords(source)),
                           &stream);
  MCHost::MemoryTable table(&stream);
  std::vector<std::string> lines(static_cast<std::size_t>(table.CaseCount()) + 1);
  for (int i = 0; i < table.ColumnCount(); ++i) {
    lines[0] += table.GetVariable(i).GetName() + "|";
    const auto scan = table.Scan({i});
    const MCHost::TableBatch* batch = scan->Next();
    for (std::size_t record = 0; record + 1 < lines.size(); ++record) {
      const MCHost::ColumnView& column = batch->fColumns[0];
      std::string& line = lines[record + 1];
      if (column.fpNumbers == nullptr) {
        const std::int32_t code = column.fpCodes[record];
        line += code < 0 ? "-" : column.fpDictionary->At(code);
      } else {
        line +=
            MCMV::IsMissing(column.fpNumbers[record]) ? "." : json(column.fpNumbers[record]).dump();
      }
      line += "|";
    }
  }
  return lines;
}

TEST(TableRecords, LayHeadingsAndCellsFlatUnderTheirKeys) {
  MCTest::OutputHost host;
  ShowSummary();
  EXPECT_THAT(
      Flat(host.fDocument),
      testing::ElementsAre(
          "Predictor: Group 1|Predictor|Pearson Chi-Square: Value|Pearson Chi-Square: df|F|",
          "Selected|island|299.55|4.0|.|", "Selected|性別|12.25|2.0|.|", "Unselected|mass|.|.|.|"));
}

TEST(TableRecords, GoLayerByLayerAndTellEqualNamesAndTextsApart) {
  MCTest::OutputHost host;
  BpPivotTable table("Classification", "Classification");
  BpDimension rows = table.RowDimension("Observed");
  BpDimension columns = table.ColumnDimension("Predicted");
  BpDimension layers = table.LayerDimension("Sample");
  BpGroup values = rows.AddGroup(BpString("Values"));
  const BpCategory row = values.AddCategory(OutputText::Value("1", "one"));
  const BpCategory total = rows.AddCategory(BpString("Total"));
  const BpCategory first = columns.AddCategory(OutputText::Value("1", "one"));
  const BpCategory mixed = columns.AddCategory(BpString("Observed"));
  const BpCategory training = layers.AddCategory(BpString("Training"));
  const BpCategory test = layers.AddCategory(BpString("Test"));
  table.SetCell({row, first, training}, 5);
  table.SetCell({total, first, test}, 0.1);
  table.SetCell({row, mixed, test}, 2.5);
  BpComposite list("[%1: ^1:]1");
  table.SetCell({total, mixed, test},
                list.Sublist().AddLiteral("a").AddLiteral("b").EndSublist().Finish());
  table.Show();
  EXPECT_THAT(Flat(host.fDocument),
              testing::ElementsAre("Observed: Group 1|Observed|Sample|1|Observed 2|",
                                   "Values|1|Training|5.0|-|", "-|Total|Training|.|-|",
                                   "Values|1|Test|.|2.5|", "-|Total|Test|0.1|a b|"));
}

TEST(XDocument, BecomesAVegaLiteDocument) {
  MCTest::OutputHost host;
  XVariable color(XVariable::kCategorical, "Predictors");
  color.addRelabel(0, "Selected");
  color.addRelabel(1, "Unselected");
  XVariable predictors(XVariable::kCategorical, "Predictor");
  predictors.addRelabel(0, "island");
  XDocument chart("Predictor Summary Chart",
                  XGraph(predictors, XVariable(XVariable::kScale, "Unadjusted Significance")));
  chart.GetGraph().GetElement().colorByVariable(color);
  chart.GetGraph().GetElement().AddPoint(0, 0.25, 1);
  chart.GetGraph().GetElement().AddPoint(1, KOVA_SystemMissing, 0);
  chart.GetGraph().GetYAxis().SetInterval(0.0, 1.0);
  chart.GetGraph().GetYAxis().SetMargins(0.0, 0.05);
  chart.GetGraph().GetYAxis().SetNice(true);
  chart.GetGraph().GetYAxis().invertScale(1.0);
  chart.GetGraph().GetXAxis().SetMargins(1.5, 0.5);
  chart.GetGraph().AddYReferenceLine(0.05, "dash");
  chart.SetFrameHeight(1.05);
  chart.Show();
  const json rendered = json::parse(MCHost::RenderJson(host.fDocument));
  const json& drawn = rendered["runs"][0]["charts"][0]["vegalite"];
  EXPECT_EQ(drawn["data"]["values"][0],
            (json{{"x", "island"}, {"y", 0.25}, {"color", "Unselected"}}));
  EXPECT_EQ(drawn["data"]["values"][1]["y"], nullptr);
  EXPECT_EQ(drawn["layer"][0]["encoding"]["y"]["scale"],
            (json{{"reverse", true}, {"nice", false}, {"domain", {0.0, 1.05}}}));
  EXPECT_EQ(drawn["layer"][0]["encoding"]["x"]["scale"],
            (json{{"paddingOuter", 1.0}, {"align", 0.75}}));
  EXPECT_EQ(drawn["layer"][1]["data"]["values"][0]["y"], 0.05);
  EXPECT_EQ(drawn["layer"][1]["mark"]["strokeDash"], (json{6, 4}));
  EXPECT_EQ(drawn["height"], 378.0);
}

}  // namespace
