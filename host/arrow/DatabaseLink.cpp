#include "host/arrow/DatabaseLink.h"

#include <arrow/c/abi.h>
#include <arrow/c/bridge.h>
#include <arrow/record_batch.h>
#include <arrow/scalar.h>

#include <filesystem>
#include <string_view>
#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

// A path as part of an address that asks for a file to be read.
std::string FileAddress(const std::string& path) {
  std::string address = "file:";
  for (const char c : std::filesystem::absolute(path).string()) {
    constexpr std::string_view kSpecial = "%?#";
    const std::size_t at = kSpecial.find(c);
    if (at == std::string_view::npos) {
      address += c;
    } else {
      address += at == 0 ? "%25" : at == 1 ? "%3f" : "%23";
    }
  }
  return address + "?mode=ro";
}

// The last of a driver's sentences is the one on the fault, without the lines that show it.
std::string Reason(const char* message) {
  std::string text(message != nullptr && *message != '\0' ? message
                                                          : "the driver does not say why");
  for (char& c : text) {
    if (c == '\n' || c == '\r' || c == '\t') c = ' ';
  }
  text.resize(text.find_last_not_of(' ') + 1);
  return text;
}

struct Statement {
  explicit Statement(AdbcDriver& driver) : fDriver(driver) {}
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement() {
    AdbcError error{};
    if (fStatement.private_data != nullptr) fDriver.StatementRelease(&fStatement, &error);
  }

  AdbcDriver& fDriver;
  AdbcStatement fStatement{};
};

// Keeps the statement as long as what it gives is read.
class QueryBatches final : public arrow::RecordBatchReader {
 public:
  QueryBatches(std::unique_ptr<Statement> statement,
               std::shared_ptr<arrow::RecordBatchReader> batches)
      : fpStatement(std::move(statement)), fpBatches(std::move(batches)) {}

  std::shared_ptr<arrow::Schema> schema() const override { return fpBatches->schema(); }
  arrow::Status ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) override {
    return fpBatches->ReadNext(batch);
  }

 private:
  std::unique_ptr<Statement> fpStatement;
  std::shared_ptr<arrow::RecordBatchReader> fpBatches;
};

}  // namespace

DatabaseLink::DatabaseLink(const DatabaseAddress& address, AdbcDriver& driver, std::string source)
    : fSource(std::move(source)), fDriver(driver) {
  const DatabaseKind& kind = *address.fpKind;
  std::error_code missing;
  if (kind.fPlace != DatabaseKind::kServer &&
      !std::filesystem::is_regular_file(address.fPlace, missing)) {
    throw HostIOError(fSource, "", "there is no file \"" + address.fPlace + "\"");
  }
  AdbcError error{};
  Check(fDriver.DatabaseNew(&fDatabase, &error), error);
  try {
    SetPlace(address);
    Check(fDriver.DatabaseInit(&fDatabase, &error), error);
    Check(fDriver.ConnectionNew(&fConnection, &error), error);
    Check(fDriver.ConnectionInit(&fConnection, &fDatabase, &error), error);
  } catch (...) {
    if (fConnection.private_data != nullptr) fDriver.ConnectionRelease(&fConnection, &error);
    fDriver.DatabaseRelease(&fDatabase, &error);
    throw;
  }
}

DatabaseLink::~DatabaseLink() {
  AdbcError error{};
  fDriver.ConnectionRelease(&fConnection, &error);
  fDriver.DatabaseRelease(&fDatabase, &error);
}

std::shared_ptr<arrow::RecordBatchReader> DatabaseLink::Run(const std::string& query) {
  auto statement = std::make_unique<Statement>(fDriver);
  AdbcError error{};
  Check(fDriver.StatementNew(&fConnection, &statement->fStatement, &error), error);
  Check(fDriver.StatementSetSqlQuery(&statement->fStatement, query.c_str(), &error), error);
  ArrowArrayStream stream{};
  Check(fDriver.StatementExecuteQuery(&statement->fStatement, &stream, nullptr, &error), error);
  auto batches = Value(arrow::ImportRecordBatchReader(&stream), fSource);
  return std::make_shared<QueryBatches>(std::move(statement), std::move(batches));
}

std::vector<std::string> DatabaseLink::Texts(const std::string& query) {
  std::vector<std::string> texts;
  const auto batches = Run(query);
  while (const auto batch = Value(batches->Next(), fSource)) {
    for (std::int64_t i = 0; i < batch->num_rows(); ++i) {
      texts.push_back(Value(batch->column(0)->GetScalar(i), fSource)->ToString());
    }
  }
  return texts;
}

void DatabaseLink::SetPlace(const DatabaseAddress& address) {
  switch (address.fpKind->fPlace) {
    case DatabaseKind::kFileByAddress:
      return SetOption("uri", FileAddress(address.fPlace));
    case DatabaseKind::kFile:
      SetOption("path", address.fPlace);
      return SetOption("access_mode", "READ_ONLY");
    case DatabaseKind::kServer:
      return SetOption("uri", address.fPlace);
  }
}

void DatabaseLink::SetOption(const char* name, const std::string& value) {
  AdbcError error{};
  Check(fDriver.DatabaseSetOption(&fDatabase, name, value.c_str(), &error), error);
}

void DatabaseLink::Check(AdbcStatusCode status, AdbcError& error) const {
  if (status == 0) return;
  const std::string reason = Reason(error.message);
  if (error.release != nullptr) error.release(&error);
  throw HostIOError(fSource, "", reason);
}

}  // namespace MCHost
