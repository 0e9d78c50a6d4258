#include "host/arrow/DatabaseTypes.h"

#include <arrow/array.h>
#include <arrow/record_batch.h>
#include <arrow/type.h>
#include <arrow/util/key_value_metadata.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

std::string Around(const std::string& query, const std::string& columns) {
  return "SELECT " + columns + " FROM (" + query + ") AS predselect_data";
}

void AddToList(std::string& list, const std::string& item) {
  list += (list.empty() ? "" : ", ") + item;
}

// Counts the cells of each type, for every column in order.
std::string CountingColumns(const arrow::FieldVector& fields) {
  std::string columns;
  for (const auto& field : fields) {
    for (const char* type : {"text", "real", "integer", "blob"}) {
      AddToList(columns,
                "TOTAL(typeof(" + QuotedName(field->name()) + ") = " + QuotedText(type) + ")");
    }
  }
  return columns;
}

bool IsExactNumber(const arrow::Field& field) {
  if (field.metadata() == nullptr) return false;
  const auto type = field.metadata()->Get("ADBC:postgresql:typname");
  return type.ok() && *type == "numeric";
}

// All but the first case.
class WithoutFirst final : public arrow::RecordBatchReader {
 public:
  explicit WithoutFirst(std::shared_ptr<arrow::RecordBatchReader> batches)
      : fpBatches(std::move(batches)) {}

  std::shared_ptr<arrow::Schema> schema() const override { return fpBatches->schema(); }
  arrow::Status ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) override {
    ARROW_RETURN_NOT_OK(fpBatches->ReadNext(batch));
    if (fbFirst && *batch != nullptr) *batch = (*batch)->Slice(1);
    fbFirst = false;
    return arrow::Status::OK();
  }

 private:
  std::shared_ptr<arrow::RecordBatchReader> fpBatches;
  bool fbFirst = true;
};

}  // namespace

struct DatabaseTypes::CellCounts {
  std::int64_t fTexts;
  std::int64_t fFractions;
  std::int64_t fWhole;
  std::int64_t fBytes;
};

DatabaseTypes::DatabaseTypes(DatabaseLink& link, const DatabaseKind& kind, const std::string& query,
                             std::string source)
    : fSource(std::move(source)), fQuery(query) {
  if (kind.fTypes == DatabaseKind::kOfColumns) return;
  const auto schema = link.Run(query)->schema();
  if (kind.fTypes == DatabaseKind::kOfCells) {
    SettleCells(link, *schema);
  } else {
    SettleExactNumbers(*schema);
  }
}

std::shared_ptr<arrow::RecordBatchReader> DatabaseTypes::Run(DatabaseLink& link) const {
  if (fColumns.empty()) return link.Run(fQuery);
  const std::string query = Around(fQuery, fColumns);
  if (fSample.empty()) return link.Run(query);
  return std::make_shared<WithoutFirst>(link.Run("SELECT " + fSample + " UNION ALL " + query));
}

void DatabaseTypes::SettleCells(DatabaseLink& link, const arrow::Schema& schema) {
  // A query has two thousand columns at most.
  constexpr std::ptrdiff_t kMostColumns = 400;
  const arrow::FieldVector& fields = schema.fields();
  for (auto at = fields.begin(); at != fields.end();) {
    const arrow::FieldVector some(at, at + std::min(fields.end() - at, kMostColumns));
    const auto counts = link.Run(Around(fQuery, CountingColumns(some)));
    const auto batch = Value(counts->Next(), fSource);
    for (std::size_t j = 0; j < some.size(); ++j) {
      const auto count = [&](std::size_t type) {
        const auto column = batch->column(static_cast<int>(4 * j + type));
        return static_cast<std::int64_t>(static_cast<const arrow::DoubleArray&>(*column).Value(0));
      };
      Settle(some[j]->name(), {count(0), count(1), count(2), count(3)});
    }
    at += static_cast<std::ptrdiff_t>(some.size());
  }
}

void DatabaseTypes::Settle(const std::string& name, const CellCounts& cells) {
  if (cells.fBytes > 0) {
    throw HostIOError(fSource, "column \"" + name + "\"",
                      "it holds bytes (BLOB), which cannot be used; choose columns with --query "
                      "\"SELECT ...\"");
  }
  const std::string quoted = QuotedName(name);
  const char* const type = cells.fTexts > 0 ? "TEXT" : cells.fFractions > 0 ? "REAL" : "INTEGER";
  const char* const value = cells.fTexts > 0 ? "''" : cells.fFractions > 0 ? "0.0" : "0";
  AddToList(fColumns, "CAST(" + quoted + " AS " + type + ") AS " + quoted);
  AddToList(fSample, std::string(value) + " AS " + quoted);
  const std::int64_t numbers = cells.fFractions + cells.fWhole;
  if (cells.fTexts == 0 || numbers == 0) return;
  fNotes.push_back("Column \"" + name + "\" holds " + std::to_string(cells.fTexts) + " text" +
                   (cells.fTexts == 1 ? "" : "s") + " and " + std::to_string(numbers) + " number" +
                   (numbers == 1 ? "" : "s") + ", so all of it is read as text.");
}

void DatabaseTypes::SettleExactNumbers(const arrow::Schema& schema) {
  const arrow::FieldVector& fields = schema.fields();
  const auto isExact = [](const auto& field) { return IsExactNumber(*field); };
  if (std::none_of(fields.begin(), fields.end(), isExact)) return;
  for (const auto& field : fields) {
    const std::string name = QuotedName(field->name());
    AddToList(fColumns,
              isExact(field) ? "CAST(" + name + " AS double precision) AS " + name : name);
  }
}

}  // namespace MCHost
