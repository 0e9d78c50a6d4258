#include "host/arrow/SavedBatches.h"

#include <arrow/array.h>
#include <arrow/array/builder_primitive.h>
#include <arrow/array/concatenate.h>
#include <arrow/c/bridge.h>
#include <arrow/record_batch.h>
#include <arrow/type.h>
#include <arrow/util/key_value_metadata.h>

#include <algorithm>
#include <numeric>
#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/arrow/BatchSpool.h"
#include "host/data/ArrowCDataInterface.h"
#include "host/data/DataTable.h"
#include "host/data/TableBatches.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr char kHeld[] = "data";  // what the columns that the table holds are called in messages

// Cells of one batch: what a writer must hold at a time.
constexpr std::int64_t kBatchCells = std::int64_t{1} << 20;

std::shared_ptr<arrow::RecordBatchReader> Import(ArrowArrayStream& stream,
                                                 const std::string& name) {
  return Value(arrow::ImportRecordBatchReader(&stream), name);
}

// Variables as the table itself holds them.
std::shared_ptr<arrow::RecordBatchReader> HeldColumns(DataTable& table,
                                                      const std::vector<int>& columns) {
  ArrowArrayStream stream{};
  const std::shared_ptr<ITable> borrowed(std::shared_ptr<void>(), &table);
  WriteArrowStream(std::make_unique<TableBatches>(borrowed, columns), &stream);
  return Import(stream, kHeld);
}

std::shared_ptr<arrow::RecordBatchReader> OpenOriginal(IArrowSource& source,
                                                       const std::vector<int>& columns) {
  ArrowArrayStream stream{};
  source.OpenOriginal(&columns, &stream);
  return Import(stream, source.Name());
}

std::shared_ptr<arrow::Field> WithLabel(std::shared_ptr<arrow::Field> field,
                                        const std::string& label) {
  if (label.empty()) return field;
  auto metadata = field->HasMetadata() ? field->metadata()->Copy()
                                       : std::make_shared<arrow::KeyValueMetadata>();
  const bool isNew = !metadata->Contains("label");
  if (isNew) metadata->Append("label", label);
  return isNew ? field->WithMetadata(std::move(metadata)) : field;
}

// The whole numbers that doubles are.
std::shared_ptr<arrow::Array> Integers(const arrow::Array& numbers) {
  const auto& doubles = static_cast<const arrow::DoubleArray&>(numbers);
  arrow::Int64Builder builder;
  Check(builder.Reserve(doubles.length()), kHeld);
  for (std::int64_t i = 0; i < doubles.length(); ++i) {
    if (doubles.IsNull(i)) {
      builder.UnsafeAppendNull();
    } else {
      builder.UnsafeAppend(static_cast<std::int64_t>(doubles.Value(i)));
    }
  }
  return Value(builder.Finish(), kHeld);
}

}  // namespace

std::shared_ptr<arrow::RecordBatchReader> AddedColumns(DataTable& table) {
  std::vector<int> added(static_cast<std::size_t>(table.ColumnCount() - table.OwnColumnCount()));
  std::iota(added.begin(), added.end(), table.OwnColumnCount());
  return HeldColumns(table, added);
}

// Gives the cases of a stream in pieces of any size.
class SavedBatches::Reader {
 public:
  Reader(std::shared_ptr<arrow::RecordBatchReader> batches, std::string name)
      : fpBatches(std::move(batches)), fName(std::move(name)) {}

  std::shared_ptr<arrow::Schema> Schema() const { return fpBatches->schema(); }

  // Cases of the batch that the next ones are in; 0 at the end.
  std::int64_t CasesAhead() {
    while (fAt == fCases && !fbEnded) {
      Check(fpBatches->ReadNext(&fpBatch), fName);
      fbEnded = fpBatch == nullptr;
      fAt = 0;
      fCases = fbEnded ? 0 : fpBatch->num_rows();
      if (!fbEnded) Check(fpBatch->ValidateFull(), fName);
    }
    return fCases - fAt;
  }

  // Appends the columns of the next n cases.
  void Take(std::int64_t n, arrow::ArrayVector& columns) {
    std::vector<arrow::ArrayVector> pieces(static_cast<std::size_t>(Schema()->num_fields()));
    while (n > 0) {
      const std::int64_t there = std::min(CasesAhead(), n);
      if (there == 0) Changed();
      for (std::size_t j = 0; j < pieces.size(); ++j) {
        pieces[j].push_back(fpBatch->column(static_cast<int>(j))->Slice(fAt, there));
      }
      fAt += there;
      n -= there;
    }
    for (const arrow::ArrayVector& piece : pieces) {
      columns.push_back(piece.size() == 1 ? piece[0] : Value(arrow::Concatenate(piece), fName));
    }
  }

  void ExpectEnd() {
    if (CasesAhead() > 0) Changed();
  }

  [[noreturn]] void Changed() const {
    throw HostIOError(fName, "", "the data changed while they were read");
  }

 private:
  std::shared_ptr<arrow::RecordBatchReader> fpBatches;
  std::string fName;
  std::shared_ptr<arrow::RecordBatch> fpBatch;
  std::int64_t fCases = 0;
  std::int64_t fAt = 0;
  bool fbEnded = false;
};

SavedBatches::SavedBatches(DataTable& table, const std::vector<int>& own)
    : fCasesLeft(table.CaseCount()) {
  const auto nColumns = static_cast<std::int64_t>(own.size()) + table.ColumnCount();
  fMostCases = std::max<std::int64_t>(kBatchCells / std::max<std::int64_t>(nColumns, 1), 1);
  const std::vector<int> given = OpenOwn(table, own);
  AddReader(AddedColumns(table), kHeld);
  for (const int column : own) {
    const auto place = std::find(given.begin(), given.end(), column);
    fOrder.push_back(static_cast<std::size_t>(place - given.begin()));
  }
  SetSchema(table, own);
}

SavedBatches::~SavedBatches() = default;

void SavedBatches::AddReader(std::shared_ptr<arrow::RecordBatchReader> batches,
                             const std::string& name) {
  fReaders.push_back(std::make_unique<Reader>(std::move(batches), name));
}

// Returns the columns as the readers give them. A source gives its columns in ascending order.
std::vector<int> SavedBatches::OpenOwn(DataTable& table, std::vector<int> own) {
  std::sort(own.begin(), own.end());
  IArrowSource* source = table.Source();
  const auto isRead = [source](int column) {
    return source != nullptr && source->KeptOf(column) == IArrowSource::Kept::kPart;
  };
  const auto firstHeld = std::stable_partition(own.begin(), own.end(), isRead);
  fbSetsPace = firstHeld != own.begin();
  if (fbSetsPace) OpenSource(table, {own.begin(), firstHeld});
  const std::vector<int> held(firstHeld, own.end());
  if (held.empty()) return own;
  AddReader(HeldColumns(table, held), kHeld);
  for (std::size_t j = 0; source != nullptr && j < held.size(); ++j) {
    if (source->KeptOf(held[j]) != IArrowSource::Kept::kAllOfIntegers) continue;
    fIntegers.push_back(own.size() - held.size() + j);
  }
  return own;
}

void SavedBatches::OpenSource(const DataTable& table, const std::vector<int>& columns) {
  IArrowSource& source = *table.Source();
  const auto most = static_cast<std::size_t>(source.ColumnsAtATime());
  if (most >= columns.size() || table.KeepsCells()) {
    return AddReader(OpenOriginal(source, columns), source.Name());
  }
  for (std::size_t first = 0; first < columns.size(); first += most) {
    const auto begin = columns.begin() + static_cast<std::ptrdiff_t>(first);
    const std::size_t n = std::min(most, columns.size() - first);
    const auto group = OpenOriginal(source, {begin, begin + static_cast<std::ptrdiff_t>(n)});
    AddReader(SpoolBatches(*group, fMostCases, source.Name()), source.Name());
  }
}

void SavedBatches::SetSchema(const DataTable& table, const std::vector<int>& own) {
  arrow::FieldVector given;
  for (const auto& reader : fReaders) {
    for (const auto& field : reader->Schema()->fields()) given.push_back(field);
  }
  for (const std::size_t j : fIntegers) given[j] = given[j]->WithType(arrow::int64());
  for (std::size_t j = fOrder.size(); j < given.size(); ++j) fOrder.push_back(j);
  arrow::FieldVector fields;
  for (const std::size_t place : fOrder) {
    const std::size_t j = fields.size();
    fields.push_back(j < own.size() ? WithLabel(given[place], table.GetVariable(own[j]).GetLabel())
                                    : given[place]);
  }
  // What is said of all columns together may be wrong of some of them.
  const bool isWhole = static_cast<int>(own.size()) == table.OwnColumnCount();
  fpSchema =
      arrow::schema(std::move(fields), isWhole ? fReaders[0]->Schema()->metadata() : nullptr);
}

std::shared_ptr<arrow::RecordBatch> SavedBatches::Next() {
  Reader& first = *fReaders[0];
  const std::int64_t most = std::min(fMostCases, fCasesLeft);
  const std::int64_t n = fbSetsPace ? std::min(first.CasesAhead(), most) : most;
  if (n == 0) {
    for (const auto& reader : fReaders) reader->ExpectEnd();
    if (fCasesLeft > 0) first.Changed();
    return nullptr;
  }
  arrow::ArrayVector given;
  for (const auto& reader : fReaders) reader->Take(n, given);
  fCasesLeft -= n;
  for (const std::size_t j : fIntegers) given[j] = Integers(*given[j]);
  arrow::ArrayVector columns;
  for (const std::size_t place : fOrder) columns.push_back(given[place]);
  return arrow::RecordBatch::Make(fpSchema, n, std::move(columns));
}

}  // namespace MCHost
