// Makes a table of its own, runs commands over it, describes it, and prints what the documents say.
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

#include "host/data/MemoryTable.h"
#include "host/output/OutputDocument.h"
#include "host/output/render/RenderJson.h"
#include "operations/DescribeTable.h"
#include "operations/RequestError.h"
#include "operations/RunCommands.h"
#include "operations/TableOptions.h"

namespace {

using nlohmann::json;

constexpr const char* kCommands =
    "SELECTPRED paid /CRITERIA PCUTOFF=0.2 /MACROVAR FACTORS=best.\n"
    "NAIVEBAYES paid BY !best /SAVE PREDVAL(guess).\n";

std::string Path(const json& cell) { return cell["row"].dump() + cell["column"].dump(); }

// Every cell of the tables of this subtype.
void Print(const json& document, const std::string& subtype) {
  for (const json& run : document["runs"]) {
    for (const json& table : run["tables"]) {
      if (table["subtype"] != subtype) continue;
      std::printf("%s\n", table["title"].get<std::string>().c_str());
      for (const json& cell : table["cells"]) {
        const std::string text = cell["text"];
        if (!text.empty()) std::printf("  %s %s\n", Path(cell).c_str(), text.c_str());
      }
    }
  }
}

json Document(const MCHost::OutputDocument& document) {
  json found = json::parse(MCHost::RenderJson(document));
  std::printf("%s\n", found["data"].dump().c_str());
  return found;
}

}  // namespace

int main() {
  MCHost::MemoryTable table;
  table.AddStrings("paid", {"yes", "no", "yes", "no", "yes", "yes", "no", "no", "yes", "no"});
  table.AddStrings("home", {"own", "rent", "own", "rent", "own", "own", "rent", "own", "rent", {}});
  table.AddNumbers("times", {1, 2, 1, 1, 1, 2, 2, 3, 1, 1});
  PredSelect::TableOptions options;
  options.fLevels = {{"times", KOVA_Variable::kOrdinal}};
  PredSelect::PrepareTable(table, options);

  PredSelect::Surroundings surroundings;
  MCHost::OutputDocument results;
  results.fDataSource = "loans";
  const PredSelect::Outcome outcome =
      PredSelect::RunCommands(table, results, {.fCommands = kCommands}, surroundings);
  if (outcome != PredSelect::Outcome::kCompleted) return 1;
  const json found = Document(results);
  Print(found, "PredictorSummary");
  std::printf("selected %s, added %s\n", found["runs"][0]["macros"].dump().c_str(),
              found["runs"][1]["new_variables"].dump().c_str());

  MCHost::OutputDocument described;
  described.fDataSource = "loans and guesses";
  (void)PredSelect::DescribeTable(table, described, surroundings);
  Print(Document(described), "Dictionary");
  try {
    (void)PredSelect::RunCommands(table, results, {.fCommands = "* nothing."}, surroundings);
  } catch (const PredSelect::RequestError& error) {
    std::printf("%s\n", error.what());
  }
  return 0;
}
