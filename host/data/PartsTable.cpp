#include "host/data/PartsTable.h"

#include <utility>

#include "host/data/WholeTable.h"
#include "host/session/HostIOError.h"

namespace MCHost {

PartsTable::PartsTable(std::shared_ptr<const WholeTable> whole, std::vector<std::string> notes) {
  fSourceNotes = std::move(notes);
  for (const ColumnRange& column : whole->fRanges.fColumns) {
    AddVariable(VariableOf(column.fDictionary));
  }
  fNOwnColumns = ColumnCount();
  fNCases = whole->fRanges.CaseCount();
  SetWeightVarIndex(whole->fRanges.FindColumn(whole->fRanges.fWeight));
  SetWhole(std::move(whole));
}

std::unique_ptr<ITableScan> PartsTable::Scan(const std::vector<int>& /*columns*/) {
  throw HostIOError(Whole()->fName, "",
                    "the cases lie in parts, and this needs them at one place; leave out what "
                    "saves or shows single cases");
}

}  // namespace MCHost
