#include "operations/ShowRanges.h"

#include "common/MissingValue.h"
#include "common/parts/TableRanges.h"
#include "host/data/MeasurementLevels.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"

namespace PredSelect {

using MCHost::OutputText;

void ShowRanges(const TableRanges& ranges) {
  BpPivotTable table("Ranges of Parts", "Ranges");
  BpDimension rows = table.RowDimension("Variable");
  BpDimension columns = table.ColumnDimension("Properties");
  const BpCategory level = columns.AddCategory(BpString("Level"));
  const BpCategory values = columns.AddCategory(BpString("Values"), BpProcedure::Count());
  const BpCategory low = columns.AddCategory(BpString("Lowest"), BpProcedure::GeneralStat());
  const BpCategory high = columns.AddCategory(BpString("Highest"), BpProcedure::GeneralStat());
  const BpCategory categories = columns.AddCategory(BpString("Categories"), BpProcedure::Count());
  for (const ColumnRange& column : ranges.fColumns) {
    const ColumnDictionary& known = column.fDictionary;
    const BpCategory row = rows.AddCategory(OutputText::Variable(known.fName, known.fLabel));
    table.SetCell({row, level}, OutputText::Literal(MCHost::MeasurementLevelName(
                                    static_cast<KOVA_Variable::MeasurementLevel>(known.fLevel))));
    table.SetCell({row, values}, static_cast<double>(column.fNValues));
    if (!MCMV::IsMissing(column.fValid.fLow)) {
      table.SetCell({row, low}, column.fValid.fLow);
      table.SetCell({row, high}, column.fValid.fHigh);
    }
    if (column.fbListed) {
      table.SetCell({row, categories}, static_cast<double>(column.CategoryCount()));
    }
  }
  BpComposite below("^1 cases in ^2 parts...");
  below.AddLiteral(std::to_string(ranges.CaseCount()));
  table.Caption(below.AddLiteral(std::to_string(ranges.fParts.size())).Finish());
  table.Show();
}

}  // namespace PredSelect
