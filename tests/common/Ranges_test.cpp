// Ranges of parts against those of all their cells, found in the plainest way, and whatever keeps
// parts from being those of one table.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>

#include "common/parts/TableRanges.h"
#include "common/state/StateBytes.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

using Cells = std::vector<double>;
constexpr double kMissing = MCMV::gMissingValue;
constexpr double kUserMissing = 7;
enum Level { kNominal = 1, kScale = 3 };
enum class Kind { kNumbers, kFoundLevel, kTexts };

std::string TextOf(double value) { return "t" + std::to_string(static_cast<int>(value)); }

std::int64_t PlaceOf(std::size_t part, std::size_t place) {
  return static_cast<std::int64_t>(part << ColumnRange::kPartShift | place);
}

void Widen(NumberRange& range, double value) {
  range.fLow = range.fLow == kMissing ? value : std::min(range.fLow, value);
  range.fHigh = range.fHigh == kMissing ? value : std::max(range.fHigh, value);
}

// What is known of all these parts, of which the first has that number. Nothing is listed of a
// scale column; one is scale with 24 distinct valid numbers where nobody has said what it is.
ColumnRange RangeOf(const std::vector<Cells>& parts, Kind kind, std::size_t number = 0) {
  ColumnRange range;
  ColumnDictionary& said = range.fDictionary;
  said.fName = "x";
  said.fLabel = "label";
  said.fType = kind == Kind::kTexts ? 1 : 0;
  said.fFormats = {5, 8, 2, 5, 8, 2};
  said.fLevel = kNominal;
  said.fbLevelFound = kind == Kind::kFoundLevel;
  said.fMissing = {kUserMissing};
  Cells distinct;
  for (const Cells& cells : parts) {
    Cells ofPart;
    for (const double value : cells) {
      if (value == kMissing) continue;
      ++range.fNValues;
      if (std::ranges::count(ofPart, value) == 0) ofPart.push_back(value);
      if (kind == Kind::kTexts) {
        said.fType = std::max(said.fType, static_cast<int>(TextOf(value).size()));
        continue;
      }
      Widen(range.fAll, value);
      if (value != kUserMissing) Widen(range.fValid, value);
    }
    for (std::size_t place = 0; place < ofPart.size(); ++place) {
      if (std::ranges::count(distinct, ofPart[place]) > 0) continue;
      distinct.push_back(ofPart[place]);
      range.fFirst.push_back(PlaceOf(number, place));
    }
    ++number;
  }
  const auto nMissing = static_cast<std::size_t>(std::ranges::count(distinct, kUserMissing));
  if (said.fbLevelFound && distinct.size() - nMissing >= 24) {
    said.fLevel = kScale;
    range.Unlist();
  } else if (kind == Kind::kTexts) {
    for (const double value : distinct) range.fTexts.push_back(TextOf(value));
  } else {
    range.fNumbers = distinct;
  }
  return range;
}

TEST(Ranges, OfPartsInAnyOrderAreThoseOfAllCells) {
  Cells many(22), more;
  std::iota(many.begin(), many.end(), 100);
  more = {121, 122, kUserMissing};
  const std::vector<Cells> few = {{3, 1, kMissing, 3}, {},          {-2},  {1, kUserMissing, 9, 3},
                                  {kMissing},          {9, 12, -2}, {3, 1}};
  std::vector<Cells> fewer = {many, more, {100}};
  std::vector<Cells> enough = {many, {121}, {kUserMissing, 122}, {123}};
  for (const Kind kind : {Kind::kNumbers, Kind::kFoundLevel, Kind::kTexts}) {
    for (const std::vector<Cells>& cells : {few, fewer, enough}) {
      const std::string expected = StateBytes::Of(RangeOf(cells, kind));
      std::vector<std::size_t> order(cells.size());
      for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
      do {
        ColumnRange merged = RangeOf({cells[order[0]]}, kind, order[0]);
        for (std::size_t i = 1; i < order.size(); ++i) {
          ASSERT_EQ(merged.Merge(RangeOf({cells[order[i]]}, kind, order[i])), "");
        }
        ASSERT_TRUE(StateBytes::Of(merged) == expected) << testing::PrintToString(order);
      } while (std::ranges::next_permutation(order).found);
    }
  }
}

TEST(Ranges, ListAMillionCategoriesAndNoMore) {
  for (const std::size_t n : {ColumnRange::kMostCategories, ColumnRange::kMostCategories + 1}) {
    ColumnRange range = RangeOf({}, Kind::kNumbers);
    range.fNValues = static_cast<std::int64_t>(n);
    range.fNumbers.resize(n);
    range.fFirst.resize(n);
    std::iota(range.fNumbers.begin(), range.fNumbers.end(), 0);
    std::iota(range.fFirst.begin(), range.fFirst.end(), 0);
    const ColumnRange same = range;
    ASSERT_EQ(range.Merge(same), "");
    EXPECT_EQ(range.fbListed, n == ColumnRange::kMostCategories);
    EXPECT_EQ(range.CategoryCount(), range.fbListed ? n : 0);
  }
}

TEST(Ranges, KnowUserMissingNumbersByListAndByRange) {
  ColumnDictionary said;
  said.fMissing = {7, -1};
  EXPECT_TRUE(said.IsMissing(-1));
  EXPECT_FALSE(said.IsMissing(0)) << "no range was said";
  said.fbMissingRange = true;
  said.fMissingLow = 97;
  said.fMissingHigh = 99;
  for (const double value : {7.0, 97.0, 98.0, 99.0}) EXPECT_TRUE(said.IsMissing(value)) << value;
  for (const double value : {0.0, 50.0, 96.0, 100.0}) EXPECT_FALSE(said.IsMissing(value)) << value;
}

TEST(Ranges, OfColumnsThatAreNotTheSameAreRefusedAndChangeNothing) {
  using Change = std::function<void(ColumnRange&)>;
  const ColumnRange texts = RangeOf({{1}}, Kind::kTexts, 1);
  const struct {
    Change fChange;
    const char* fWhy;  // empty where they are the same all the same
  } cases[] = {
      {[](ColumnRange& other) { other.fDictionary.fName = "y"; }, "same columns in the same order"},
      {[&](ColumnRange& other) { other = texts; }, "texts in one part and numbers in another"},
      {[](ColumnRange& other) { other.fDictionary.fTime = 1; }, "times of another kind"},
      {[](ColumnRange& other) { other.fDictionary.fLevel = kScale; }, "another level"},
      {[](ColumnRange& other) { other.fDictionary.fbLevelFound = true; }, "another level"},
      {[](ColumnRange& other) { other.fDictionary.fMissing = {8}; }, "other user-missing"},
      {[](ColumnRange& other) { other.fDictionary.fbMissingRange = true; }, "other user-missing"},
      {[](ColumnRange& other) { other.fDictionary.fMissingHigh = 1; }, "other user-missing"},
      {[](ColumnRange& other) { other.fDictionary.fLabel = "another"; }, ""},
      {[](ColumnRange& other) { other = RangeOf({{}}, Kind::kTexts, 1); }, ""},
  };
  for (const auto& c : cases) {
    ColumnRange range = RangeOf({{3, 1}}, Kind::kNumbers);
    const std::string before = StateBytes::Of(range);
    ColumnRange other = RangeOf({{1, 2}}, Kind::kNumbers, 1);
    c.fChange(other);
    const std::string why = range.Merge(other);
    EXPECT_THAT(why, HasSubstr(c.fWhy));
    EXPECT_EQ(why.empty(), *c.fWhy == '\0') << why;
    EXPECT_TRUE(why.empty() || StateBytes::Of(range) == before) << why;
  }
  ColumnRange empty = RangeOf({{}}, Kind::kNumbers);
  EXPECT_EQ(empty.Merge(texts), "");
  EXPECT_TRUE(StateBytes::Of(empty) == StateBytes::Of(texts)) << "nothing is of any kind";
}

// Two columns over parts with so many cases.
TableRanges TableOf(const std::vector<PartSize>& parts) {
  TableRanges table;
  table.fWeight = "w";
  const auto number = static_cast<std::size_t>(parts.front().fPart);
  table.fColumns = {RangeOf({{3, 1}}, Kind::kNumbers, number),
                    RangeOf({{2}}, Kind::kTexts, number)};
  table.fColumns[1].fDictionary.fName = "second";
  table.fParts = parts;
  return table;
}

TEST(Ranges, OfATableTellWhereItsPartsBegin) {
  TableRanges table = TableOf({{4, 10}});
  ASSERT_EQ(table.Merge(TableOf({{0, 5}})), "");
  ASSERT_EQ(table.Merge(TableOf({{2, 0}})), "");
  EXPECT_THAT(table.fParts, ElementsAre(PartSize{0, 5}, PartSize{2, 0}, PartSize{4, 10}));
  EXPECT_EQ(table.CaseCount(), 15);
  const struct {
    std::int64_t fPart, fFirst, fCases;
  } parts[] = {{0, 0, 5}, {2, 5, 0}, {4, 5, 10}, {1, -1, -1}, {5, -1, -1}};
  for (const auto& part : parts) {
    EXPECT_EQ(table.FirstCaseOf(part.fPart), part.fFirst) << part.fPart;
    EXPECT_EQ(table.CaseCountOf(part.fPart), part.fCases) << part.fPart;
  }
  EXPECT_EQ(table.FindColumn("x"), 0);
  EXPECT_EQ(table.FindColumn("second"), 1);
  EXPECT_EQ(table.FindColumn("third"), -1);
  table.Renumber(10);
  EXPECT_THAT(table.fParts, ElementsAre(PartSize{10, 5}, PartSize{11, 0}, PartSize{12, 10}));
  EXPECT_THAT(table.fColumns[0].fFirst, ElementsAre(PlaceOf(10, 0), PlaceOf(10, 1)));
}

TEST(Ranges, OfOtherTablesAreRefusedAndChangeNothing) {
  const struct {
    std::function<void(TableRanges&)> fChange;
    const char* fWhy;
  } cases[] = {
      {[](TableRanges& other) { other.fWeight = ""; }, "weight variable is another"},
      {[](TableRanges& other) { other.fColumns.pop_back(); }, "1 columns, and others have 2"},
      {[](TableRanges& other) { other.fParts[1].fPart = 3; }, "part 3 is there already"},
      {[](TableRanges& other) { other.fColumns[1].fDictionary.fTime = 1; }, "another kind"},
  };
  for (const auto& c : cases) {
    TableRanges table = TableOf({{3, 4}});
    const std::uint64_t before = table.Digest();
    TableRanges other = TableOf({{1, 2}, {2, 2}});
    c.fChange(other);
    EXPECT_THAT(table.Merge(other), HasSubstr(c.fWhy));
    EXPECT_EQ(table.Digest(), before) << c.fWhy;
  }
}

TEST(Ranges, OfATableComeBackFromTheirBytes) {
  std::vector<PartSize> parts;
  for (std::int64_t part = 0; part < 1000; ++part) parts.push_back({part, part % 3});
  const TableRanges table = TableOf(parts);
  TableRanges read;
  ASSERT_TRUE(StateBytes::To(StateBytes::Of(table), read));
  EXPECT_EQ(read.fParts, table.fParts);
  EXPECT_EQ(read.fColumns[0].fDictionary.fLabel, "label");
  EXPECT_EQ(read.Digest(), table.Digest());
  for (const PartSize& bad :
       {PartSize{-1, 0}, PartSize{TableRanges::kMostParts, 0}, PartSize{1, -1}, PartSize{999, 1}}) {
    TableRanges damaged = table;
    damaged.fParts.insert(bad.fPart < 1 ? damaged.fParts.begin() : damaged.fParts.end(), bad);
    EXPECT_FALSE(StateBytes::To(StateBytes::Of(damaged), read)) << bad.fPart;
  }
}

}  // namespace
