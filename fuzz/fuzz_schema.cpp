// Any bytes as a Table Schema document: read, applied to a small table, and read again from the
// same JSON in another layout.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "common/MissingValue.h"
#include "fuzz/FuzzCheck.h"
#include "host/data/MeasurementLevels.h"
#include "host/data/MemoryTable.h"
#include "host/data/TableSchema.h"
#include "host/session/HostIOError.h"

namespace {

using MCHost::HostIOError;
using MCHost::MemoryTable;
using MCHost::TableSchema;
using PredSelectFuzz::Require;

constexpr const char* kName = "s.json";
constexpr double kNumbers[] = {30, 40.5, -99, KOVA_SystemMissing, 1e300};
constexpr const char* kStrings[] = {"f", "m", "", "x", "-99"};

void AddColumns(MemoryTable& table) {
  const std::vector<double> numbers(std::begin(kNumbers), std::end(kNumbers));
  std::vector<std::optional<std::string>> strings(std::begin(kStrings), std::end(kStrings));
  for (const char* name : {"age", "a b", "né"}) table.AddNumbers(name, numbers);
  for (const char* name : {"sex", "fields"}) table.AddStrings(name, strings);
}

// Everything the dictionary says of a variable; labels of the values that the columns hold.
std::string Described(const KOVA_Variable& variable) {
  const KOVA_MissingValues& missing = variable.GetMissingValues();
  nlohmann::json json = {variable.GetName(),   variable.GetLabel(),
                         variable.GetType(),   static_cast<int>(variable.GetMeasurementLevel()),
                         missing.GetNumbers(), missing.GetStrings(),
                         missing.HasRange(),   missing.GetLow(),
                         missing.GetHigh()};
  const auto add = [&json, &variable](const auto& value) {
    const std::string* label = variable.GetValueLabels().FindLabel(value);
    json.push_back(label == nullptr ? nlohmann::json() : nlohmann::json(*label));
  };
  for (const double value : kNumbers) add(value);
  for (const char* value : kStrings) add(std::string(value));
  return json.dump() + "\n";
}

void CheckVariable(const KOVA_Variable& variable) {
  const KOVA_MissingValues& missing = variable.GetMissingValues();
  Require(!missing.Contains(KOVA_SystemMissing), "no cell without a value is user-missing");
  Require(!missing.HasRange() || missing.GetLow() <= missing.GetHigh(),
          "a range has its ends in order");
  Require(variable.IsNumeric() ? missing.GetStrings().empty() : missing.GetNumbers().empty(),
          "missing values are of the variable's kind");
  Require(variable.GetMeasurementLevel() != KOVA_Variable::kUnknown, "every level is settled");
}

void CheckPlace(const std::string& text, const HostIOError& error) {
  Require(error.File() == kName && !error.Reason().empty(), "an error names file and reason",
          error.what());
  const std::string& place = error.Place();
  int line = 0;
  int column = 0;
  if (std::sscanf(place.c_str(), "line %d, column %d", &line, &column) != 2) {
    Require(place.empty() || place.starts_with("fields") || place.starts_with("missingValues"),
            "an error names its element", error.what());
    return;
  }
  std::size_t start = 0;
  for (; line > 1; --line) {
    start = text.find('\n', start) + 1;
    Require(start > 0, "an error stands on a line of the text", error.what());
  }
  const std::size_t end = std::min(text.find('\n', start), text.size());
  Require(column >= 1 && start + static_cast<std::size_t>(column) <= end + 2,
          "an error stands in its line", error.what());
}

// What the document makes of the table, or the error.
std::string Outcome(const std::string& text) {
  try {
    const TableSchema schema = TableSchema::Parse(text, kName);
    std::string outcome;
    for (const auto& [name, type] : schema.Types()) {
      outcome += name + ":" + std::to_string(static_cast<int>(type)) + "\n";
    }
    for (const std::string& token : schema.NullTokens()) outcome += token + "\n";
    MemoryTable table;
    AddColumns(table);
    schema.Apply(table);
    MCHost::SettleMeasurementLevels(table);
    for (int i = 0; i < table.ColumnCount(); ++i) {
      CheckVariable(table.GetVariable(i));
      outcome += Described(table.GetVariable(i));
    }
    return outcome;
  } catch (const HostIOError& error) {
    CheckPlace(text, error);
    return error.what();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::string outcome = Outcome(text);
  const nlohmann::json document = nlohmann::json::parse(text, nullptr, false);
  if (document.is_discarded()) return 0;
  for (const int indent : {-1, 1}) {
    const std::string other = document.dump(indent);
    Require(Outcome(other) == outcome, "layout means nothing", other);
  }
  return 0;
}
