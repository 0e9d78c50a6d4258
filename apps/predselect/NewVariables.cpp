#include "apps/predselect/NewVariables.h"

#include "host/data/DataTable.h"
#include "host/output/OutputDocument.h"

namespace PredSelectApp {

void RecordNewVariables(const MCHost::DataTable& table, int before, MCHost::OutputRun& run) {
  for (int i = before; i < table.ColumnCount(); ++i) {
    const KOVA_Variable& variable = table.GetVariable(i);
    run.fNewVariables.push_back({variable.GetName(), variable.GetLabel(), variable.GetType(),
                                 variable.GetFormat().ToString()});
  }
}

}  // namespace PredSelectApp
