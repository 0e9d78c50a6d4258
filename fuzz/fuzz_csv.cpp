// Any bytes as a CSV file: the verdict of the inspector, whatever pieces the bytes come in, and the
// table, in memory, streamed, and once written and read again; and the table that the text shows of
// itself where nobody says how it is written.
//
// A tab in the first line makes it the delimiter. Columns that are called as a type are declared.
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "common/MissingValue.h"
#include "fuzz/FuzzCheck.h"
#include "fuzz/TableContents.h"
#include "host/arrow/CsvInspector.h"
#include "host/arrow/CsvSniffer.h"
#include "host/arrow/CsvSource.h"
#include "host/arrow/DataFile.h"
#include "host/arrow/TextBytes.h"
#include "host/data/MemoryTable.h"
#include "host/data/StreamedTable.h"
#include "host/session/HostIOError.h"

namespace {

using MCHost::CsvInspector;
using MCHost::CsvRules;
using MCHost::CsvSource;
using MCHost::DataTable;
using MCHost::FieldType;
using MCHost::HostIOError;
using MCHost::MemoryTable;
using MCHost::StreamedTable;
using MCHost::TextBytes;
using PredSelectFuzz::ContentsOf;
using PredSelectFuzz::Require;

constexpr const char* kName = "t.csv";

CsvRules RulesFor(const std::string& text) {
  CsvRules rules;
  rules.fDelimiter = text.find('\t') < text.find('\n') ? '\t' : ',';
  rules.fNullTokens = {"", "NA", "NaN", "null", "-", "\"", "x,y", "é"};
  rules.fTypes = {{"number", FieldType::kNumber},     {"integer", FieldType::kInteger},
                  {"boolean", FieldType::kBoolean},   {"date", FieldType::kDate},
                  {"datetime", FieldType::kDateTime}, {"time", FieldType::kTime},
                  {"string", FieldType::kString}};
  return rules;
}

void CheckPlace(const std::string& text, const HostIOError& error) {
  Require(error.File() == kName && !error.Reason().empty(), "an error names file and reason",
          error.what());
  long line = 0;
  long column = 0;
  if (error.Place().empty()) return;  // there is no row
  Require(std::sscanf(error.Place().c_str(), "line %ld, column %ld", &line, &column) == 2,
          "an error has line and column", error.what());
  const auto ends =
      std::count_if(text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; });
  Require(
      line >= 1 && line <= ends + 1 && column >= 1 && column <= static_cast<long>(text.size()) + 1,
      "an error stands in the text", error.what());
}

// What the inspector says of the text, fed in pieces of so many bytes.
std::string VerdictOf(const std::string& text, const CsvRules& rules, std::size_t piece) {
  try {
    CsvInspector inspector(kName, rules);
    for (std::size_t at = 0; at < text.size(); at += piece) {
      // A piece of its own, so that reading beyond it is seen.
      const std::vector<char> bytes(
          text.begin() + static_cast<std::ptrdiff_t>(at),
          text.begin() + static_cast<std::ptrdiff_t>(std::min(at + piece, text.size())));
      inspector.Feed(bytes.data(), bytes.size());
    }
    inspector.Finish();
    std::string verdict = std::to_string(inspector.CaseCount()) + " cases, " +
                          std::to_string(inspector.LongestRow()) + " bytes" +
                          (inspector.HasQuotedNewlines() ? ", quoted lines\n" : "\n");
    for (const MCHost::CsvColumn& column : inspector.Columns()) {
      verdict += column.fName + ":" + std::to_string(column.fKinds) +
                 (column.fbDigitsLost ? " digits lost\n" : "\n");
    }
    return verdict;
  } catch (const HostIOError& error) {
    CheckPlace(text, error);
    return error.what();
  }
}

// A directory of the process, removed when it ends.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "fuzz_csv.XXXXXX").string();
    fPath = mkdtemp(name.data());
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() { std::filesystem::remove_all(fPath); }
  std::string File(const char* name) const { return (fPath / name).string(); }

 private:
  std::filesystem::path fPath;
};

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Declared strings stay strings; the other kinds have become numbers, which need no declaration.
CsvRules RulesOfCopy(const CsvRules& rules, const DataTable& table) {
  CsvRules copy = rules;
  copy.fTypes.clear();
  for (int i = 0; i < table.ColumnCount(); ++i) {
    const KOVA_Variable& variable = table.GetVariable(i);
    if (!variable.IsNumeric()) copy.fTypes[variable.GetName()] = FieldType::kString;
  }
  return copy;
}

void CheckTable(const std::string& text, const CsvRules& rules, std::int64_t nCases) {
  static const ScratchFolder folder;
  try {
    MemoryTable table(std::make_unique<CsvSource>(kName, text, rules));
    const std::string contents = ContentsOf(table);
    Require(table.CaseCount() == nCases, "the table has the cases that were counted", contents);
    StreamedTable streamed(std::make_unique<CsvSource>(kName, text, rules));
    Require(ContentsOf(streamed) == contents, "streaming changes nothing", contents);
    MemoryTable promised(
        std::make_unique<CsvSource>(kName, text, rules, CsvSource::Look::kStart, 64));
    Require(ContentsOf(promised) == contents, "its start promises nothing else", contents);
    const std::string copied = folder.File(rules.fDelimiter == '\t' ? "t.tsv" : "t.csv");
    MCHost::WriteDataFile(table, copied);
    Require(ReadFile(copied) == text, "saving what was read changes no byte", text);
    CsvSource source(kName, text, rules);
    MemoryTable cells(source);  // which no longer knows the text
    MCHost::WriteDataFile(cells, copied);
    CsvSource copy(kName, ReadFile(copied), RulesOfCopy(rules, table));
    MemoryTable again(copy);
    const std::string after = ContentsOf(again);
    Require(after == contents, "writing and reading changes nothing", contents + "\n" + after);
    MCHost::WriteDataFile(table, folder.File("t.arrow"));
    const std::string kept = ContentsOf(
        *MCHost::OpenDataFile(folder.File("t.arrow"), {}, MCHost::TableStorage::kMemory));
    Require(kept.starts_with(std::to_string(nCases) + " cases\n"), "columns have the cases", kept);
  } catch (const HostIOError& error) {
    Require(false, "what was inspected can be read", error.what());
  }
}

// Such bytes are no text, though they may be UTF-8 ("\x04\"M\x18").
bool IsPacked(const std::string& text) {
  const TextBytes bytes = TextBytes::Of(kName, text);
  bytes.Open();
  return bytes.IsPacked();
}

// What a text shows of itself: the table is the same in each way of reading it.
void CheckSniffed(const std::string& text) {
  CsvRules rules;
  rules.fNullTokens = {"", "NA", "-"};
  rules.fColumnNulls = {{"number", {"?"}}, {"column1", {"?"}}};
  TextBytes bytes = TextBytes::Of(kName, text);
  std::string contents;
  try {
    MCHost::SniffCsv(bytes, {}, rules);
    MemoryTable table(std::make_unique<CsvSource>(bytes, rules));
    contents = ContentsOf(table);
  } catch (const HostIOError&) {
    return;
  }
  try {
    StreamedTable streamed(std::make_unique<CsvSource>(bytes, rules));
    Require(ContentsOf(streamed) == contents, "streaming what was sniffed changes nothing",
            contents);
    MemoryTable started(std::make_unique<CsvSource>(bytes, rules, CsvSource::Look::kStart, 64));
    Require(ContentsOf(started) == contents, "its start promises nothing else", contents);
  } catch (const HostIOError& error) {
    Require(false, "what was sniffed and inspected can be read", error.what());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const CsvRules rules = RulesFor(text);
  const std::string verdict = VerdictOf(text, rules, std::max<std::size_t>(size, 1));
  for (const std::size_t piece : {std::size_t{1}, std::size_t{5}, size / 2 + 1}) {
    const std::string other = VerdictOf(text, rules, piece);
    Require(other == verdict, "the size of pieces means nothing", verdict + other);
  }
  if (PredSelectFuzz::IsOneInEight(text)) CheckSniffed(text);
  // A table costs as much as fifty verdicts.
  if (verdict.starts_with(kName) || !PredSelectFuzz::IsOneInEight(text)) return 0;
  if (IsPacked(text)) return 0;
  CheckTable(text, rules, std::atoll(verdict.c_str()));
  return 0;
}
