#include "apps/predselect/LiveOutput.h"

#include <cstdio>
#include <string>
#include <utility>

#include "apps/predselect/Options.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/Terminal.h"
#include "apps/predselect/Version.h"
#include "host/data/DataTable.h"
#include "host/output/render/RenderText.h"

namespace PredSelectApp {

void LiveOutput::SetData(const std::string& source, const MCHost::DataTable& table) {
  fVersion = kVersion;
  fDataSource = source;
  fNCases = table.CaseCount();
  fNVariables = table.ColumnCount();
}

void LiveOutput::AddMessage(MCHost::OutputMessage message) {
  if (!fOptions.fbQuiet || message.fLevel >= MCHost::OutputMessage::kError) {
    fProgress.Clear();
    std::fputs(MCHost::RenderMessage(message, PageOptions(fOptions, true)).c_str(), stderr);
  }
  OutputDocument::AddMessage(std::move(message));
}

}  // namespace PredSelectApp
