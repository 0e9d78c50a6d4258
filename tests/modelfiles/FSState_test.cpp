// Saved state of the feature selection component: what is restored goes on as if never saved, and
// what is damaged is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <sstream>

#include "common/state/IOException.h"
#include "feature/accumulators/FSMaps.h"
#include "modelfiles/ComponentFile.h"
#include "modelfiles/StateEnvelope.h"
#include "tests/feature/RandomRuns.h"
#include "tests/modelfiles/FSRuns.h"
#include "tests/modelfiles/StateStreams.h"
#include "tests/modelfiles/Validate.h"

namespace {

using testing::HasSubstr;

struct Kind {
  const char* fPredictors;
  bool fbCatTarget;
  bool fbWithTarget;
};
constexpr Kind kKinds[] = {{"cccccc", true, true},  {"cccnn", false, true}, {"nnnnn", true, true},
                           {"nnnn", false, true},   {"ccnncn", true, true}, {"cnccn", false, true},
                           {"cncncn", true, false}, {"ccc", true, true}};

std::vector<FSStage> StagesOf(const Kind& kind) {
  if (!kind.fbWithTarget) return {FSStage::kNew, FSStage::kScreened};
  return {FSStage::kNew,      FSStage::kAccumulated, FSStage::kCheckedConstant,
          FSStage::kScreened, FSStage::kRankedAll,   FSStage::kRankedBest};
}

void ExpectSame(IFSAlgorithm& restored, IFSAlgorithm& original) {
  EXPECT_EQ(restored.GetStatus(), original.GetStatus());
  EXPECT_EQ(DumpOf(restored), DumpOf(original));
  EXPECT_EQ(ReportOf(restored), ReportOf(original));
}

TEST(FSState, ARestoredComponentGoesOnAsTheSavedOne) {
  for (const Kind& kind : kKinds) {
    for (const FSStage stage : StagesOf(kind)) {
      SCOPED_TRACE(std::string(kind.fPredictors) + (kind.fbCatTarget ? " cat " : " cont ") +
                   std::to_string(static_cast<int>(stage)));
      FinishedRun run(kind.fPredictors, kind.fbCatTarget, kind.fbWithTarget, stage);
      const std::string binary = SaveBinary(*run.fpComponent);
      const std::string xml = SaveXML(*run.fpComponent);
      EXPECT_EQ(ValidationErrors(xml), "");
      FSFactory factory;
      const auto fromBinary = RestoreBinary(binary, factory);
      ASSERT_NE(fromBinary, nullptr);
      const auto fromXML = RestoreXML(SaveXML(*fromBinary), factory);
      ASSERT_NE(fromXML, nullptr);
      EXPECT_EQ(SaveBinary(*fromXML), binary);
      EXPECT_EQ(SaveXML(*fromXML), xml);
      ExpectSame(*fromBinary, *run.fpComponent);
      ExpectSame(*fromXML, *run.fpComponent);
      const auto codes = FinishRun(*run.fpComponent, stage);
      EXPECT_EQ(FinishRun(*fromBinary, stage), codes);
      EXPECT_EQ(FinishRun(*fromXML, stage), codes);
      ExpectSame(*fromBinary, *run.fpComponent);
      ExpectSame(*fromXML, *run.fpComponent);
    }
  }
}

TEST(FSState, ARestoredComponentTakesMoreCasesAsTheSavedOneWould) {
  for (const Kind& kind : kKinds) {
    if (!kind.fbWithTarget) continue;
    FinishedRun run(kind.fPredictors, kind.fbCatTarget, true, FSStage::kAccumulated);
    FSFactory factory;
    const auto restored = RestoreBinary(SaveBinary(*run.fpComponent), factory);
    ASSERT_NE(restored, nullptr);
    Table table(run.fSettings.GetNPredictors() + 2);
    for (int i = 0; i < 100; ++i) {
      for (std::size_t j = 0; j < table.size(); ++j) table[j].push_back((i * (j + 3)) % 7);
    }
    for (IFSAlgorithm* component : {run.fpComponent.get(), restored.get()}) {
      BlocksOf source(table, 30);
      EXPECT_TRUE(component->Accumulate(source, -1).IsOK());
    }
    ExpectSame(*restored, *run.fpComponent);
  }
}

TEST(FSState, SumsThatOverflowedAreKept) {
  // Target, weight, a continuous and a categorical predictor.
  const std::vector<double> target = {0, 1, 0, 1, 0, 1},
                            categories = {0, 1, 1, 0, 1, KOVA_SystemMissing};
  const std::vector<double> huge(6, 2e307);
  const Table tables[] = {
      {target, {1, 1, 1, 1, 1, 1}, {1e300, -1e300, 1e200, 3, 4, -1e307}, categories},
      {target, huge, target, categories},
      {target, huge, huge, categories}};
  for (const Table& table : tables) {
    for (const bool catTarget : {true, false}) {
      FSSettings settings({false, true}, catTarget);
      settings.SetWeightPosition(1);
      settings.SetWeightToFreq(MCFSCommon::kAsIs);
      FSFactory factory;
      const auto component = factory.CreateFSAlgorithm(&settings);
      BlocksOf source(table, 4);
      EXPECT_TRUE(component->Accumulate(source, -1).IsOK());
      EXPECT_FALSE(component->SortAndRank(0).IsError());
      const std::string binary = SaveBinary(*component);
      const auto restored = RestoreXML(SaveXML(*component), factory);
      ASSERT_NE(restored, nullptr);
      EXPECT_EQ(SaveBinary(*restored), binary);
      EXPECT_EQ(DumpOf(*restored), DumpOf(*component));
    }
  }
}

// Nothing that a program without exact p-values reads as its own.
TEST(FSState, ExactPValuesAreAnotherVersion) {
  const Table table = {{1, 2, 3, 4, 5, 7}, {2, 4, 6, 8, 10, 14}, {1, 3, 2, 5, 4, 6}};
  for (const bool exact : {false, true}) {
    FSSettings settings({false, false}, false);
    settings.SetExactPValues(exact);
    FSFactory factory;
    const auto component = factory.CreateFSAlgorithm(&settings);
    BlocksOf source(table, 4);
    EXPECT_TRUE(component->AccumulateAndRank(source, -1, false, 0).IsOK());
    const std::string binary = SaveBinary(*component);
    EXPECT_TRUE(binary.starts_with(exact ? "FSAlgorithm 1.01FSSet" : "FSAlgorithm 1.00FSSet"));
    EXPECT_EQ(ValidationErrors(SaveXML(*component)), "");
    const auto fromBinary = RestoreBinary(binary, factory);
    ASSERT_NE(fromBinary, nullptr);
    const auto restored = RestoreXML(SaveXML(*fromBinary), factory);
    ASSERT_NE(restored, nullptr);
    EXPECT_EQ(restored->GetSettings()->ArePValuesExact(), exact);
    EXPECT_EQ(SaveBinary(*restored), binary);
    ExpectSame(*restored, *component);
  }
}

// Cases of transactions in two streams, with a restore in between.
TEST(FSState, ARestoredComponentTakesMoreTransactionsAsTheSavedOneWould) {
  for (const bool catTarget : {true, false}) {
    FSSettings settings({true, false, true}, catTarget);
    settings.SetFlagTrInput(true);
    FSFactory factory;
    const auto unsaved = factory.CreateFSAlgorithm(&settings);
    const double none = KOVA_SystemMissing;
    const Table first = {
        {1, 1, 2, 3, 3, 4}, {0, 1, 2, 0, 2, 1}, {5, 2.5, 1, none, 1, 7}, {0, 0, 1, 1, 1, none}};
    const Table second = {{8, 8, 8, 9, 10}, {0, 1, 2, 1, 0}, {5, -1, 2, 0.5, 6}, {1, 1, 1, 0, 2}};
    BlocksOf source(first, 4);
    ASSERT_TRUE(unsaved->Accumulate(source, -1).IsOK());
    const std::string binary = SaveBinary(*unsaved);
    const auto fromBinary = RestoreBinary(binary, factory),
               fromXML = RestoreXML(SaveXML(*unsaved), factory);
    for (IFSAlgorithm* component : {unsaved.get(), fromBinary.get(), fromXML.get()}) {
      ASSERT_NE(component, nullptr);
      BlocksOf more(second, 2);
      EXPECT_TRUE(component->Accumulate(more, -1).IsOK());
    }
    ExpectSame(*fromBinary, *unsaved);
    FinishRun(*unsaved, FSStage::kAccumulated);
    FinishRun(*fromBinary, FSStage::kAccumulated);
    FinishRun(*fromXML, FSStage::kAccumulated);
    ExpectSame(*fromBinary, *unsaved);
    ExpectSame(*fromXML, *unsaved);
  }
}

// The two maps of counts as bytes, least significant first as on the machines this is built for.
TEST(FSState, MapsOfCountsHaveTheirDocumentedBytes) {
  BinaryStream stream;
  FSMapIPCnt pairs;
  pairs.IncrementByFreq(3, 0.5);
  pairs.IncrementByFreq(3, 1.5);
  FSMapICnt counts;
  counts.IncrementByFreq(-1, 2.0);
  EXPECT_EQ(pairs.WriteObject(stream), 5 + 4 + 20);
  EXPECT_EQ(counts.WriteObject(stream), 5 + 4 + 12);
  const auto bytes = [](const char* text, std::size_t n) { return std::string(text, n); };
  const std::string two("\0\0\0\0\0\0\0\x40", 8);
  EXPECT_EQ(stream.Content(), "FSMII" + bytes("\1\0\0\0\3\0\0\0\2\0\0\0\0\0\0\0", 16) + two +
                                  "FSMII" + bytes("\1\0\0\0\xFF\xFF\xFF\xFF", 8) + two);
  EXPECT_EQ(pairs.ReadObject(stream), 29);
  EXPECT_EQ(counts.ReadObject(stream), 21);
  double value = 0.0;
  EXPECT_TRUE(counts.GetValue(-1, value));
  EXPECT_EQ(value, 2.0);
}

// Kept files: what was saved once can be restored for ever.
TEST(FSState, OfEarlierDaysIsStillRead) {
  const auto content = [](const std::string& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
  };
  for (const std::string form : {".bin", ".xml"}) {
    const std::string path = PREDSELECT_SOURCE_DIR "/tests/modelfiles/states/feature" + form;
    ComponentFile file;
    ASSERT_EQ(ReadComponentFile(path, file), "");
    ASSERT_TRUE(file.fDictionary.has_value());
    EXPECT_EQ(file.fDictionary->fWeight, "n");
    EXPECT_EQ(file.fDictionary->fPredictors[0].fStrings, std::vector<std::string>({"u", "v"}));
    const std::string copy = testing::TempDir() + "feature" + form;
    EXPECT_EQ(WriteComponentFile(copy, {IsXMLStateName(copy)}, *file.fpFeature, &*file.fDictionary),
              "");
    EXPECT_EQ(content(copy), MCModelFiles::PutIntoEnvelope(content(path), form == ".xml", ""));
    // Of u 4 are p and 2 are q, of v 1 and 3.
    double statistics[4];
    EXPECT_TRUE(file.fpFeature->SortAndRank(0).IsOK());
    EXPECT_TRUE(file.fpFeature->GetPredictorStats(MCFSCommon::kPearson, 0, statistics[0],
                                                  statistics[1], statistics[2], statistics[3]));
    EXPECT_NEAR(statistics[1], 5.0 / 3.0, 1e-15);
  }
}

TEST(FSState, NothingIsWrittenOfAComponentInErrorOrCancelled) {
  FinishedRun cancelled("ccc", true, true, FSStage::kAccumulated);
  cancelled.fpComponent->Cancel();
  FinishedRun failed("ccc", true, true, FSStage::kAccumulated);
  EXPECT_EQ(failed.fpComponent->SortAndRank(99).GetErrorCode(), 80012);
  for (const auto& [component, code] :
       {std::pair(cancelled.fpComponent.get(), 1), std::pair(failed.fpComponent.get(), 80012)}) {
    BinaryStream out;
    EXPECT_EQ(component->SaveState(out).GetErrorCode(), code);
    EXPECT_EQ(out.Content(), "");
    std::ostringstream xml;
    EXPECT_EQ(component->SaveStateXML(xml).GetErrorCode(), code);
    EXPECT_EQ(xml.str(), "");
  }
}

TEST(FSState, AStreamThatIsNotGoodIsRefusedWithItsCode) {
  FSFactory factory;
  std::fstream binary("/nonexistent/state", std::ios::binary | std::ios::in);
  EXPECT_EQ(factory.RestoreFSAlgorithmFromBinary(binary), nullptr);
  EXPECT_EQ(factory.GetStatus().GetErrorCode(), 80003);
  std::ifstream xml("/nonexistent/state");
  EXPECT_EQ(factory.RestoreFSAlgorithmFromXML(xml), nullptr);
  EXPECT_EQ(factory.GetStatus().GetErrorCode(), 80003);
}

// Whatever is restored from damaged bytes must serve; whatever is not must say so.
void ExpectUsableOrRefused(IFSAlgorithm* component, const FSFactory& factory, std::int64_t code) {
  if (component == nullptr) {
    EXPECT_EQ(factory.GetStatus(), MCFeature::MCStatus(code, false));
    return;
  }
  FinishRun(*component, FSStage::kAccumulated);
  EXPECT_NE(DumpOf(*component), "");
  EXPECT_FALSE(ReportOf(*component).empty());
  FSFactory again;
  if (!component->GetStatus().IsError()) {
    EXPECT_NE(RestoreBinary(SaveBinary(*component), again), nullptr);
  }
}

class DamagedState : public testing::Test {
 protected:
  template <class Change>
  void TryBinary(const std::string& state, Change change) {
    std::string damaged = state;
    change(damaged);
    FSFactory factory;
    ExpectUsableOrRefused(RestoreBinary(damaged, factory).get(), factory, 80004);
  }
  template <class Change>
  void TryXML(const std::string& state, Change change) {
    std::string damaged = state;
    change(damaged);
    FSFactory factory;
    ExpectUsableOrRefused(RestoreXML(damaged, factory).get(), factory, 80005);
  }
  const QuietErrors fQuiet;
};

TEST_F(DamagedState, TruncatedAtAnyByteIsRefused) {
  for (const Kind& kind : {Kind{"cn", true, true}, Kind{"cn", false, true}}) {
    const FinishedRun run(kind.fPredictors, kind.fbCatTarget, true, FSStage::kRankedAll, 9);
    const std::string binary = SaveBinary(*run.fpComponent);
    for (std::size_t n = 0; n < binary.size(); ++n) {
      FSFactory factory;
      EXPECT_EQ(RestoreBinary(binary.substr(0, n), factory), nullptr) << n;
      EXPECT_EQ(factory.GetStatus().GetErrorCode(), 80004);
    }
    const std::string xml = SaveXML(*run.fpComponent);
    for (std::size_t n = 0; n + 1 < xml.size(); n += 31) {
      FSFactory factory;
      EXPECT_EQ(RestoreXML(xml.substr(0, n), factory), nullptr) << n;
      EXPECT_EQ(factory.GetStatus().GetErrorCode(), 80005);
    }
  }
}

TEST_F(DamagedState, AnyFlippedBitGivesAUsableComponentOrTheStatus) {
  for (const Kind& kind :
       {Kind{"cn", true, true}, Kind{"cn", false, true}, Kind{"cn", true, false}}) {
    const FinishedRun run(kind.fPredictors, kind.fbCatTarget, kind.fbWithTarget,
                          FSStage::kRankedBest, 6);
    const std::string binary = SaveBinary(*run.fpComponent);
    for (std::size_t i = 0; i < binary.size(); ++i) {
      for (int bit = 0; bit < 8; ++bit) {
        TryBinary(binary, [&](std::string& s) { s[i] = static_cast<char>(s[i] ^ (1 << bit)); });
      }
    }
  }
  const FinishedRun run("cn", true, true, FSStage::kRankedAll, 6);
  const std::string xml = SaveXML(*run.fpComponent);
  for (std::size_t i = 0; i < xml.size(); i += 7) {
    const int bit = static_cast<int>(i & 7);
    TryXML(xml, [&](std::string& s) { s[i] = static_cast<char>(s[i] ^ (1 << bit)); });
  }
}

TEST_F(DamagedState, CountsBeyondTheStreamAllocateNothing) {
  const FinishedRun run("cnc", true, true, FSStage::kRankedAll, 9);
  const std::string binary = SaveBinary(*run.fpComponent);
  for (const char* huge : {"\xFF\xFF\xFF\x7F", "\xFF\xFF\xFF\xFF", "\x00\x00\x00\x40"}) {
    for (std::size_t i = 0; i + 4 <= binary.size(); i += 4) {
      TryBinary(binary, [&](std::string& s) { std::memcpy(&s[i], huge, 4); });
      TryBinary(binary, [&](std::string& s) { std::memcpy(&s[i + (i % 3)], huge, 4); });
    }
  }
}

// Fields of a whole XML state by the name of their object and their number in it, from 0.
std::string WithField(const std::string& xml, const std::string& object, int field,
                      const std::string& value) {
  std::size_t at = xml.find("<Object name=\"" + object + "\">");
  EXPECT_NE(at, std::string::npos);
  for (int k = 0; k <= field; ++k) {
    at = std::min(xml.find("<Long>", at + 1), xml.find("<Double>", at + 1));
  }
  const std::size_t from = xml.find('>', at) + 1;
  return xml.substr(0, from) + value + xml.substr(xml.find('<', from));
}

TEST_F(DamagedState, ValuesThatDoNotFitAreRefusedByName) {
  const FinishedRun run("cn", true, true, FSStage::kRankedAll, 9);
  const std::string xml = SaveXML(*run.fpComponent);
  struct Case {
    const char* fObject;
    int fField;
    const char* fValue;
    const char* fClass;
  };
  const std::vector<Case> cases = {
      {"FSSettings", 3, "2", "FSSettings"},           // categorical predictors
      {"FSSettings", 4, "0", "FSSettings"},           // set type: not of these predictors
      {"FSSettings", 4, "9", "FSSettings"},           // set type: none
      {"FSSettings", 11, "1", "FSSettings"},          // t with a categorical target
      {"FSSettings", 12, "-1", "FSSettings"},         // records between reports
      {"FSSettings", 15, "-2", "FSSettings"},         // target position
      {"FSSettings", 18, "3", "FSSettings"},          // weight conversion
      {"FSSettings", 20, "1.25", "FSSettings"},       // a fraction above 1
      {"FSSettings", 28, "nan", "FSSettings"},        // a threshold that is no number
      {"FSPredictorSet", 0, "3", "FSPredictorSet"},   // number of predictors
      {"FSPredictorSet", 2, "8", "FSPredictorSet"},   // stage
      {"FSPredictorSet", 2, "1", "FSPredictorSet"},   // stage before the data
      {"FSPredictorSet", 3, "2", "FSPredictorSet"},   // flag
      {"FSPredictorSet", 6, "-1", "FSPredictorSet"},  // weight
      {"FSPredictorSet", 6, "nan", "FSPredictorSet"},
      {"FSPredictorSet", 8, "1", "FSPredictorSet"},  // fewer cases than target categories count
      {"FSCatPCatTAccum", 0, "-4", "FSCatPCatTAccum"},
      {"FSCatPCatTAccum", 1, "-4", "FSCatPCatTAccum"},
      {"FSCatPCatTAccum", 2, "1e9", "FSCatPCatTAccum"},  // more missing than all
      {"FSMapPiCnt", 1, "-50", "FSCatPCatTAccum"},       // a pair of a row that there is not
      {"FSMapIPCnt", 1, "77", "FSMapIPCnt"},             // keys that descend
      {"FSMapIStat 2", 2, "0", "FSMapIStat"},            // a group without weight
      {"FSMapIStat 2", 4, "-1", "FSMapIStat"},           // squares below zero
      {"FSPredSort", 3, "0", "FSPredictorSet"},          // a predictor twice
      {"FSPredSort", 3, "5", "FSPredictorSet"},          // a predictor that there is not
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.fObject) + ' ' + std::to_string(c.fField));
    const std::string damaged = WithField(xml, c.fObject, c.fField, c.fValue);
    ASSERT_NE(damaged, xml);
    FSFactory factory;
    const QuietErrors errors;
    EXPECT_EQ(RestoreXML(damaged, factory), nullptr);
    EXPECT_EQ(factory.GetStatus().GetErrorCode(), 80005);
    EXPECT_EQ(errors.Text(), std::string("Failure reading ") + c.fClass + "!\n");
  }
}

TEST_F(DamagedState, ARankingWithoutItsValuesIsRefused) {
  const FinishedRun run("cn", true, true, FSStage::kRankedAll, 9);
  std::string xml = SaveXML(*run.fpComponent);
  const std::size_t values = xml.rfind("<Long>2</Long>");  // those of F
  xml.replace(values, xml.find("<Long>", values + 1) - values, "<Long>0</Long>");
  FSFactory factory;
  EXPECT_EQ(RestoreXML(xml, factory), nullptr);
  EXPECT_EQ(fQuiet.Text(), "Failure reading FSPredictorSet!\n");
}

TEST_F(DamagedState, AnotherTagIsNamedOnStandardError) {
  const FinishedRun run("cn", true, true, FSStage::kAccumulated, 9);
  std::string binary = SaveBinary(*run.fpComponent);
  binary[binary.find("FSSet")] = 'N';
  FSFactory factory;
  EXPECT_EQ(RestoreBinary(binary, factory), nullptr);
  EXPECT_EQ(fQuiet.Text(), "Error reading FSSettings!\n");
}

TEST(FSState, NoPassCountsMoreCasesThanANumberHolds) {
  for (const bool transactions : {true, false}) {
    FSSettings settings({true}, true);
    settings.SetFlagTrInput(transactions);
    FSFactory factory;
    const auto component = factory.CreateFSAlgorithm(&settings);
    const Table cases = transactions ? Table{{1, 2, 3, 4}, {0, 0, 0, 0}, {5, 6, 5, 6}, {0, 1, 0, 1}}
                                     : Table{{0, 1, 0, 1}, {5, 6, 5, 6}};
    BlocksOf source(cases, 4), more(cases, 4);
    ASSERT_TRUE(component->Accumulate(source, -1).IsOK());
    const auto restored =
        RestoreXML(WithField(SaveXML(*component), "FSPredictorSet", 8, "2147483645"), factory);
    ASSERT_NE(restored, nullptr);
    EXPECT_TRUE(restored->Accumulate(more, -1).IsOK());
    double weights[2];
    int counts[2];
    restored->GetNValidNExcluded(weights[0], weights[1], counts[0], counts[1]);
    EXPECT_GT(counts[0], 2147483645);
    EXPECT_EQ(counts[1], 0);
  }
}

}  // namespace
