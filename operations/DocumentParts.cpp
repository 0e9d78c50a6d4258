#include "operations/DocumentParts.h"

#include "host/data/ITable.h"
#include "host/output/OutputDocument.h"
#include "operations/Version.h"

namespace PredSelect {

void RecordData(MCHost::OutputDocument& document, std::int64_t cases, int variables) {
  document.fVersion = Version();
  document.fNCases = cases;
  document.fNVariables = variables;
}

void RecordNewVariables(const MCHost::ITable& table, int before, MCHost::OutputRun& run) {
  for (int i = before; i < table.ColumnCount(); ++i) {
    const KOVA_Variable& variable = table.GetVariable(i);
    run.fNewVariables.push_back({variable.GetName(), variable.GetLabel(), variable.GetType(),
                                 variable.GetFormat().ToString()});
  }
}

}  // namespace PredSelect
