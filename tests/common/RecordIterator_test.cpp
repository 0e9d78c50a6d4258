#include "common/RecordIterator.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "common/Cancel.h"
#include "common/MCAssert.h"
#include "common/MissingValue.h"

namespace MCCommon {
namespace {

// Records (i, 10 * i), i = 0 .. n-1, given one by one.
class CountingIterator : public RecordIterator {
 public:
  explicit CountingIterator(int n) : fSize(n) {}
  bool HasMore() override { return fNext < fSize; }
  const Record* NextRecord() override {
    if (!HasMore()) return nullptr;
    fCurrent = Record({1.0 * fNext, 10.0 * fNext});
    ++fNext;
    return &fCurrent;
  }
  FailReason GetFailReason() const override { return fNext < fSize ? kSuccess : kNoRecords; }

 private:
  int fSize;
  int fNext = 0;
  Record fCurrent;
};

TEST(RecordIterator, DefaultBlocksHoldTheRecordsInOrderAndNoMoreThanAskedFor) {
  CountingIterator source(10);
  std::vector<std::size_t> sizes;
  int next = 0;
  for (const RecordBlock* block = &source.NextBlock(4); block->Cases() > 0;
       block = &source.NextBlock(4)) {
    ASSERT_EQ(block->Columns(), 2u);
    sizes.push_back(block->Cases());
    for (std::size_t i = 0; i < block->Cases(); ++i, ++next) {
      EXPECT_EQ(block->Column(0)[i], next);
      EXPECT_EQ(block->Column(1)[i], 10 * next);
    }
  }
  EXPECT_EQ(sizes, (std::vector<std::size_t>{4, 4, 2}));
  EXPECT_EQ(source.NextBlock(4).Cases(), 0u);
}

TEST(RecordIterator, RecordsAndBlocksContinueEachOther) {
  CountingIterator source(5);
  EXPECT_EQ((*source.NextRecord())[0], 0);
  EXPECT_EQ(source.NextBlock(2).Column(0)[1], 2);
  EXPECT_EQ((*source.NextRecord())[1], 30);
  EXPECT_EQ(source.NextBlock(100).Cases(), 1u);
}

TEST(MissingValue, CoversTheMarkerNaNAndInfinitiesOnly) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (double missing :
       {MCMV::gMissingValue, std::numeric_limits<double>::quiet_NaN(), infinity, -infinity}) {
    EXPECT_TRUE(MCMV::IsMissing(missing)) << missing;
  }
  for (double valid : {0.0, -1.0, std::numeric_limits<double>::max(), -1.7976931348623155e308,
                       std::numeric_limits<double>::denorm_min()}) {
    EXPECT_FALSE(MCMV::IsMissing(valid)) << valid;
  }
}

class Probe : public MCQueryCancel {
 public:
  bool IsCancel() override { return fAnswer; }
  bool fAnswer = false;
};

TEST(CancelInfo, OnceCancelledStaysCancelled) {
  Probe probe;
  CancelInfo cancel(&probe);
  EXPECT_FALSE(cancel.IsCancel());
  probe.fAnswer = true;
  EXPECT_TRUE(cancel.IsCancel());
  probe.fAnswer = false;
  EXPECT_TRUE(cancel.IsCancel());
}

TEST(MCAssertDeathTest, BrokenInvariantNamesItsSourceAndEndsWithCode70) {
  Assert(true, "holds", "nowhere");
  EXPECT_EXIT(Assert(false, "nPreds == nFlags", "backend/predselect/PRSValidSpecs"),
              testing::ExitedWithCode(70), "backend/predselect/PRSValidSpecs.*nPreds == nFlags");
}

}  // namespace
}  // namespace MCCommon
