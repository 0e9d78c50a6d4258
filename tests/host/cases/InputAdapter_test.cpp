#include <gtest/gtest.h>

#include <random>

#include "host/cases/MCStopProcessor.h"
#include "host/cases/UACaseValueReader.h"
#include "host/cases/UAInputAdapter.h"
#include "host/cases/UAPredictionWriter.h"
#include "host/cases/UAProcDataSourceIter.h"
#include "host/cases/UAUniformRandom.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/session/SessionScope.h"
#include "tests/host/cases/CaseFixtures.h"

namespace {

using casetests::FragileTable;
using casetests::TestSession;
using Rows = std::vector<std::vector<double>>;

constexpr double kMissing = KOVA_SystemMissing;

// Keeps cases whose number divided by `every` leaves no rest (0: all).
class SkippingStream final : public UAProcDataSourceIter {
 public:
  SkippingStream(UAInputAdapter* adapter, int every, int rest = 0)
      : UAProcDataSourceIter(adapter, false), fEvery(every), fRest(rest) {}
  bool PreprocessCase() override {
    fSeen.push_back(GetAdapter()->GetCaseNumber());
    fPasses.push_back(GetAdapter()->GetDataPassCount());
    return fEvery == 0 || GetAdapter()->GetCaseNumber() % fEvery == fRest;
  }

  std::vector<std::int64_t> fSeen;
  std::vector<int> fPasses;

 private:
  int fEvery;
  int fRest;
};

Rows ReadRecords(UAProcDataSourceIter& stream) {
  Rows rows;
  while (stream.HasMore()) rows.push_back(stream.NextRecord()->GetAll());
  return rows;
}

Rows ReadBlocks(UAProcDataSourceIter& stream, std::size_t maxCases) {
  Rows rows;
  for (;;) {
    const MCCommon::RecordBlock& block = stream.NextBlock(maxCases);
    if (block.Cases() == 0) return rows;
    for (std::size_t i = 0; i < block.Cases(); ++i) {
      rows.emplace_back();
      for (std::size_t j = 0; j < block.Columns(); ++j) rows.back().push_back(block.Column(j)[i]);
    }
  }
}

// Columns: 0 "s" strings, 1 "n" numbers as categories, 2 "x" numbers; batches of 2 cases.
class CaseTest : public testing::Test {
 protected:
  CaseTest() : fTable(2), fSession(fTable), fScope(fSession) {
    fTable.AddStrings("s", {"b", "a", std::nullopt, "b", "?"});
    fTable.AddNumbers("n", {7, -0.0, 2.5, 0, 99});
    fTable.AddNumbers("x", {1.5, casetests::kNaN, -4, casetests::kInf, 999});
    fTable.GetVariable(0).GetMissingValues().AddString("?");
    fTable.GetVariable(1).GetMissingValues().AddNumber(99);
    fTable.GetVariable(2).GetMissingValues().SetRange(900, 1000);
  }

  static void AddAll(UAVarValidSpecs& specs) {
    std::vector<int> positions;
    specs.AddVariables({0, 1, 2}, {true, true, false}, positions);
    EXPECT_EQ(positions, (std::vector<int>{0, 1, 2}));
  }

  MCHost::MemoryTable fTable;
  TestSession fSession;
  MCHost::SessionScope fScope;
};

TEST_F(CaseTest, CodesByFirstAppearanceAndMarksEveryKindOfMissing) {
  for (const bool exclude : {true, false}) {
    UAVarValidSpecs specs(true, exclude, true);
    AddAll(specs);
    ProcedureDataSource source;
    UAInputAdapter adapter(&specs, source);
    UAProcDataSourceIter stream(&adapter, true);
    const double last = exclude ? kMissing : 2;
    EXPECT_EQ(ReadRecords(stream),
              (Rows{{0, 0, 1.5},
                    {1, 1, kMissing},
                    {kMissing, 2, -4},
                    {0, 1, kMissing},
                    {last, exclude ? kMissing : 3, exclude ? kMissing : 999}}));
    EXPECT_EQ(adapter.GetCatVarSize(0), exclude ? 2 : 3);
    EXPECT_EQ(adapter.GetCatVarSize(1), exclude ? 3 : 4);
    EXPECT_EQ(adapter.GetContMinValue(2), -4);
    EXPECT_EQ(adapter.GetContMaxValue(2), exclude ? 1.5 : 999);
    EXPECT_EQ(adapter.GetRecordCount(), 5);
    EXPECT_EQ(stream.GetFailReason(), stream.kNoRecords);
  }
}

TEST_F(CaseTest, ReordersByValueAndDecodesTheNewNumbering) {
  UAVarValidSpecs specs(true, true, true);
  AddAll(specs);
  ProcedureDataSource source;
  UAInputAdapter adapter(&specs, source);
  UAProcDataSourceIter stream(&adapter, true);
  ReadRecords(stream);
  adapter.ReorderCategories(0, true);
  adapter.ReorderCategories(1, true);
  ASSERT_TRUE(stream.NewPass());
  EXPECT_EQ(adapter.GetDataPassCount(), 1);
  const Rows rows = ReadRecords(stream);
  EXPECT_EQ(rows[0], (std::vector<double>{1, 2, 1.5}));
  EXPECT_EQ(rows[2], (std::vector<double>{kMissing, 1, -4}));
  int var = 0;
  EXPECT_EQ(adapter.DecodeCatValue(0, 1, var), KOVA_Value(std::string("b")));
  EXPECT_EQ(adapter.DecodeCatValue(1, 2, var), KOVA_Value(7.0));
  EXPECT_EQ(var, 1);
  adapter.DecodeCatValue(1, 3, var);
  EXPECT_EQ(var, -1);
  EXPECT_EQ(adapter.GetRecordCount(), 5) << "later passes are not counted";
}

TEST_F(CaseTest, ObservesCasesThatAStreamSkips) {
  UAVarValidSpecs specs(true, true, true);
  AddAll(specs);
  ProcedureDataSource source;
  UAInputAdapter adapter(&specs, source);
  SkippingStream stream(&adapter, 2);
  EXPECT_EQ(ReadRecords(stream).size(), 2u);
  EXPECT_EQ(stream.fSeen, (std::vector<std::int64_t>{1, 2, 3, 4, 5}));
  EXPECT_EQ(adapter.GetCatVarSize(1), 3);
  EXPECT_EQ(adapter.GetContMinValue(2), -4);
  EXPECT_EQ(adapter.GetRecordCount(), 2);
  SkippingStream none(&adapter, 9);
  EXPECT_EQ(none.GetState(), 1);
}

TEST_F(CaseTest, PassesOverCasesThatNobodyLooksAt) {
  UAVarValidSpecs specs(true, true, true);
  AddAll(specs);
  ProcedureDataSource source;
  UAInputAdapter adapter(&specs, source);
  SkippingStream stream(&adapter, 2);
  std::vector<std::int64_t> stops;
  for (; stream.HasMore(); stops.push_back(adapter.GetCaseNumber())) stream.SkipBlock();
  EXPECT_EQ(stops, (std::vector<std::int64_t>{2, 4}));
  EXPECT_EQ(stream.fSeen.size(), 5u);
  EXPECT_EQ(adapter.GetCatVarSize(1), 3) << "observed like any other cases";
  EXPECT_EQ(adapter.GetRecordCount(), 2);
  ASSERT_TRUE(stream.NewPass());
  EXPECT_EQ(ReadBlocks(stream, 9), (Rows{{1, 1, kMissing}, {0, 1, kMissing}}));
}

// The table's user-missing values, categories given twice, unseen or to be missing, and the sign of
// zero.
TEST_F(CaseTest, FixedCategoriesAloneAreCategories) {
  UAVarValidSpecs specs(true, false, true);
  AddAll(specs);
  ProcedureDataSource source;
  UAInputAdapter adapter(&specs, source);
  const auto text = [](const char* value) { return KOVA_Value(std::string(value)); };
  adapter.FixCategories(0, {text("?"), text("c"), text("b"), text("?")});
  KOVA_MissingValues sevens;
  sevens.SetRange(7, 7.5);
  adapter.FixCategories(
      1, {KOVA_Value(99.0), KOVA_Value(0.0), KOVA_Value(kMissing), KOVA_Value(2.5)}, sevens);
  UAProcDataSourceIter stream(&adapter, true);
  EXPECT_EQ(ReadRecords(stream), (Rows{{2, kMissing, 1.5},
                                       {UACategories::kUnseen, 1, kMissing},
                                       {kMissing, 3, -4},
                                       {2, 1, kMissing},
                                       {0, 0, 999}}));
  EXPECT_EQ(adapter.GetCatVarSize(0), 4);
}

TEST_F(CaseTest, DeliversOnlyCompleteCasesWhenMissingIsNotWanted) {
  UAVarValidSpecs specs(false, true, true);
  AddAll(specs);
  ProcedureDataSource source;
  UAInputAdapter adapter(&specs, source);
  UAProcDataSourceIter stream(&adapter, true);
  EXPECT_EQ(ReadRecords(stream), (Rows{{0, 0, 1.5}}));
}

TEST_F(CaseTest, WeightKeepsItsNumberBesideItsCategory) {
  fTable.SetWeightVarIndex(1);
  UAVarValidSpecs specs(true, true, true);
  AddAll(specs);
  EXPECT_EQ(specs.SetWeightVar(), 3);
  EXPECT_EQ(specs.SetWeightVar(), 3);
  EXPECT_EQ(specs.GetRecVarIndex(1), 1);
  ProcedureDataSource source;
  UAInputAdapter adapter(&specs, source);
  UAProcDataSourceIter stream(&adapter, true);
  const Rows rows = ReadRecords(stream);
  EXPECT_EQ(rows[0], (std::vector<double>{0, 0, 1.5, 7}));
  EXPECT_EQ(rows[2][3], 2.5);
}

TEST_F(CaseTest, AlternatingStreamsKeepTheirPlaces) {
  UAVarValidSpecs specs(true, true, true);
  AddAll(specs);
  ProcedureDataSource source;
  UAInputAdapter adapter(&specs, source);
  SkippingStream odd(&adapter, 2, 1);
  SkippingStream even(&adapter, 2, 0);
  Rows rows;
  for (odd.Start(); odd.HasMore();) {
    rows.push_back(odd.NextRecord()->GetAll());
    if (even.HasMore()) rows.push_back(even.NextRecord()->GetAll());
  }
  UAProcDataSourceIter all(&adapter, true);
  EXPECT_EQ(rows, ReadRecords(all));
  EXPECT_EQ(odd.fPasses, std::vector<int>(5, 0));
  EXPECT_EQ(even.fPasses, std::vector<int>(even.fSeen.size(), 1));
  EXPECT_EQ(adapter.GetRecordCount(), 3);
}

TEST_F(CaseTest, AReadErrorEndsThePassWithItsText) {
  FragileTable table(fTable);
  table.fFailAtBatch = 1;
  TestSession session(table);
  const MCHost::SessionScope scope(session);
  UAVarValidSpecs specs(true, true, true);
  AddAll(specs);
  ProcedureDataSource source;
  UAInputAdapter adapter(&specs, source);
  UAProcDataSourceIter stream(&adapter, true);
  EXPECT_EQ(stream.GetFailReason(), stream.kSuccess);
  EXPECT_EQ(ReadBlocks(stream, 100).size(), 2u);
  EXPECT_EQ(stream.GetFailReason(), stream.kReadError);
  EXPECT_EQ(stream.GetFailText(), "a.csv, line 9: bad byte");
  EXPECT_EQ(stream.NextRecord(), nullptr);
  EXPECT_FALSE(stream.NewPass());
}

TEST_F(CaseTest, ExtraColumnsAreReadAndNewValuesWritten) {
  UAVarValidSpecs specs(true, true, true);
  specs.AddVariable(0, true);
  ProcedureDataSource source;
  UAInputAdapter adapter(&specs, source, {1});
  const int number = source.MakeVariable("new", 0);
  const int text = source.MakeVariable("text", 4);
  UAProcDataSourceIter stream(&adapter, false);
  EXPECT_TRUE(stream.NewPass(true));
  EXPECT_FALSE(stream.GetProcDS()->SetColumnValue(number, 1)) << "not the last pass";
  stream.SetLastPass();
  for (int i = 0; stream.HasMore(); ++i, stream.NextRecord()) {
    ASSERT_EQ(stream.Current()->Size(), 1u);
    if (i == 1) continue;
    const double value = stream.GetProcDS()->GetNumericValue(1);
    EXPECT_TRUE(stream.GetProcDS()->SetColumnValue(number, value + 1));
    EXPECT_TRUE(stream.GetProcDS()->SetColumnValue(text, "ab\xC3\xA9\xC3\xA9", 5));
  }
  std::vector<double> numbers;
  auto scan = fTable.Scan({number, text});
  while (const MCHost::TableBatch* batch = scan->Next()) {
    for (std::size_t i = 0; i < batch->fNCases; ++i) {
      numbers.push_back(batch->fColumns[0].fpNumbers[i]);
      const std::int32_t code = batch->fColumns[1].fpCodes[i];
      EXPECT_EQ(code < 0 ? "" : batch->fColumns[1].fpDictionary->At(code),
                numbers.size() == 2 ? "" : "ab\xC3\xA9");
    }
  }
  EXPECT_EQ(numbers, (std::vector<double>{8, kMissing, 3.5, 1, 100}));
}

// Blocks of all lengths over chunks of two cases, with cases skipped and cases without a winner.
TEST_F(CaseTest, PredictionsStandAtTheirCases) {
  UAVarValidSpecs specs(true, true, true);
  specs.AddVariable(2, false);
  ProcedureDataSource source;
  UAInputAdapter adapter(&specs, source);
  const int number = source.MakeVariable("number", 0);
  const int text = source.MakeVariable("text", 2);
  const int probability = source.MakeVariable("probability", 0);
  const UAPredictionWriter numbers(number, {KOVA_Value(7.0), KOVA_Value(8.0)}, 0, {probability});
  const UAPredictionWriter texts(
      text, {KOVA_Value(std::string("no")), KOVA_Value(std::string("y\xC3\xA9s"))}, 2, {});
  SkippingStream stream(&adapter, 0);
  ASSERT_TRUE(stream.NewPass());
  const auto store = [&](std::vector<std::int32_t> winners, double first) {
    ASSERT_EQ(stream.NextBlock(winners.size()).Cases(), winners.size());
    const std::vector<double> probabilities = {first, 1 - first, first + 0.5, 0.5 - first};
    for (const UAPredictionWriter* writer : {&numbers, &texts}) {
      writer->Store(*stream.GetProcDS(), stream.GetBlockPlaces(), winners,
                    {probabilities.begin(), probabilities.begin() + 2 * winners.size()});
    }
  };
  stream.SetLastPass();
  store({1}, 0.125);
  store({-1}, 0.25);
  store({0, 1}, 0.375);
  store({1}, 0.0625);
  EXPECT_FALSE(stream.HasMore());
  auto scan = fTable.Scan({number, text, probability});
  std::vector<double> values;
  std::string shown;
  while (const MCHost::TableBatch* batch = scan->Next()) {
    for (std::size_t i = 0; i < batch->fNCases; ++i) {
      values.push_back(batch->fColumns[0].fpNumbers[i]);
      values.push_back(batch->fColumns[2].fpNumbers[i]);
      const std::int32_t code = batch->fColumns[1].fpCodes[i];
      shown += (code < 0 ? "." : batch->fColumns[1].fpDictionary->At(code)) + ' ';
    }
  }
  EXPECT_EQ(values,
            (std::vector<double>{8, 0.125, kMissing, kMissing, 7, 0.375, 8, 0.875, 8, 0.0625}));
  EXPECT_EQ(shown, "y . no y y ") << "cut at the end of a character";
}

TEST_F(CaseTest, AWriteErrorIsAReadErrorOfTheStream) {
  FragileTable table(fTable);
  TestSession session(table);
  const MCHost::SessionScope scope(session);
  UAVarValidSpecs specs(true, true, true);
  AddAll(specs);
  ProcedureDataSource source;
  UAInputAdapter adapter(&specs, source);
  {
    UAProcDataSourceIter stream(&adapter, true);
    stream.SetLastPass();
    EXPECT_TRUE(stream.GetProcDS()->SetColumnValue(2, 1));
    EXPECT_TRUE(stream.GetProcDS()->SetColumnValue(1, "x", 1));
    ReadRecords(stream);
    EXPECT_EQ(stream.GetFailReason(), stream.kReadError);
    EXPECT_EQ(stream.GetFailText(), "scores: disk full");
  }
  EXPECT_FALSE(table.fbTookTexts) << "nothing is stored once that has failed";
}

TEST_F(CaseTest, ValueReaderFollowsTheMissingRule) {
  UAVarValidSpecs specs(true, true, true);
  AddAll(specs);
  ProcedureDataSource source;
  UAInputAdapter adapter(&specs, source);
  const UACaseValueReader strict(adapter.GetDSIterator(), 0, false);
  const UACaseValueReader lenient(adapter.GetDSIterator(), 0, true);
  const UACaseValueReader number(adapter.GetDSIterator(), 2, true);
  UAProcDataSourceIter stream(&adapter, true);
  std::string seen;
  for (; stream.HasMore(); stream.NextRecord()) {
    seen += strict.GetValue().IsMissing() ? 'S' : '-';
    seen += lenient.GetValue().IsMissing() ? 'L' : '-';
    seen += number.IsSysmis() ? 'N' : '-';
    EXPECT_FALSE(lenient.IsSysmis());
  }
  EXPECT_EQ(seen, "-----NSL---NS--");
}

// Random tables: whatever the batches, the block length and the cases skipped, blocks hold exactly
// the records.
TEST(CaseStreams, BlocksEqualRecords) {
  std::mt19937 draw(1);
  for (const std::size_t batch : {1u, 64u, 4096u}) {
    MCHost::MemoryTable table(batch);
    std::vector<double> numbers(700), codes(700);
    std::vector<std::optional<std::string>> strings(700);
    for (std::size_t i = 0; i < 700; ++i) {
      numbers[i] = draw() % 9 == 0 ? casetests::kNaN : static_cast<double>(draw()) / 1e6;
      codes[i] = static_cast<double>(draw() % 50) * 60 - 600;
      if (draw() % 7 != 0) strings[i] = std::to_string(draw() % 20);
    }
    table.AddNumbers("x", numbers);
    table.AddNumbers("n", codes);
    table.AddStrings("s", strings);
    TestSession session(table);
    const MCHost::SessionScope scope(session);
    ProcedureDataSource source;
    for (const int every : {0, 2, 5, 701}) {
      for (const std::size_t maxCases : {1u, 37u, 4096u}) {
        UAVarValidSpecs specs(true, true, true);
        for (const int var : {0, 1, 2}) specs.AddVariable(var, var > 0);
        UAInputAdapter adapter(&specs, source);
        SkippingStream stream(&adapter, every);
        const Rows records = ReadRecords(stream);
        ASSERT_TRUE(stream.NewPass());
        EXPECT_EQ(ReadBlocks(stream, maxCases), records);
        EXPECT_EQ(adapter.GetRecordCount(), static_cast<int>(records.size()));
        EXPECT_EQ(adapter.GetCatVarSize(1), 50);
      }
    }
  }
}

TEST_F(CaseTest, ShowsValuesInTheirPrintFormat) {
  KOVA_Variable number("x", 0);
  const auto show = [&](double value) {
    return UAVarValidSpecs::ConvertObsToString(KOVA_Value(value), number);
  };
  EXPECT_EQ(show(1), "1.00");
  EXPECT_EQ(show(-0.0), "0.00");
  EXPECT_EQ(show(1234567.25), "1234567");
  EXPECT_EQ(show(1e300), "1.0E+300");
  EXPECT_EQ(show(kMissing), ".");
  EXPECT_EQ(UAVarValidSpecs::ConvertObsToString(KOVA_Value(std::string(" a ")), number), " a ");
}

TEST_F(CaseTest, StopsAtTheLimitOrAtTheUsersWish) {
  double now = 5.0;
  MCStopProcessor stop(1.0, [&now] { return now; });
  for (int i = 0; i < 1000; ++i) EXPECT_FALSE(stop.IsCancel());
  now = 6.0;
  int calls = 1;
  while (!stop.IsCancel()) ++calls;
  EXPECT_LE(calls, 64);
  EXPECT_EQ(stop.GetCause(), MCStopProcessor::kTimeLimit);
  MCStopProcessor unlimited(0.0, [&now] { return now; });
  now = 1e9;
  EXPECT_FALSE(unlimited.IsCancel());
  fSession.fbCancelled = true;
  EXPECT_TRUE(unlimited.IsCancel());
  EXPECT_EQ(unlimited.GetCause(), MCStopProcessor::kUser);
  EXPECT_TRUE(stop.IsCancel());
  EXPECT_EQ(stop.GetCause(), MCStopProcessor::kTimeLimit) << "the first cause is kept";
}

// First 53-bit draws of the generator with its classic seed, as numpy.random.RandomState(5489)
// gives them (15 digits).
TEST(UniformRandom, DrawsTheReferenceSequence) {
  UAUniformRandom random;
  EXPECT_DOUBLE_EQ(random.GetRandom(), 0.814723686393179);
  EXPECT_DOUBLE_EQ(random.GetRandom(), 0.905791937075619);
}

}  // namespace
