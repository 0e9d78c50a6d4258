#include "host/output/OutputDocument.h"

namespace MCHost {

OutputRun& OutputDocument::BeginRun(const std::string& command) {
  fRuns.emplace_back();
  fRuns.back().fCommand = command;
  return fRuns.back();
}

OutputRun& OutputDocument::CurrentRun() { return fRuns.empty() ? BeginRun("") : fRuns.back(); }

void OutputDocument::AddMessage(OutputMessage message) {
  CurrentRun().fMessages.push_back(std::move(message));
}

void OutputDocument::AddNote(OutputNote note) { CurrentRun().fNotes.push_back(std::move(note)); }

void OutputDocument::AddTable(OutputTable table) {
  CurrentRun().fTables.push_back(std::move(table));
}

void OutputDocument::AddChart(OutputChart chart) {
  CurrentRun().fCharts.push_back(std::move(chart));
}

}  // namespace MCHost
