#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "naivebayes/store/BinaryRecordIterator.h"
#include "naivebayes/store/NBColumnView.h"
#include "naivebayes/store/NBDataPreparator.h"
#include "naivebayes/store/NBInternalAdapter.h"
#include "naivebayes/store/NBMemoryIter.h"
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

TEST_F(Preparation, RecordsBlocksAndBothStoresAgree) {
  auto data = RandomData::Make(500, 11);
  data[20][0] = data[20][1] = 1;
  data[20][RandomData::kFirst + 1] = 3;  // one code too high: a warning, and missing
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
  for (bool inMemory : {true, false}) {
    TestRecords source(data);
    std::unique_ptr<MCCommon::MultiPassRecordIter> store;
    int nStored = 0;
    NBExcluded counted;
    const MCNaive::MCStatus status = fPreparator.ProcessSource(
        source, 1000, inMemory, store, nStored, counted, testing::TempDir() + "prep");
    EXPECT_TRUE(status.IsWarning());
    EXPECT_EQ(status.GetErrorCode(), MCNaive::kCodeOutOfRange);
    EXPECT_EQ(status.GetDiscreteDatum(0), 20);
    EXPECT_EQ(nStored, static_cast<int>(expected.size()));
    EXPECT_EQ(counted.fNRecords, excluded.fNRecords);
    EXPECT_EQ(counted.fWeight, excluded.fWeight);
    EXPECT_EQ(ReadAll(*store), expected);
    ASSERT_TRUE(store->NewPass());
    EXPECT_EQ(ReadAll(*store), expected);
    // Without the third input.
    ASSERT_TRUE(store->NewPass());
    MCNaive::NBColumnView view(*store, {0, 1, 2, 3, 5, 6, 7});
    EXPECT_EQ((*view.NextRecord())[4], expected[0][5]);
    const MCCommon::RecordBlock& block = view.NextBlock(10);
    EXPECT_EQ(block.Columns(), 7u);
    EXPECT_EQ(block.Column(6)[2], expected[3][7]);
    if (inMemory) continue;
    const auto& file = dynamic_cast<const MCNaive::BinaryRecordIterator&>(*store);
    EXPECT_EQ(file.GetFileName().rfind(testing::TempDir() + "prep_nb", 0), 0u);
    EXPECT_EQ(file.GetFileName().substr(file.GetFileName().size() - 4), ".tmp");
    EXPECT_FALSE(std::filesystem::exists(file.GetFileName())) << "nameless while it is used";
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
  EXPECT_EQ(store.FillBuffer(source, 100), 2);
  EXPECT_FALSE(store.AddRecord(records[0]));
  EXPECT_FALSE(store.AddBlock(source.NextBlock(1)));
  EXPECT_EQ(store.GetCount(), 6);
  EXPECT_EQ(ReadAll(store).back(), std::vector<double>{5});
  EXPECT_FALSE(store.HasMore());
}

}  // namespace
