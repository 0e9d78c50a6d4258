#include "apps/predselect/LiveOutput.h"

#include <cstdio>
#include <utility>

#include "apps/predselect/Options.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/Terminal.h"
#include "host/data/DataTable.h"
#include "host/output/render/RenderText.h"

namespace PredSelectApp {

bool LiveOutput::WantsFindings(const ResultOptions& options) {
  return options.fFormat == OutputFormat::kHtml;
}

void LiveOutput::AddMessage(MCHost::OutputMessage message) {
  if (!fOptions.fbQuiet || message.fLevel >= MCHost::OutputMessage::kError) {
    fProgress.Clear();
    std::fputs(MCHost::RenderMessage(message, PageOptions(fOptions, true)).c_str(), stderr);
  }
  OutputDocument::AddMessage(std::move(message));
}

void ShowNotes(const MCHost::DataTable& table, const ResultOptions& options,
               std::set<std::string>& shown) {
  if (options.fbQuiet) return;
  for (const std::string& note : table.Notes()) {
    if (shown.insert(note).second) PrintError("Note: " + note);
  }
}

}  // namespace PredSelectApp
