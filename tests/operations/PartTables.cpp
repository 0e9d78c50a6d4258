#include "tests/operations/PartTables.h"

#include <gtest/gtest.h>

#include <cmath>

#include "common/parts/Piece.h"
#include "common/state/StateBytes.h"
#include "host/output/ShowText.h"
#include "operations/FindRanges.h"
#include "operations/MergePieces.h"
#include "operations/PartPasses.h"

namespace MCTest {

using namespace PredSelect;

namespace {

std::string TextOf(const decltype(MCHost::OutputCell::fValue)& value) {
  const auto* text = std::get_if<MCHost::OutputText>(&value);
  return text == nullptr ? "" : MCHost::ShowText(*text);
}

}  // namespace

TableOptions Said(bool weighted) {
  TableOptions said;
  said.fMissing = {{"hours", {"99"}}};
  if (weighted) said.fWeight = "times";
  return said;
}

Parts SevenParts(const People& people) {
  Parts parts;
  constexpr int kBounds[] = {0, 150, 150, 151, 400, 700, kRows};
  for (int i = 0; i < 6; ++i) parts.push_back(people.Table(kBounds[i], kBounds[i + 1]));
  parts.push_back(people.Missing(20));
  return parts;
}

void Join(const People& people, MemoryTable& all) {
  const std::unique_ptr<MemoryTable> rows = people.Table(0, kRows);
  const std::unique_ptr<MemoryTable> missing = people.Missing(20);
  for (int column = 0; column < rows->ColumnCount(); ++column) {
    const KOVA_Variable& variable = rows->GetVariable(column);
    std::vector<double> numbers;
    std::vector<std::optional<std::string>> texts;
    for (MemoryTable* table : {rows.get(), missing.get()}) {
      const auto scan = table->Scan({column});
      while (const MCHost::TableBatch* batch = scan->Next()) {
        const MCHost::ColumnView& cells = batch->fColumns[0];
        for (std::size_t i = 0; i < batch->fNCases; ++i) {
          if (variable.IsNumeric()) {
            numbers.push_back(cells.fpNumbers[i]);
          } else if (cells.fpCodes[i] < 0) {
            texts.emplace_back();
          } else {
            texts.emplace_back(cells.fpDictionary->At(cells.fpCodes[i]));
          }
        }
      }
    }
    variable.IsNumeric() ? all.AddNumbers(variable.GetName(), numbers)
                         : all.AddStrings(variable.GetName(), texts);
  }
}

std::string Merge(const std::vector<std::string>& pieces) {
  std::vector<NamedPiece> named;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    named.push_back({pieces[i], "piece " + std::to_string(i)});
  }
  return MergePieces(named);
}

std::string RangesOf(const Parts& parts, bool weighted, std::vector<std::string>* each) {
  std::vector<std::string> ranges;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    PrepareTable(*parts[i], Said(weighted));
    const TableRanges found = FindRanges(*parts[i], static_cast<std::int64_t>(i), {});
    ranges.push_back(Piece{Piece::kRanges, 0, StateBytes::Of(found)}.Bytes());
  }
  if (each != nullptr) *each = ranges;
  return Merge(ranges);
}

std::string MessagesOf(const MCHost::OutputDocument& document) {
  std::string messages;
  for (const MCHost::OutputRun& run : document.GetRuns()) {
    for (const MCHost::OutputMessage& message : run.fMessages) {
      messages += MCHost::ShowText(message.fText) + "\n" + message.fDetail + "\n";
    }
  }
  return messages;
}

void ExpectSame(const MCHost::OutputDocument& found, const MCHost::OutputDocument& expected) {
  ASSERT_EQ(found.GetRuns().size(), expected.GetRuns().size());
  for (std::size_t r = 0; r < found.GetRuns().size(); ++r) {
    const MCHost::OutputRun& ours = found.GetRuns()[r];
    const MCHost::OutputRun& theirs = expected.GetRuns()[r];
    EXPECT_EQ(ours.fbCompleted, theirs.fbCompleted);
    EXPECT_EQ(ours.fMacros, theirs.fMacros);
    ASSERT_EQ(ours.fMessages.size(), theirs.fMessages.size());
    for (std::size_t m = 0; m < ours.fMessages.size(); ++m) {
      EXPECT_EQ(MCHost::ShowText(ours.fMessages[m].fText),
                MCHost::ShowText(theirs.fMessages[m].fText));
    }
    ASSERT_EQ(ours.fTables.size(), theirs.fTables.size());
    for (std::size_t t = 0; t < ours.fTables.size(); ++t) {
      const auto& cells = ours.fTables[t].fCells;
      const auto& others = theirs.fTables[t].fCells;
      ASSERT_EQ(cells.size(), others.size()) << theirs.fTables[t].fSubtype;
      for (std::size_t c = 0; c < cells.size(); ++c) {
        const auto* number = std::get_if<double>(&others[c].fValue);
        EXPECT_EQ(cells[c].fPlace, others[c].fPlace);
        if (number == nullptr) {
          EXPECT_EQ(TextOf(cells[c].fValue), TextOf(others[c].fValue));
        } else {
          EXPECT_NEAR(std::get<double>(cells[c].fValue), *number, 1e-12 * (1 + std::abs(*number)))
              << theirs.fTables[t].fSubtype;
        }
      }
    }
  }
}

}  // namespace MCTest
