#include "apps/predselect/LiveOutput.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "apps/predselect/Interrupt.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/Terminal.h"
#include "host/data/DataTable.h"
#include "host/output/render/RenderText.h"

namespace PredSelectApp {

bool LiveOutput::WantsFindings(const ResultOptions& options) {
  return options.fFormat == MCHost::FileFormat::kHtml ||
         options.fFormat == MCHost::FileFormat::kJson;
}

void LiveOutput::AddMessage(MCHost::OutputMessage message) {
  const bool isShown = !fOptions.fbQuiet || message.fLevel >= MCHost::OutputMessage::kError;
  // What a run says that is being stopped is said by the program's last line.
  if (isShown && !IsInterrupted()) {
    fProgress.Clear();
    std::fputs(MCHost::RenderMessage(message, PageOptions(fOptions, true)).c_str(), stderr);
  }
  OutputDocument::AddMessage(std::move(message));
}

void LiveOutput::ShowNotes(const MCHost::DataTable& table) {
  for (const std::string& note : table.Notes()) {
    if (std::ranges::count(fReadingNotes, note) > 0) continue;
    fReadingNotes.push_back(note);
    if (!fOptions.fbQuiet) PrintError("Note: " + note);
  }
}

}  // namespace PredSelectApp
