#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "naivebayes/store/BinaryRecordIterator.h"
#include "naivebayes/store/NBCodeBuffer.h"
#include "naivebayes/store/NBDataPreparator.h"
#include "naivebayes/store/NBInternalAdapter.h"
#include "naivebayes/store/NBMemoryIter.h"
#include "naivebayes/store/NBMemoryStore.h"
#include "naivebayes/store/NBRecordStore.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using MCCommon::Record;
using nbtest::RandomData;
using nbtest::TestRecords;

class Preparation : public testing::Test {
 protected:
  NBVarList fList = RandomData::MakeList();
  NBCancelInfo fCancel;
  NBDataPreparator fPreparator{fList, true, 1000, fCancel};
};

std::vector<std::vector<double>> ReadAll(MCCommon::RecordIterator& records) {
  std::vector<std::vector<double>> all;
  while (const Record* record = records.NextRecord()) all.push_back(record->GetAll());
  return all;
}

// Target, weight and codes of all cases.
std::vector<std::vector<double>> ReadCodes(NBCodeSource& source) {
  std::vector<std::vector<double>> all;
  while (const NBCodeBlock* codes = source.NextCodes()) {
    EXPECT_LE(codes->Cases(), MCCommon::RecordBlock::kMaxCases);
    for (std::size_t i = 0; i < codes->Cases(); ++i) {
      all.push_back({codes->Targets()[i] * 1.0, codes->Weights()[i]});
      for (int j = 0; j < codes->Inputs(); ++j) all.back().push_back(codes->Code(j, i));
    }
  }
  return all;
}

class PreparationOf : public Preparation, public testing::WithParamInterface<std::size_t> {};

TEST_P(PreparationOf, RecordsBlocksAndBothStoresAgree) {
  auto data = RandomData::Make(500, 11);
  Record& high = data[GetParam()];
  high[0] = high[1] = 1;
  high[RandomData::kFirst + 1] = 3;  // one code too high: a warning, and missing
  std::vector<std::vector<double>> expected;
  NBExcluded excluded;
  for (const Record& record : data) {
    Record processed;
    double weight = 0;
    const MCNaive::MCStatus status = fPreparator.ProcessRecord(record, processed, weight);
    if (!status.IsError()) {
      expected.push_back(processed.GetAll());
      continue;
    }
    ++excluded.fNRecords;
    EXPECT_EQ(status.GetErrorCode(),
              record[1] > 0 ? MCNaive::kTargetMissing : MCNaive::kWeightMissing);
    if (record[1] > 0) excluded.fWeight += weight;
  }
  TestRecords adapted(data);
  NBInternalAdapter adapter(adapted, 1000, fPreparator);
  EXPECT_EQ(ReadAll(adapter), expected);
  for (bool inMemory : {true, false}) {
    TestRecords source(data);
    NBStored stored;
    const MCNaive::MCStatus status =
        fPreparator.ProcessSource(source, {1000, inMemory, testing::TempDir() + "prep"}, stored);
    EXPECT_TRUE(status.IsWarning());
    EXPECT_EQ(status.GetErrorCode(), MCNaive::kCodeOutOfRange);
    EXPECT_EQ(status.GetDiscreteDatum(0), static_cast<std::int64_t>(GetParam()));
    EXPECT_EQ(stored.fNRecords, static_cast<int>(expected.size()));
    EXPECT_EQ(stored.fExcluded.fNRecords, excluded.fNRecords);
    EXPECT_EQ(stored.fExcluded.fWeight, excluded.fWeight);
    EXPECT_EQ(ReadCodes(*stored.fpStore), expected);
    stored.fpStore->KeepInputs({0, 1, 3, 4, 5});
    ASSERT_TRUE(stored.fpStore->NewPass());
    auto without = expected;
    for (auto& record : without) record.erase(record.begin() + 4);
    EXPECT_EQ(ReadCodes(*stored.fpStore), without);
    EXPECT_FALSE(stored.fpStore->HasFailed());
  }
}

INSTANTIATE_TEST_SUITE_P(ACodeTooHighInRecord, PreparationOf, testing::Values(0, 20));

TEST(NBMemoryStore, KeepsCodesOfAnyWidthInBlocks) {
  // The highest codes of each width, the next one, and missing values.
  const std::vector<int> categories = {128, 129, 32768, 32769};
  constexpr int kCases = 5000;
  std::vector<std::vector<double>> expected;
  NBMemoryStore store(categories, false);
  for (int i = 0; i < kCases; ++i) {
    NBCodeBuffer one;
    one.Resize(categories.size(), 1);
    one.fvTargets[0] = i % 7;
    expected.push_back({one.fvTargets[0] * 1.0, 1.0});
    for (std::size_t j = 0; j < categories.size(); ++j) {
      one.fvCodes[j][0] = i % 3 == 0 ? -1 : categories[j] - 1 - i % 5;
      expected.back().push_back(one.fvCodes[j][0]);
    }
    store.Add(one.View());
  }
  for (int pass = 0; pass < 2; ++pass) {
    EXPECT_EQ(ReadCodes(store), expected);
    ASSERT_TRUE(store.NewPass());
  }
}

TEST_F(Preparation, ALimitCountsAcceptedRecordsAndLeavesTheRestInTheSource) {
  const auto data = RandomData::Make(100, 12);
  TestRecords whole(data), parts(data);
  NBInternalAdapter all(whole, -1, fPreparator);
  const auto expected = ReadAll(all);
  EXPECT_EQ(static_cast<int>(expected.size()) + all.GetExcludedCount(), 100);
  std::vector<std::vector<double>> joined;
  int excluded = 0;
  while (parts.HasMore()) {
    NBInternalAdapter part(parts, 7, fPreparator);
    for (auto& record : ReadAll(part)) joined.push_back(record);
    excluded += part.GetExcludedCount();
  }
  EXPECT_EQ(joined, expected);
  EXPECT_EQ(excluded, all.GetExcludedCount());
}

TEST_F(Preparation, AReaderKnowsWhetherItHasReadToTheEnd) {
  using MCCommon::RecordIterator;
  const auto data = RandomData::Make(20, 12);
  TestRecords whole(data), failing(data);
  NBInternalAdapter all(whole, -1, fPreparator);
  EXPECT_NE(all.NextRecord(), nullptr);
  EXPECT_EQ(all.GetFailReason(), RecordIterator::kSuccess);
  ReadAll(all);
  EXPECT_EQ(all.GetFailReason(), RecordIterator::kNoRecords);
  failing.fFailAt = 9;
  NBInternalAdapter part(failing, -1, fPreparator);
  ReadAll(part);
  EXPECT_EQ(part.GetFailReason(), RecordIterator::kReadError);
}

TEST_F(Preparation, WithoutAWeightEachCaseCountsOnce) {
  NBVarList list;
  list.AddCatVar("y", "", 3, INBVariable::kNumericCategorical, INBVariable::kOutput);
  list.AddCatVar("x", "", 4, INBVariable::kNumericCategorical, INBVariable::kInput);
  NBDataPreparator preparator(list, false, 1000, fCancel);
  Record processed(9);
  double weight = 0.0;
  EXPECT_TRUE(
      preparator.ProcessRecord(Record(std::vector<double>{2, 3}), processed, weight).IsOK());
  EXPECT_EQ(processed.GetAll(), (std::vector<double>{2, 3}));
  EXPECT_EQ(weight, 1.0);
  std::vector<std::int32_t> inputs;
  EXPECT_EQ(preparator.ProcessInputs(Record(2), inputs).GetErrorCode(), MCNaive::kWrongRecordSize);
  TestRecords source({Record(std::vector<double>{2, 3})});
  NBInternalAdapter adapter(source, -1, preparator);
  EXPECT_EQ(ReadAll(adapter), (std::vector<std::vector<double>>{{2, 3}}));
}

// Processed records that a caller hands over may hold cases that do not count.
TEST(NBRecordStore, TakesCasesWithATargetAndAWeightAlone) {
  const auto record = [](double target, double weight) {
    return Record(std::vector<double>{target, weight, 1.0});
  };
  TestRecords source({record(0, 2), record(-1, 2), record(1, 0), record(1, -3),
                      record(1, MCMV::gMissingValue), record(1, 0.5)});
  NBRecordStore store(source, 1, true);
  EXPECT_EQ(ReadCodes(store), (std::vector<std::vector<double>>{{0, 2, 1}, {1, 0.5, 1}}));
}

TEST_F(Preparation, ARecordTooShortOrATargetTooHighIsAnError) {
  Record processed;
  double weight;
  EXPECT_EQ(fPreparator.ProcessRecord(Record(3), processed, weight).GetErrorCode(),
            MCNaive::kWrongRecordSize);
  Record high(RandomData::kFirst + RandomData::kInputs);
  high[0] = 5;
  high[1] = 1;
  const MCNaive::MCStatus status = fPreparator.ProcessRecord(high, processed, weight);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), MCNaive::kCodeOutOfRange);
  EXPECT_EQ(status.GetDiscreteDatum(1), 5);
  high[0] = 1;
  for (int j = 0; j < RandomData::kInputs; ++j) {
    high[RandomData::kFirst + j] = j < 5 ? -1 : MCMV::gMissingValue;
  }
  EXPECT_EQ(fPreparator.ProcessRecord(high, processed, weight),
            MCNaive::Warning(MCNaive::kAllInputsMissing));
  EXPECT_EQ(processed.GetAll(), (std::vector<double>{1, 1, -1, -1, -1, -1, -1, -1}));
}

TEST(NBMemoryIter, TakesNoMoreThanItsCapacityOrTheLimit) {
  std::vector<Record> records;
  for (int i = 0; i < 10; ++i) records.push_back(Record(std::vector<double>{1.0 * i}));
  TestRecords source(records);
  MCNaive::NBMemoryIter store(1, 6);
  EXPECT_EQ(store.FillBuffer(source, 4), 4);
  EXPECT_EQ(store.GetFailReason(), MCCommon::RecordIterator::kSuccess);
  EXPECT_EQ(store.FillBuffer(source, 100), 2);
  EXPECT_FALSE(store.AddRecord(records[0]));
  EXPECT_EQ(store.GetCount(), 6);
  EXPECT_EQ(ReadAll(store).back(), std::vector<double>{5});
  EXPECT_FALSE(store.HasMore());
  EXPECT_EQ(store.GetFailReason(), MCCommon::RecordIterator::kNoRecords);
  EXPECT_EQ(MCNaive::NBMemoryIter(1, 6).FillBuffer(source, 100), 4) << "what is left";
}

TEST(BinaryRecordIterator, TellsTheEndFromABrokenFile) {
  MCNaive::BinaryRecordIterator null(nullptr, 2, "none");
  EXPECT_EQ(null.GetFailReason(), MCCommon::RecordIterator::kReadError);
  for (std::size_t values : {4u, 5u}) {
    std::FILE* file = std::tmpfile();
    const double written[] = {1, 2, 3, 4, 5};
    std::fwrite(written, sizeof(double), values, file);
    MCNaive::BinaryRecordIterator records(file, 2, "name");
    for (int pass = 0; pass < 2; ++pass) {
      ASSERT_TRUE(records.HasMore());
      EXPECT_EQ((*records.NextRecord())[1], 2);
      EXPECT_EQ((*records.NextRecord())[0], 3);
      EXPECT_EQ(records.NextRecord(), nullptr);
      EXPECT_EQ(records.GetFailReason(), values == 4 ? MCCommon::RecordIterator::kNoRecords
                                                     : MCCommon::RecordIterator::kReadError);
      EXPECT_TRUE(records.NewPass());
    }
  }
}

}  // namespace
