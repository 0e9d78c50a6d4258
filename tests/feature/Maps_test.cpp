// The maps of the accumulators: counting in any order of keys, with looks at the entries in
// between, is what an ordered map would hold; and very many categories are counted in time.

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <utility>

#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/accumulators/FSMapIStat.h"
#include "feature/accumulators/FSMaps.h"
#include "tests/feature/Tables.h"

namespace {

template <class Map, class Expected>
void ExpectHolds(const Map& map, const Expected& expected) {
  ASSERT_EQ(map.Size(), expected.size());
  std::size_t position = 0;
  for (const auto& [key, value] : expected) {
    EXPECT_EQ(map[position], (typename Map::Entry(key, value)));
    auto found = typename Map::Entry().second;
    EXPECT_TRUE(map.GetValue(key, found));
    EXPECT_EQ(found, value);
    ++position;
  }
}

// keys(n) draws one of n keys.
template <class Map, class Keys>
void CountAtRandom(Keys keys) {
  std::mt19937 random(17);
  Map map;
  std::map<decltype(keys(random)), double> expected;
  for (int i = 0; i < 3000; ++i) {
    const auto key = keys(random);
    const bool isThere = expected.count(key) > 0;
    expected[key] += 0.5;
    EXPECT_EQ(map.IncrementByFreq(key, 0.5), isThere);
    if (random() % 200 == 0) ExpectHolds(map, expected);
  }
  ExpectHolds(map, expected);
  const Map copy = map;
  map.Clear();
  ExpectHolds(copy, expected);
  EXPECT_FALSE(map.IncrementByFreq(expected.begin()->first, 2.0));
  EXPECT_EQ(map.Size(), 1u);
}

TEST(Maps, CountInAnyOrderAndAreReadInOrder) {
  CountAtRandom<FSMapICnt>([](auto& random) { return static_cast<int>(random() % 700) - 350; });
  CountAtRandom<FSMapICnt>([](auto& random) { return static_cast<int>(random() << 20); });
  CountAtRandom<FSMapPiCnt>([](auto& random) {
    return std::pair(static_cast<int>(random() % 40) - 20, static_cast<int>(random() % 30) << 24);
  });
}

TEST(Maps, MillionsOfCategoriesAreCountedInTime) {
  constexpr int kCases = 300000;
  Table table(3);
  for (int i = 0; i < kCases; ++i) {
    const double code = static_cast<double>(i * 7919LL % kCases);  // each once, in no order
    table[0].push_back(i % 4);
    table[1].push_back(code);
    table[2].push_back(code);
  }
  for (const bool catTarget : {true, false}) {
    FSSettings settings({true, false}, catTarget);
    FSFactory factory;
    const auto component = factory.CreateFSAlgorithm(&settings);
    BlocksOf source(table, 64);
    ASSERT_TRUE(component->AccumulateAndRank(source, -1, false, 0).IsOK());
    double value = 0.0, statistic = 0.0, df = 0.0, df2 = 0.0;
    const int criterion = catTarget ? MCFSCommon::kPearson : MCFSCommon::kFStat;
    EXPECT_TRUE(component->GetPredictorStats(criterion, 0, value, statistic, df, df2));
    EXPECT_EQ(df, catTarget ? 3.0 * (kCases - 1) : kCases - 1.0);
  }
}

}  // namespace
