// Commands over a table in parts, held to what they give over the whole: counts exactly, statistics
// to 1e-12, the same messages, and the same model file to the last byte.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "common/parts/PartRequest.h"
#include "common/parts/Piece.h"
#include "common/state/StateBytes.h"
#include "host/data/PartsTable.h"
#include "host/data/WholeTable.h"
#include "host/output/ShowText.h"
#include "host/session/HostIOError.h"
#include "operations/FindRanges.h"
#include "operations/PartPasses.h"
#include "operations/RequestError.h"
#include "operations/RunCommands.h"
#include "tests/operations/PartTables.h"

namespace {

using namespace PredSelect;
using namespace MCTest;
using testing::HasSubstr;

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
    fKept.resize(fParts.size());
  }

  std::string Pass(MCHost::PassOver over, const std::string& request) override {
    ++fNPasses;
    std::vector<std::string> answers;
    for (std::size_t i = 0; i < fParts.size(); ++i) {
      if (over == MCHost::PassOver::kCodes) {
        answers.push_back(AnswerFromCodes(fCodes[i], request, {}));
        EXPECT_TRUE(fKept[i]->Answer(request) == answers.back());
        continue;
      }
      PartAnswer answer = AnswerPart(*fParts[i], request, {});
      if (over == MCHost::PassOver::kRowsKeep) Keep(i, std::move(answer.fCodes));
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
  // Odd parts have no room for products.
  void Keep(std::size_t part, std::string codes) {
    const std::size_t room = part % 2 == 0 ? std::size_t{1} << 20 : 0;
    fKept[part] = std::make_unique<PartCodes>(codes, Surroundings(), room);
    fCodes[part] = std::move(codes);
  }

  Parts fParts;
  std::vector<std::string> fCodes;
  std::vector<std::unique_ptr<PartCodes>> fKept;
};

// A model file without the time at which it was written.
std::string ReadModel(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string model{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const std::size_t time = model.find("<Timestamp>");
  EXPECT_NE(time, std::string::npos) << path;
  return model.erase(time, model.find("</Timestamp>") - time);
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
      {{ranges, each[2]}, "piece 1 cannot be added: part 2 is there already"},
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
  EXPECT_THAT(refusal(*fewer), HasSubstr("part 0 has 5 cases here, and had"));
}

}  // namespace
