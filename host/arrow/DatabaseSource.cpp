#include "host/arrow/DatabaseSource.h"

#include <arrow/c/bridge.h>
#include <arrow/io/file.h>
#include <arrow/ipc/writer.h>
#include <arrow/record_batch.h>
#include <arrow/type.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/arrow/DatabaseDriver.h"
#include "host/arrow/DeclaredKinds.h"
#include "host/session/HostIOError.h"
#include "host/text/KeywordMatch.h"

namespace MCHost {

namespace {

constexpr std::int64_t kMaxBatchCases = 16384;

// A query that ends as it does in a file of queries can stand inside another one.
std::string WithoutEnd(std::string query) {
  query.resize(query.find_last_not_of("; \t\r\n") + 1);
  return query;
}

std::string NamesOf(const std::vector<std::string>& tables) {
  constexpr std::size_t kMostShown = 20;
  std::vector<std::string> shown;
  for (std::size_t i = 0; i < std::min(tables.size(), kMostShown); ++i) {
    shown.push_back(Quoted(tables[i]));
  }
  if (tables.size() > kMostShown) shown.push_back("another one");
  return JoinAlternatives(shown);
}

// Chosen columns of all.
class ChosenColumns final : public arrow::RecordBatchReader {
 public:
  ChosenColumns(std::shared_ptr<arrow::RecordBatchReader> batches, std::vector<int> columns)
      : fpBatches(std::move(batches)), fColumns(std::move(columns)) {
    arrow::FieldVector fields;
    for (const int column : fColumns) fields.push_back(fpBatches->schema()->field(column));
    fpSchema = arrow::schema(std::move(fields));
  }

  std::shared_ptr<arrow::Schema> schema() const override { return fpSchema; }
  arrow::Status ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) override {
    ARROW_RETURN_NOT_OK(fpBatches->ReadNext(batch));
    if (*batch == nullptr) return arrow::Status::OK();
    return (*batch)->SelectColumns(fColumns).Value(batch);
  }

 private:
  std::shared_ptr<arrow::RecordBatchReader> fpBatches;
  std::vector<int> fColumns;
  std::shared_ptr<arrow::Schema> fpSchema;
};

}  // namespace

DatabaseSource::DatabaseSource(const DatabaseRequest& request)
    : fName(WithoutPassword(request.fAddress)), fbAgain(request.fbAgain) {
  DatabaseAddress address = ReadDatabaseAddress(request.fAddress);
  AdbcDriver& driver = LoadDriver(*address.fpKind, request.fDriverPlaces, fName);
  fpLink = std::make_unique<DatabaseLink>(address, driver, fName);
  std::string query = WithoutEnd(request.fQuery);
  if (query.empty()) {
    ChooseTable(address);
    const std::string schema = address.fSchema.empty() ? "" : QuotedName(address.fSchema) + ".";
    query = "SELECT * FROM " + schema + QuotedName(address.fTable);
  } else if (!address.fTable.empty()) {
    throw HostIOError(fName, "", "name a table or give a query, not both");
  }
  fpTypes = std::make_unique<DatabaseTypes>(*fpLink, *address.fpKind, query, fName);
}

void DatabaseSource::ChooseTable(DatabaseAddress& address) {
  const DatabaseKind& kind = *address.fpKind;
  const bool isInSchema = !address.fSchema.empty() && kind.fListInSchema != nullptr;
  const std::vector<std::string> tables = fpLink->Texts(
      isInSchema ? kind.fListInSchema + QuotedText(address.fSchema) + " ORDER BY table_name"
                 : kind.fListTables);
  if (std::find(tables.begin(), tables.end(), address.fTable) != tables.end()) return;
  if (tables.empty()) throw HostIOError(fName, "", "there is no table in the database");
  if (address.fTable.empty() && tables.size() == 1) {
    address.fTable = tables[0];
    return;
  }
  if (address.fTable.empty()) {
    throw HostIOError(fName, "", "name one of the tables: ?table= " + NamesOf(tables));
  }
  throw HostIOError(fName, "",
                    "there is no table " + Quoted(address.fTable) +
                        DidYouMean(address.fTable, tables) + " (there is " + NamesOf(tables) + ")");
}

void DatabaseSource::Open(const std::vector<int>* columns, ArrowArrayStream* stream) {
  if (fbAgain && fpPutBy == nullptr) PutBy();
  if (fpPutBy != nullptr) return fpPutBy->Open(columns, stream);
  std::shared_ptr<arrow::RecordBatchReader> batches = fpTypes->Run(*fpLink);
  if (columns != nullptr) batches = std::make_shared<ChosenColumns>(std::move(batches), *columns);
  Check(arrow::ExportRecordBatchReader(std::move(batches), stream), fName);
}

void DatabaseSource::PutBy() {
  const std::string folder = std::filesystem::temp_directory_path().string();
  auto file = std::make_unique<TemporaryFile>(folder);
  const auto output = Value(arrow::io::FileOutputStream::Open(dup(file->Descriptor())), folder);
  const auto batches = fpTypes->Run(*fpLink);
  const auto writer = Value(arrow::ipc::MakeFileWriter(output, batches->schema()), folder);
  while (const auto batch = Value(batches->Next(), fName)) {
    for (std::int64_t at = 0; at < batch->num_rows(); at += kMaxBatchCases) {
      Check(writer->WriteRecordBatch(*batch->Slice(at, kMaxBatchCases)), folder);
    }
  }
  Check(writer->Close(), folder);
  Check(output->Close(), folder);
  fpFile = std::move(file);
  fpPutBy = std::make_unique<IpcSource>(fpFile->Path());
}

}  // namespace MCHost
