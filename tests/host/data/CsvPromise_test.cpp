// A CSV file that is read as its start promises is what a look at the whole file makes of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <system_error>
#include <vector>

#include "host/arrow/CsvSource.h"
#include "host/arrow/ReadingThreads.h"
#include "host/arrow/ShortDecimal.h"
#include "host/data/MemoryTable.h"
#include "host/data/StreamedTable.h"
#include "host/session/HostIOError.h"
#include "tests/host/data/TableFixtures.h"

namespace MCHost {
namespace {

using Look = CsvSource::Look;

constexpr const char* kKinds[][4] = {
    {"1", "-2.5", "1e5", " 7 "},
    {"12", "0", "-3", "4"},
    {"-0.1234", "0.5", "1234567.125", "-0"},
    {"0.30000000000000004", "9007199254740991", "-123456789012345.6", "0.000000000000001"},
    {"1.234", "0", "12.345.678", "-4"},
    {"1,5", "-2.345,25", "+3", "4e1"},
    {"inf", "nan", "1", "-Infinity"},
    {"true", "FALSE", "False", "True"},
    {"1970-01-02", "2000-02-29", "1999-12-31", "1970-01-01"},
    {"1970-01-02 10:00", "2000-02-29", "1999-12-31T00:00:00.5", "1970-01-01 00:01"},
    {"1970-01-02T10:00Z", "2000-02-29T01:00:00+02:00", "1999-12-31T00:00Z", "1970-01-02T10:00Z"},
    {"00:01", "12:30:00", "12:30:00.5", "23:59"},
    {"red", "a b", "5\"", "é"},
    {"\"red, blue\"", "\"\"\"\"", "\"1\"", "\"a\"\"b\""},
    {"\"1\"", "\"2\"", "\" 3\"", "4"},
    {"", "NA", "\"\"", "null"},
};

// What may stand in a column of any kind, although its start promised something else, or although
// only the whole file tells what it means. In place of ; and ~ come delimiter and line end.
const std::string kOdd[] = {
    "9007199254740992",
    "9007199254740993",
    "0000000000000007",
    "00000000000000007.5",
    "-.5",
    "5.",
    "-",
    ".",
    "-.",
    "--1",
    "1.2.3",
    "1..2",
    "12345678.9.1",
    "1234567:",
    "123456789/12345",
    "-99",
    "9007199254740992.5",
    "-12345678901234567890",
    "1e300",
    "1e400",
    std::string(300, '1'),
    std::string(500, '7') + ".5",
    std::string(255, ' ') + "1",
    std::string(256, ' ') + "1",
    std::string(400, ' ') + "inf",
    "1" + std::string(300, '\t'),
    "\"" + std::string(300, '7') + "\"",
    "nan(" + std::string(300, 'a') + ")",
    "\"NaN(" + std::string(300, 'a') + ")\"",
    std::string(300, 'a'),
    "0",
    "1",
    "x",
    "2.5",
    "-7.25",
    "1e-3",
    "+1.5",
    "1.234,5",
    "1,5",
    "tRue",
    "true",
    "2001-02-29",
    "2000-02-29",
    "2000-02-29 12:30",
    "2000-02-29T12:30Z",
    "12:30",
    "\xFF",
    "\xC3",
    "\"\xE2\x82\"",
    "\xED\xA0\x80",
    std::string("x\0y", 3),
    std::string("\"\0\"", 3),
    "\"open",
    "\"a\"b",
    "\"1\"2",
    "\"\"x",
    "\"a\" ",
    "\"",
    "\"a~b\"",
    "\"a\r\"",
    "\"a~1;1;1~b\"",
    "\"1\n\"",
    "1;2",
    "a~b",
    "~",
    "1\r2",
    "\xEF\xBB\xBF",
    "\xEF\xBB\xBF"
    "1",
};

// Random files of three columns, the first of one kind but for one late cell, if any.
class Files {
 public:
  explicit Files(unsigned seed) : fRandom(seed) {}

  std::string Next(std::size_t kind, const std::string& odd, char delimiter) {
    const std::string end = Pick({"\n", "\n", "\n", "\r\n", "\r"});
    const std::size_t kinds[] = {kind, Below(std::size(kKinds)), Below(std::size(kKinds))};
    const unsigned rows = 30 + Below(60);
    const unsigned oddRow = 25 + Below(rows - 25);
    std::string text = Below(8) == 0 ? "\xEF\xBB\xBF" : "";
    text += Pick({"a;b;c~", "a;b;c~", "a;\"b\";c~", "a;\"b\";c~", "a;b;\"c~1;2;3\"~"});
    for (unsigned i = 0; i < rows; ++i) {
      if (Below(40) == 0) text += "~";
      for (std::size_t j = 0; j < 3; ++j) {
        text += j == 0 && i == oddRow ? odd : Cell(kinds[j]);
        text += j < 2 ? ";" : "~";
      }
    }
    if (Below(4) == 0) text.pop_back();
    return Replaced(Replaced(text, ';', std::string(1, delimiter)), '~', end);
  }

  unsigned Below(std::size_t n) { return static_cast<unsigned>(fRandom() % n); }

 private:
  std::string Pick(const std::vector<std::string>& from) { return from[Below(from.size())]; }
  std::string Cell(std::size_t kind) {
    if (Below(15) == 0) return Pick({"", "NA", "NaN", "null", "\"\""});
    return kKinds[kind][Below(4)];
  }
  static std::string Replaced(const std::string& text, char what, const std::string& by) {
    std::string replaced;
    for (const char c : text) replaced += c == what ? by : std::string(1, c);
    return replaced;
  }

  std::mt19937 fRandom;
};

// All that a table tells of the data and of what is to be passed on, or the message.
template <class Table, class Open>
std::vector<std::vector<std::string>> Told(Open open, bool* isPromiseKept) {
  std::unique_ptr<Table> table;
  CsvSource* source = nullptr;
  try {
    std::unique_ptr<CsvSource> opened = open();
    source = opened.get();
    table = std::make_unique<Table>(std::move(opened));
  } catch (const HostIOError& error) {
    return {{error.what()}};
  }
  *isPromiseKept = source->IsReadOnce();
  auto told = Contents(*table);
  told.push_back(table->Notes());
  told.push_back({std::to_string(table->CaseCount())});
  for (int j = 0; j < table->ColumnCount(); ++j) {
    told.push_back({std::to_string(static_cast<int>(source->KeptOf(j)))});
  }
  return told;
}

// A second reader of numbers says what they are.
TEST(CsvPromise, ShortDecimalsAreTheNumbersNextToThem) {
  std::mt19937 random(7);
  const auto below = [&random](unsigned n) { return static_cast<unsigned>(random() % n); };
  constexpr char kMarks[] = ".,-+ eE/:x";
  int nRead = 0;
  for (int i = 0; i < 200000; ++i) {
    const char point = i % 8 == 0 ? ',' : '.';
    std::string text = below(3) == 0 ? "-" : "";
    const unsigned digits = 1 + below(17);
    for (unsigned k = 0; k < digits; ++k) text += static_cast<char>('0' + below(i % 5 + 6U));
    if (below(4) != 0) text.insert(below(static_cast<unsigned>(text.size()) + 1), 1, point);
    if (below(8) == 0) text[below(static_cast<unsigned>(text.size()))] = kMarks[below(10)];
    const std::string bytes = text + "7.7.7.7.";  // which are not looked at
    double value = 0.0;
    if (!ReadShortDecimal(bytes.data(), text.size(), point, value)) {
      const bool isPlain = text.size() < 16 && text.find('.') == text.rfind('.') &&
                           text.find_first_of("0123456789") != std::string::npos &&
                           text.find_first_not_of("0123456789.") == std::string::npos;
      EXPECT_FALSE(isPlain && point == '.') << text;
      continue;
    }
    ++nRead;
    std::replace(text.begin(), text.end(), ',', '.');
    double expected = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), expected);
    ASSERT_TRUE(error == std::errc{} && end == text.data() + text.size()) << text;
    ASSERT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(expected)) << text;
  }
  EXPECT_GT(nRead, 100000);
}

TEST(CsvPromise, WhatItsStartPromisesOfAFileIsKeptOrFoundOutWithTheSameWords) {
  Files files(20240229);
  int nFiles = 0;
  int nKept = 0;
  int nErrors = 0;
  for (std::size_t kind = 0; kind < std::size(kKinds); ++kind) {
    SetReadingThreads(1 + static_cast<int>(kind % 3));
    for (std::size_t k = 0; k < 2 * std::size(kOdd); ++k) {
      const char delimiter = files.Below(4) == 0 ? '\t' : ',';
      const std::string odd = k % 2 == 0 ? kOdd[k / 2] : kKinds[kind][0];
      const std::string text = files.Next(kind, odd, delimiter);
      CsvRules rules{delimiter, {"", "NA", "NaN", "null", "\xFF"}, {}};
      constexpr FieldType kTypes[] = {FieldType::kString, FieldType::kNumber, FieldType::kInteger,
                                      FieldType::kBoolean, FieldType::kDateTime};
      if (files.Below(6) == 0) rules.fNullTokens.push_back("-99");
      if (kind == 1) rules.fTypes["a"] = FieldType::kInteger;
      if (files.Below(6) == 0) rules.fTypes["a"] = kTypes[files.Below(std::size(kTypes))];
      if (files.Below(6) == 0) rules.fbHeader = false;
      if (files.Below(4) == 0) rules.fColumnNulls = {{"a", {"x", "2.5"}}, {"column1", {"0"}}};
      if (delimiter == '\t' && files.Below(2) == 0) rules.fNumbers = {',', '.'};
      if (files.Below(8) == 0) rules.fQuote = kNoMark;
      const std::size_t start = 80 + files.Below(200);
      const auto source = [&](Look look) {
        return [&, look] { return std::make_unique<CsvSource>("t.csv", text, rules, look, start); };
      };
      bool isKept = false;
      const auto whole = Told<MemoryTable>(source(Look::kWhole), &isKept);
      ASSERT_EQ(Told<StreamedTable>(source(Look::kStart), &isKept), whole) << start << "\n" << text;
      ASSERT_EQ(Told<MemoryTable>(source(Look::kStart), &isKept), whole) << start << "\n" << text;
      ++nFiles;
      nKept += isKept ? 1 : 0;
      nErrors += whole.size() == 1 ? 1 : 0;
    }
  }
  // Each way is taken.
  EXPECT_GT(nKept, nFiles / 8);
  EXPECT_GT(nErrors, nFiles / 20);
  EXPECT_GT(nFiles - nKept - nErrors, nFiles / 8);
}

}  // namespace
}  // namespace MCHost
