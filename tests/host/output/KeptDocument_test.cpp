// Documents that were kept come back as they were, or are refused.
#include "host/output/render/KeptDocument.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "host/output/OutputDocument.h"
#include "host/output/render/RenderJson.h"
#include "host/output/render/RenderText.h"
#include "host/session/HostIOError.h"

namespace {

using MCHost::OutputDimension;
using MCHost::OutputDocument;
using MCHost::OutputText;

MCHost::OutputTable Table() {
  MCHost::OutputTable table;
  table.fTitle = OutputText::Key("Predictor Summary");
  table.fSubtype = "PredictorSummary";
  table.fCaption = OutputText::Value("1", "one");
  table.fFootnotes = {OutputText::Literal("a note")};
  OutputDimension rows{OutputText::Key("Predictor"), OutputDimension::kRow, true, {}};
  rows.fCategories.push_back({OutputText::Key("Selected"), -1, true, {}, {}});
  rows.fCategories.push_back({OutputText::Variable("x", "Label"), 0, false, {}, {0}});
  OutputDimension columns{OutputText::Key("Statistics"), OutputDimension::kColumn, false, {}};
  for (const char* name : {"F", "df", "Test"}) {
    columns.fCategories.push_back(
        {OutputText::Key(name), -1, false, MCHost::kLastOutputFormat, {}});
  }
  table.fDimensions = {rows, columns};
  OutputText list = OutputText::Key("[%1:, ^1:]1");
  list.fArguments.push_back({OutputText::kLiteral, "", "", {}, {OutputText::Literal("\xff")}});
  table.fCells = {{{1, 0}, 0.1, MCHost::OutputFormat::kCount, {0}},
                  {{1, 1}, std::monostate{}, MCHost::OutputFormat::kText, {}},
                  {{1, 2}, list, MCHost::OutputFormat::kText, {}}};
  return table;
}

OutputDocument Document(MCHost::OutputTable table = Table()) {
  OutputDocument document;
  document.fVersion = "1";
  document.fDataSource = "data";
  document.fNCases = 3;
  document.fNVariables = 2;
  document.fReadingNotes = {"read"};
  document.fFailure = {3, "lost", "file", "line 2"};
  MCHost::OutputRun& run = document.BeginRun("SELECTPRED");
  run.fMessages.push_back({MCHost::OutputMessage::kError, OutputText::Key("Error:"), "x\n^"});
  run.fNotes.push_back({2, OutputText::Literal("group"), OutputText::Key("Notes"), {}});
  run.fTables = {std::move(table), {}};
  run.fCharts.push_back({OutputText::Key("Ranking"), R"({"mark": "bar"})"});
  run.fMacros = {{"!best", {"x", "y"}}};
  run.fNewVariables = {{"p", "Predicted", 8, "A8"}};
  run.fFiles = {"model.bin"};
  run.fFindings = "{}";
  document.BeginRun("NAIVEBAYES").fbCompleted = true;
  return document;
}

TEST(KeptDocument, ComesBackAsItWas) {
  const OutputDocument document = Document();
  const std::string bytes = MCHost::KeepDocument(document);
  const OutputDocument again = MCHost::ReadKeptDocument(bytes);
  EXPECT_EQ(MCHost::RenderJson(again), MCHost::RenderJson(document));
  EXPECT_EQ(MCHost::RenderText(again, {}), MCHost::RenderText(document, {}));
  EXPECT_EQ(MCHost::KeepDocument(again), bytes);
}

TEST(KeptDocument, RefusesBytesThatAreCutOrChanged) {
  const std::string bytes = MCHost::KeepDocument(Document());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    std::string changed = bytes;
    changed[i] = static_cast<char>(changed[i] ^ 16);
    for (const std::string& wrong : {bytes.substr(0, i), changed}) {
      EXPECT_THROW((void)MCHost::ReadKeptDocument(wrong), MCHost::HostIOError) << i;
    }
  }
}

// What renderers look up by its place must be there.
TEST(KeptDocument, RefusesTablesWhosePartsAreNotThere) {
  using MCHost::OutputTable;
  const std::function<void(OutputTable&)> faults[] = {
      [](OutputTable& table) { table.fCells[0].fPlace = {1}; },
      [](OutputTable& table) {
        table.fCells[0].fPlace = {1, 3};
      },
      [](OutputTable& table) {
        table.fCells[0].fPlace = {-1, 0};
      },
      [](OutputTable& table) { table.fCells[0].fNotes = {1}; },
      [](OutputTable& table) { table.fDimensions[0].fCategories[1].fParent = 1; },
      [](OutputTable& table) { table.fDimensions[0].fCategories[1].fParent = -2; },
      [](OutputTable& table) { table.fDimensions[0].fCategories[1].fNotes = {-1}; },
      [](OutputTable& table) {
        table.fDimensions[0].fAxis = static_cast<OutputDimension::Axis>(3);
      },
      [](OutputTable& table) { table.fCells[0].fFormat = static_cast<MCHost::OutputFormat>(99); },
      [](OutputTable& table) {
        for (int i = 0; i < 20; ++i) table.fTitle = {OutputText::kKey, "", "", {table.fTitle}, {}};
      },
  };
  for (const auto& fault : faults) {
    OutputTable table = Table();
    fault(table);
    const std::string bytes = MCHost::KeepDocument(Document(std::move(table)));
    EXPECT_THROW((void)MCHost::ReadKeptDocument(bytes), MCHost::HostIOError) << &fault - faults;
  }
}

}  // namespace
