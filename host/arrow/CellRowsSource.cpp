#include "host/arrow/CellRowsSource.h"

#include <arrow/c/bridge.h>
#include <arrow/record_batch.h>
#include <arrow/type.h>
#include <arrow/type_traits.h>

#include <algorithm>
#include <numeric>
#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/arrow/CellBuilder.h"
#include "host/arrow/CsvKinds.h"
#include "host/arrow/DeclaredKinds.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr std::int64_t kBatchCells = std::int64_t{1} << 18;
constexpr std::int64_t kMaxBatchCases = 16384;

bool IsNull(const RowCell& cell, const std::vector<std::string>& nulls) {
  if (cell.fKind == RowCell::kNone) return true;
  return std::find(nulls.begin(), nulls.end(), cell.Shown()) != nulls.end();
}

// Case after case of the rows, in batches.
class CellBatches final : public arrow::RecordBatchReader {
 public:
  CellBatches(std::unique_ptr<ICellRows> rows, std::shared_ptr<arrow::Schema> schema,
              std::vector<int> columns, const std::vector<std::vector<std::string>>& nulls)
      : fpRows(std::move(rows)),
        fpSchema(std::move(schema)),
        fColumns(std::move(columns)),
        fNulls(nulls) {
    for (const auto& field : fpSchema->fields()) fBuilders.emplace_back(field->type());
  }

  std::shared_ptr<arrow::Schema> schema() const override { return fpSchema; }
  arrow::Status ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) override {
    const auto columns = static_cast<std::int64_t>(std::max<std::size_t>(fColumns.size(), 1));
    const std::int64_t most = std::clamp<std::int64_t>(kBatchCells / columns, 64, kMaxBatchCases);
    std::int64_t cases = 0;
    try {
      for (; cases < most && fpRows->Next(fCells); ++cases) ARROW_RETURN_NOT_OK(AppendCase());
    } catch (const HostIOError& error) {  // which does not pass through a stream
      return arrow::Status::Invalid(error.Place(), ": ", error.Reason());
    }
    batch->reset();
    if (cases == 0) return arrow::Status::OK();
    arrow::ArrayVector arrays;
    for (CellBuilder& builder : fBuilders) {
      ARROW_ASSIGN_OR_RAISE(auto array, builder.Finish());
      arrays.push_back(std::move(array));
    }
    *batch = arrow::RecordBatch::Make(fpSchema, cases, std::move(arrays));
    return arrow::Status::OK();
  }

 private:
  arrow::Status AppendCase() {
    for (std::size_t k = 0; k < fBuilders.size(); ++k) {
      const auto at = static_cast<std::size_t>(fColumns[k]);
      const bool isThere = at < fCells.size() && !IsNull(fCells[at], fNulls[at]);
      ARROW_RETURN_NOT_OK(isThere ? fBuilders[k].Append(TextOf(fCells[at], k))
                                  : fBuilders[k].AppendNull());
    }
    return arrow::Status::OK();
  }

  // A cell's text as its column has it.
  const std::string& TextOf(const RowCell& cell, std::size_t k) const {
    if (cell.fClock.empty()) return cell.fText;
    return arrow::is_numeric(fpSchema->field(static_cast<int>(k))->type()->id()) ? cell.fText
                                                                                 : cell.fClock;
  }

  std::unique_ptr<ICellRows> fpRows;
  std::shared_ptr<arrow::Schema> fpSchema;
  std::vector<int> fColumns;
  std::vector<std::vector<std::string>> fNulls;
  std::vector<CellBuilder> fBuilders;
  std::vector<RowCell> fCells;
};

}  // namespace

CellRowsSource::CellRowsSource(std::string name, OpenRows openRows, CellRules rules)
    : fName(std::move(name)),
      fStamp(fName),
      fOpenRows(std::move(openRows)),
      fRules(std::move(rules)) {
  Inspect();
}

void CellRowsSource::Inspect() {
  const std::unique_ptr<ICellRows> rows = fOpenRows();
  std::vector<RowCell> cells;
  const auto declare = [this, &rows] {
    while (fColumns.size() < rows->Names().size()) Declare(rows->Names()[fColumns.size()]);
  };
  declare();
  for (; rows->Next(cells); ++fNCases) {
    declare();
    Observe(cells, *rows);
  }
  if (fColumns.empty()) throw HostIOError(fName, "", "there are no columns in it");
  fNotes = rows->Notes();
  for (const CellKinds& column : fColumns) {
    for (std::string& note : column.Notes()) fNotes.push_back(std::move(note));
  }
}

void CellRowsSource::Declare(const std::string& name) {
  const auto declared = fRules.fTypes.find(name);
  fColumns.emplace_back(name, declared != fRules.fTypes.end() ? declared->second : FieldType::kAny);
  fNulls.push_back(fRules.fNullTokens);
  const auto own = fRules.fColumnNulls.find(name);
  if (own == fRules.fColumnNulls.end()) return;
  fNulls.back().insert(fNulls.back().end(), own->second.begin(), own->second.end());
}

void CellRowsSource::Observe(const std::vector<RowCell>& cells, const ICellRows& rows) {
  for (std::size_t j = 0; j < cells.size(); ++j) {
    if (IsNull(cells[j], fNulls[j])) continue;
    CellKinds& column = fColumns[j];
    if (column.Observe(cells[j], [&rows, j] { return rows.Place(j); })) continue;
    throw HostIOError(
        fName, rows.Place(j),
        NotAsDeclared(cells[j].Shown(), fRules.fTypes.at(column.Name()), column.Name()));
  }
}

void CellRowsSource::Open(const std::vector<int>* columns, ArrowArrayStream* stream) {
  Types types;
  for (const CellKinds& column : fColumns) types.push_back(CsvTypeOf(column.Kinds()));
  OpenAs(types, columns, stream);
}

void CellRowsSource::OpenOriginal(const std::vector<int>* columns, ArrowArrayStream* stream) {
  Types types;
  for (const CellKinds& column : fColumns) {
    const unsigned kinds = column.Kinds();
    const bool isKept = kinds == kCsvAll || !column.IsNumber() || (kinds & kCsvHeld);
    types.push_back(kinds != kCsvAll && (kinds & kCsvWhole) ? arrow::int64()
                    : isKept                                ? CsvTypeOf(kinds)
                                                            : arrow::utf8());
  }
  OpenAs(types, columns, stream);
}

CellRowsSource::Kept CellRowsSource::KeptOf(int place) {
  const CellKinds& column = fColumns[static_cast<std::size_t>(place)];
  const unsigned kinds = column.Kinds();
  if (kinds == kCsvText) return Kept::kAll;
  if (!column.IsNumber()) return Kept::kPart;
  if (kinds & kCsvWhole) return column.AreDigitsLost() ? Kept::kPart : Kept::kAllOfIntegers;
  return kinds & kCsvHeld ? Kept::kAll : Kept::kPart;
}

void CellRowsSource::OpenAs(const Types& types, const std::vector<int>* columns,
                            ArrowArrayStream* stream) const {
  fStamp.Check(fName);
  std::vector<int> wanted(types.size());
  std::iota(wanted.begin(), wanted.end(), 0);
  if (columns != nullptr) wanted = *columns;
  arrow::FieldVector fields;
  for (const int column : wanted) {
    const auto j = static_cast<std::size_t>(column);
    fields.push_back(arrow::field(fColumns[j].Name(), types[j]));
  }
  auto reader = std::make_shared<CellBatches>(fOpenRows(), arrow::schema(std::move(fields)),
                                              std::move(wanted), fNulls);
  Check(arrow::ExportRecordBatchReader(std::move(reader), stream), fName);
}

}  // namespace MCHost
