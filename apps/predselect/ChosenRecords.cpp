#include "apps/predselect/ChosenRecords.h"

#include <algorithm>
#include <vector>

#include "host/output/OutputDocument.h"
#include "host/output/render/LayFlat.h"

namespace PredSelectApp {

namespace {

using MCHost::FlatRecords;
using MCHost::OutputRun;
using MCHost::OutputTable;

// The first of them that a run has shown is its main table; without any in all runs it is the first
// table of the last run that has one.
constexpr const char* kMain[] = {"Dictionary",       "Ranking",       "PredictorSummary",
                                 "PredictorEffects", "SubsetSummary", "ChosenPredictors",
                                 "WeightsOfEvidence"};

std::string Small(std::string word) {
  for (char& c : word) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return word;
}

std::string MainOf(const std::vector<OutputRun>& runs) {
  std::string first;
  for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
    for (const char* subtype : kMain) {
      for (const OutputTable& table : run->fTables) {
        if (table.fSubtype == subtype) return subtype;
      }
    }
    if (first.empty() && !run->fTables.empty()) first = run->fTables.front().fSubtype;
  }
  return first;
}

void NumberRecords(FlatRecords& records, std::size_t number) {
  MCHost::FlatColumn command{"command", "", true, {}, {}};
  command.fNumbers.assign(records.Size(), static_cast<double>(number));
  records.fColumns.insert(records.fColumns.begin(), std::move(command));
}

}  // namespace

std::optional<FlatRecords> ChosenRecords(const MCHost::OutputDocument& document,
                                         const std::string& subtype) {
  const std::vector<OutputRun>& runs = document.GetRuns();
  const std::string wanted = Small(subtype.empty() ? MainOf(runs) : subtype);
  std::optional<FlatRecords> chosen;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    for (const OutputTable& table : runs[i].fTables) {
      if (Small(table.fSubtype) != wanted) continue;
      FlatRecords records = MCHost::LayFlat(table);
      if (runs.size() > 1) NumberRecords(records, i + 1);
      chosen ? chosen->Append(std::move(records)) : void(chosen = std::move(records));
    }
  }
  return chosen;
}

std::string WithoutTable(const MCHost::OutputDocument& document, const std::string& subtype) {
  std::vector<std::string> shown;
  for (const OutputRun& run : document.GetRuns()) {
    for (const OutputTable& table : run.fTables) {
      if (std::find(shown.begin(), shown.end(), table.fSubtype) == shown.end()) {
        shown.push_back(table.fSubtype);
      }
    }
  }
  std::string list;
  for (const std::string& name : shown) list += (list.empty() ? "" : ", ") + name;
  return "there is no table \"" + subtype + "\" in the results; they have " +
         (list.empty() ? "none" : list) + ".";
}

}  // namespace PredSelectApp
