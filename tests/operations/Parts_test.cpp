// Commands over a table in parts, held to what they give over the whole: counts exactly, statistics
// to 1e-12, the same messages, and the same model file to the last byte.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <numeric>
#include <random>

#include "common/parts/PartRequest.h"
#include "common/parts/Piece.h"
#include "common/state/StateBytes.h"
#include "host/data/MemoryTable.h"
#include "host/data/PartsTable.h"
#include "host/data/WholeTable.h"
#include "host/output/OutputDocument.h"
#include "host/output/ShowText.h"
#include "host/session/HostIOError.h"
#include "operations/FindRanges.h"
#include "operations/InspectState.h"
#include "operations/MergeStates.h"
#include "operations/PartPasses.h"
#include "operations/RequestError.h"
#include "operations/RunCommands.h"
#include "operations/StateFile.h"
#include "operations/TableOptions.h"

namespace {

using namespace PredSelect;
using MCHost::MemoryTable;
using testing::HasSubstr;

constexpr int kRows = 900;

// Cells of a table of people, made by a formula; some are missing, some user-missing.
class People {
 public:
  explicit People(unsigned seed = 7) : fRandom(seed) {
    for (int i = 0; i < kRows; ++i) AddRow(i);
  }

  // The rows from `first` up to `end`.
  std::unique_ptr<MemoryTable> Table(int first, int end) const {
    auto table = std::make_unique<MemoryTable>();
    for (const auto& [name, cells] : fTexts) table->AddStrings(name, Slice(cells, first, end));
    for (const auto& [name, cells] : fNumbers) table->AddNumbers(name, Slice(cells, first, end));
    return table;
  }
  // As many rows in which everything is missing.
  std::unique_ptr<MemoryTable> Missing(int rows) const {
    auto table = std::make_unique<MemoryTable>();
    const auto n = static_cast<std::size_t>(rows);
    for (const auto& each : fTexts) {
      table->AddStrings(each.first, std::vector<std::optional<std::string>>(n));
    }
    for (const auto& each : fNumbers) {
      table->AddNumbers(each.first, std::vector<double>(n, MCMV::gMissingValue));
    }
    return table;
  }

 private:
  double Draw() { return std::uniform_real_distribution<double>(0, 1)(fRandom); }
  template <class T>
  static std::vector<T> Slice(const std::vector<T>& cells, int first, int end) {
    return {cells.begin() + first, cells.begin() + end};
  }
  std::optional<std::string> Word(std::initializer_list<const char*> words, double at) {
    if (Draw() < 0.04) return {};
    return *(words.begin() + static_cast<int>(at * static_cast<double>(words.size())) %
                                 static_cast<int>(words.size()));
  }
  double Number(double value) { return Draw() < 0.05 ? MCMV::gMissingValue : value; }

  void AddRow(int i) {
    const double u = Draw(), v = Draw(), w = Draw();
    const int income = static_cast<int>(3 * std::min(0.999, 0.7 * u + 0.3 * Draw()));
    constexpr const char* kIncomes[] = {"low", "middle", "high"};
    fTexts["income"].push_back(kIncomes[income]);
    if (Draw() < 0.03) fTexts["income"].back().reset();
    fTexts["home"].push_back(Word({"own", "rent", "shared", "other"}, 0.5 * u + 0.5 * v));
    fTexts["town"].push_back(Word({"a", "b", "c", "d", "e", "f", "g"}, w));
    fNumbers["age"].push_back(Number(std::floor(18 + 60 * (0.6 * u + 0.4 * w))));
    fNumbers["hours"].push_back(Draw() < 0.1 ? 99 : Number(20 + 30 * v + 10 * income));
    fNumbers["rooms"].push_back(Number(std::floor(1 + 6 * (0.4 * u + 0.6 * v))));
    fNumbers["noise"].push_back(w - 0.5);
    // Constant for long, so in whole parts.
    fNumbers["late"].push_back(i < 600 ? 2.5 : Draw());
    fNumbers["times"].push_back(std::floor(4 * Draw()));
    fNumbers["train"].push_back(Draw() < 0.7 ? 1 : 0);
  }

  std::mt19937 fRandom;
  std::map<std::string, std::vector<std::optional<std::string>>> fTexts;
  std::map<std::string, std::vector<double>> fNumbers;
};

TableOptions Said(bool weighted) {
  TableOptions said;
  said.fMissing = {{"hours", {"99"}}};
  if (weighted) said.fWeight = "times";
  return said;
}

using Parts = std::vector<std::shared_ptr<MemoryTable>>;

// Seven parts, one without a row, one where all is missing, and the whole that they make.
Parts SevenParts(const People& people) {
  Parts parts;
  constexpr int kBounds[] = {0, 150, 150, 151, 400, 700, kRows};
  for (int i = 0; i < 6; ++i) parts.push_back(people.Table(kBounds[i], kBounds[i + 1]));
  parts.push_back(people.Missing(20));
  return parts;
}

std::string Merge(const std::vector<std::string>& pieces) {
  std::vector<NamedPiece> named;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    named.push_back({pieces[i], "piece " + std::to_string(i)});
  }
  return MergePieces(named);
}

std::string RangesOf(const Parts& parts, bool weighted, std::vector<std::string>* each = nullptr) {
  std::vector<std::string> ranges;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    PrepareTable(*parts[i], Said(weighted));
    const TableRanges found = FindRanges(*parts[i], static_cast<std::int64_t>(i), {});
    ranges.push_back(Piece{Piece::kRanges, 0, StateBytes::Of(found)}.Bytes());
  }
  if (each != nullptr) *each = ranges;
  return Merge(ranges);
}

// Reaches the parts in this process, and merges in a tree or a row. May spoil one answer.
class HerePasses : public MCHost::IPartPasses {
 public:
  HerePasses(Parts parts, std::string ranges) : fParts(std::move(parts)) {
    for (std::size_t i = 0; i < fParts.size(); ++i) {
      TableOptions said;
      said.fpWhole = WholeOf(ranges, static_cast<std::int64_t>(i));
      PrepareTable(*fParts[i], said);
    }
    fCodes.resize(fParts.size());
  }

  std::string Pass(MCHost::PassOver over, const std::string& request) override {
    ++fNPasses;
    std::vector<std::string> answers;
    for (std::size_t i = 0; i < fParts.size(); ++i) {
      if (over == MCHost::PassOver::kCodes) {
        answers.push_back(AnswerFromCodes(fCodes[i], request, {}));
        continue;
      }
      PartAnswer answer = AnswerPart(*fParts[i], request, {});
      if (over == MCHost::PassOver::kRowsKeep) fCodes[i] = std::move(answer.fCodes);
      answers.push_back(std::move(answer.fAnswer));
    }
    if (fbDropsOne) answers.pop_back();
    if (fbReversed) std::reverse(answers.begin(), answers.end());
    while (answers.size() > 1) {
      const std::string last = answers.back();
      answers.pop_back();
      answers.back() = Merge({answers.back(), last});
    }
    return answers.front();
  }

  int fNPasses = 0;
  bool fbReversed = false;
  bool fbDropsOne = false;

 private:
  Parts fParts;
  std::vector<std::string> fCodes;
};

// A model file without the time at which it was written.
std::string ReadModel(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string model{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const std::size_t time = model.find("<Timestamp>");
  EXPECT_NE(time, std::string::npos) << path;
  return model.erase(time, model.find("</Timestamp>") - time);
}

std::string TextOf(const decltype(MCHost::OutputCell::fValue)& value) {
  const auto* text = std::get_if<MCHost::OutputText>(&value);
  return text == nullptr ? "" : MCHost::ShowText(*text);
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

// Messages and tables alike, numbers to 1e-12.
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

class PartRuns : public testing::Test {
 protected:
  PartRuns() { std::filesystem::create_directories(fFolder); }
  ~PartRuns() override { std::filesystem::remove_all(fFolder); }

  // Runs the commands over the whole and over its parts; the folder's whole.xml and parts.xml are
  // the model files of "@".
  std::shared_ptr<HerePasses> RunBoth(const std::string& commands, bool weighted,
                                      bool reversed = false) {
    const People people;
    const std::unique_ptr<MemoryTable> whole = people.Table(0, kRows);
    const Parts parts = SevenParts(people);
    // The whole has the rows of the last part, too.
    const auto all = std::make_unique<MemoryTable>();
    Join(people, *all);
    PrepareTable(*all, Said(weighted));
    EXPECT_EQ(RunCommands(*all, fWhole, RequestFor(commands, "whole"), {}), Outcome::kCompleted)
        << MessagesOf(fWhole);
    const std::string ranges = RangesOf(parts, weighted);
    const std::shared_ptr<MCHost::WholeTable> known = WholeOf(ranges, -1);
    auto passes = std::make_shared<HerePasses>(parts, ranges);
    passes->fbReversed = reversed;
    known->fpPasses = passes;
    MCHost::PartsTable table(known);
    EXPECT_EQ(RunCommands(table, fInParts, RequestFor(commands, "parts"), {}), Outcome::kCompleted)
        << MessagesOf(fInParts);
    return passes;
  }

  RunRequest RequestFor(std::string commands, const std::string& name) const {
    for (std::size_t at; (at = commands.find("@")) != std::string::npos;) {
      commands.replace(at, 1, "/OUTFILE MODEL='" + fFolder + "/" + name + ".xml'");
    }
    return {.fCommands = commands, .fMemory = 100000};
  }

  static void Join(const People& people, MemoryTable& all) {
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

  std::string fFolder = testing::TempDir() + "parts" + std::to_string(getpid());
  MCHost::OutputDocument fWhole, fInParts;
};

TEST_F(PartRuns, ARankingOverPartsIsThatOfTheWhole) {
  const char* const commands[] = {
      "SELECTPRED income /CRITERIA PVALUES=EXACT SHOWUNSELECTED=20 /PRINT CPS EXCLUDED SUMMARY "
      "SELECTED EFFECTS.",
      "SELECTPRED age /CRITERIA SHOWUNSELECTED=20 /PRINT EXCLUDED SUMMARY SELECTED EFFECTS.",
      "SELECTPRED income BY home town WITH hours noise late /MISSING USERMISSING=INCLUDE "
      "/SCREENING STATUS=OFF /CRITERIA SHOWUNSELECTED=20.",
  };
  for (const char* command : commands) {
    for (const bool weighted : {false, true}) {
      fWhole = {};
      fInParts = {};
      RunBoth(command, weighted, weighted);
      ExpectSame(fInParts, fWhole);
    }
  }
}

TEST_F(PartRuns, AModelOverPartsIsThatOfTheWhole) {
  const char* const commands[] = {
      "NAIVEBAYES income /SUBSET MAXSIZE=AUTO(BESTSUBSET=PSEUDOBIC) /PRINT EXCLUDED SUMMARY "
      "CLASSIFICATION SELECTED EVALUATION @.",
      "NAIVEBAYES income /EXCEPT VARIABLES=train /TRAININGSAMPLE PERCENT=70 /SCREENING STATUS=ON "
      "/SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA) /PRINT EXCLUDED SUMMARY CLASSIFICATION EVALUATION "
      "@.",
      "NAIVEBAYES income /FORCE FACTORS=home /TRAININGSAMPLE VARIABLE=train /SUBSET EXACTSIZE=3 "
      "/PRINT SUMMARY CLASSIFICATION EVALUATION @.",
      "NAIVEBAYES income BY home town WITH age hours late /SUBSET NOSELECTION /MISSING "
      "USERMISSING=INCLUDE /PRINT EVALUATION @.",
  };
  for (const char* command : commands) {
    for (const bool weighted : {false, true}) {
      SCOPED_TRACE(command);
      // Weighted cases are not drawn.
      if (weighted && std::string(command).find("PERCENT") != std::string::npos) continue;
      fWhole = {};
      fInParts = {};
      RunBoth(command, weighted, weighted);
      ExpectSame(fInParts, fWhole);
      EXPECT_EQ(ReadModel(fFolder + "/parts.xml"), ReadModel(fFolder + "/whole.xml"));
    }
  }
}

TEST_F(PartRuns, ACommandNamesWhatAnotherHasChosen) {
  RunBoth(
      "SELECTPRED income /CRITERIA SIZE=3 /MACROVAR COVARIATES=best FACTORS=kinds /PRINT NONE. "
      "NAIVEBAYES income BY !kinds WITH !best @.",
      false);
  ExpectSame(fInParts, fWhole);
  EXPECT_EQ(ReadModel(fFolder + "/parts.xml"), ReadModel(fFolder + "/whole.xml"));
}

TEST_F(PartRuns, WhatAPartLacksIsRefused) {
  const People people;
  const Parts parts = SevenParts(people);
  std::vector<std::string> each;
  const std::string ranges = RangesOf(parts, false, &each);
  const std::shared_ptr<MCHost::WholeTable> known = WholeOf(ranges, -1);
  const auto passes = std::make_shared<HerePasses>(parts, ranges);
  passes->fbDropsOne = true;
  known->fpPasses = passes;
  MCHost::PartsTable table(known);
  for (const char* command : {"SELECTPRED income.", "NAIVEBAYES income."}) {
    MCHost::OutputDocument document;
    EXPECT_EQ(RunCommands(table, document, {.fCommands = command}, {}), Outcome::kCommandError);
    ASSERT_FALSE(document.GetRuns().back().fMessages.empty());
    EXPECT_THAT(MCHost::ShowText(document.GetRuns().back().fMessages.back().fText),
                HasSubstr("900 cases, and the parts have 920"));
  }
}

TEST_F(PartRuns, WhatNeedsTheCasesAtOnePlaceIsRefusedBeforeTheWork) {
  const Parts parts = SevenParts(People());
  const std::string ranges = RangesOf(parts, false);
  const std::shared_ptr<MCHost::WholeTable> known = WholeOf(ranges, -1);
  const auto passes = std::make_shared<HerePasses>(parts, ranges);
  known->fpPasses = passes;
  MCHost::PartsTable table(known);
  const MCHost::CalibrationWish warm{.fMethod = MCHost::CalibrationWish::kTemperature};
  const std::pair<RunRequest, const char*> refused[] = {
      {{.fCommands = "NAIVEBAYES income /SAVE PREDVAL."}, "cannot be saved"},
      {{.fCommands = "NAIVEBAYES income /CROSSVALIDATION FOLDS=5."}, "Cross-validation needs"},
      {{.fCommands = "NAIVEBAYES income.", .fCalibration = warm}, "cannot be calibrated"}};
  for (const auto& [request, told] : refused) {
    MCHost::OutputDocument document;
    EXPECT_EQ(RunCommands(table, document, request, {}), Outcome::kCommandError);
    EXPECT_THAT(MessagesOf(document), HasSubstr(told));
  }
  EXPECT_EQ(passes->fNPasses, 0);
}

// In any order and any tree, and not twice.
TEST_F(PartRuns, RangesMergeToTheSameBytes) {
  const Parts parts = SevenParts(People());
  std::vector<std::string> each;
  const std::string ranges = RangesOf(parts, true, &each);
  std::vector<std::string> backwards(each.rbegin(), each.rend());
  EXPECT_EQ(Merge(backwards), ranges);
  const std::string left = Merge({each[3], each[1], each[5]});
  const std::string right = Merge({each[6], each[0], Merge({each[4], each[2]})});
  EXPECT_EQ(Merge({right, left}), ranges);
  std::vector<std::string> damaged = each;
  damaged[4][damaged[4].size() / 2] ^= 1;
  const Parts others = SevenParts(People(8));
  PrepareTable(*others[0], Said(false));
  const std::string unweighted =
      Piece{Piece::kRanges, 0, StateBytes::Of(FindRanges(*others[0], 9, {}))}.Bytes();
  const std::pair<std::vector<std::string>, const char*> refused[] = {
      {{ranges, each[2]}, "piece 1 cannot be added: a part of that number is there already"},
      {damaged, "piece 4 cannot be added: it is damaged"},
      {{ranges, unweighted}, "piece 1 cannot be added: the weight variable is another"},
      {{ranges, Piece{Piece::kRequest, 0, {}}.Bytes()}, "piece 1 cannot be added: it is a request"},
      {{ranges, "PSPIECE"}, "piece 1 cannot be added: it is no piece"},
  };
  for (const auto& [pieces, why] : refused) {
    try {
      Merge(pieces);
      ADD_FAILURE() << why;
    } catch (const RequestError& error) {
      EXPECT_THAT(error.what(), testing::StartsWith(why));
    }
  }
}

TEST_F(PartRuns, APartOfOtherDataIsRefused) {
  const People people;
  const std::string ranges = RangesOf(SevenParts(people), false);
  const auto refusal = [&](MemoryTable& table) -> std::string {
    try {
      TableOptions said;
      said.fpWhole = WholeOf(ranges, 0);
      PrepareTable(table, said);
      const std::string request = Piece{
          Piece::kRequest, 0,
          StateBytes::Of(
              PartRequest{PartRequest::kCount,
                          said.fpWhole->fRanges.Digest(),
                          "SELECTPRED income.",
                          {},
                          {},
                          {}})}.Bytes();
      AnswerPart(table, request, {});
      return "nothing";
    } catch (const std::exception& error) {
      return error.what();
    }
  };
  const std::unique_ptr<MemoryTable> fewer = people.Table(0, 5);
  MemoryTable narrow;
  narrow.AddNumbers("age", {1, 2});
  EXPECT_THAT(refusal(narrow), HasSubstr("there are 1 columns here and 10 there"));
  const std::unique_ptr<MemoryTable> beyond = People(99).Table(0, 800);
  EXPECT_THAT(refusal(*beyond), HasSubstr("values here that the ranges do not know"));
  EXPECT_EQ(refusal(*fewer), "nothing");
}

// State files of parts, as the command line makes them: the empty one leaves its own.
TEST_F(PartRuns, StatesOfAllPartsMergeToThatOfTheWhole) {
  const People people;
  constexpr const char* kCommand = "SELECTPRED income /SCREENING STATUS=OFF.";
  const Parts parts = SevenParts(people);
  const std::string ranges = RangesOf(parts, false);
  const std::string path = fFolder + "/state.bin";
  std::optional<ComponentFile> merged;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    TableOptions said;
    said.fpWhole = WholeOf(ranges, static_cast<std::int64_t>(i));
    PrepareTable(*parts[i], said);
    MCHost::OutputDocument document;
    std::filesystem::remove(path);
    (void)RunCommands(*parts[i], document, {.fCommands = kCommand, .fStatePath = path}, {});
    ASSERT_TRUE(std::filesystem::exists(path)) << i;
    ComponentFile state = LoadState(path);
    if (merged) {
      MergeStates(*merged, state, path);
    } else {
      merged = std::move(state);
    }
  }
  MemoryTable all;
  Join(people, all);
  PrepareTable(all, Said(false));
  MCHost::OutputDocument document, ours, theirs;
  EXPECT_EQ(RunCommands(all, document, {.fCommands = kCommand, .fStatePath = path}, {}),
            Outcome::kCompleted);
  ComponentFile whole = LoadState(path);
  InspectState(*merged, ours);
  InspectState(whole, theirs);
  ExpectSame(ours, theirs);
}

// Two parts without a valid case are no reason to refuse one another.
TEST_F(PartRuns, EmptyStatesMergeToo) {
  const People people;
  const std::string path = fFolder + "/empty.bin";
  std::optional<ComponentFile> merged;
  for (const int rows : {20, 0, 10}) {
    const std::unique_ptr<MemoryTable> table = people.Missing(rows);
    PrepareTable(*table, {});
    MCHost::OutputDocument document;
    EXPECT_EQ(
        RunCommands(*table, document,
                    {.fCommands = "SELECTPRED income BY home WITH age.", .fStatePath = path}, {}),
        Outcome::kCommandError);
    ComponentFile state = LoadState(path);
    if (merged) {
      MergeStates(*merged, state, path);
    } else {
      merged = std::move(state);
    }
  }
  double weights[2];
  int valid = -1, excluded = -1;
  merged->fpFeature->GetNValidNExcluded(weights[0], weights[1], valid, excluded);
  EXPECT_EQ(valid, 0);
  EXPECT_EQ(excluded, 30);
}

}  // namespace
