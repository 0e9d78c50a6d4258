#include "apps/predselect/SaveTable.h"

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/FileUses.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/Terminal.h"
#include "host/arrow/DataFile.h"
#include "host/data/DataTable.h"
#include "host/session/HostIOError.h"
#include "host/session/OutputGroup.h"
#include "operations/TableOptions.h"

namespace PredSelectApp {

SaveTable::SaveTable(MCHost::DataTable& table, const SaveOptions& options)
    : fpTable(&table), fpOptions(&options), fKeys(PredSelect::KeyColumns(table, options.fKeys)) {}

void SaveTable::Write() const {
  const std::string& path = fpOptions->fFile;
  if (!MayBeSaved(path, *fpOptions)) {
    throw MCHost::HostIOError(path, "", "was not written, since it is there by now");
  }
  WriteTo(path);
}

void SaveTable::WriteTo(const MCHost::DataTarget& target) const {
  const bool hasNew = fpTable->ColumnCount() > fpTable->OwnColumnCount();
  if (fpOptions->fbOnlyNew && !hasNew) {
    throw MCHost::HostIOError(target.fPath, "",
                              "was not written, since there are no new variables");
  }
  MCHost::WriteDataFile(*fpTable, target, fpOptions->fbOnlyNew ? &fKeys : nullptr);
}

int SaveTable::WriteAfter(PredSelect::Outcome outcome) const {
  const int code = ExitCodeOf(outcome);
  const std::string& path = fpOptions->fFile;
  if (path.empty() || code == kCancelled) return code;
  std::string trouble = path + " was not written, since not all commands completed.";
  try {
    if (code == kCompleted || outcome == PredSelect::Outcome::kFileLost) {
      Write();
      return code;
    }
  } catch (const MCHost::HostIOError& error) {
    trouble = error.what();
    MCHost::OutputGroup::Current()->Fail();
  }
  PrintError("predselect: " + trouble);
  return code == kCompleted ? kDataError : code;
}

}  // namespace PredSelectApp
