// A connection to a database.
#pragma once

#include <arrow/type_fwd.h>

#include <memory>
#include <string>
#include <vector>

#include "host/arrow/Adbc.h"
#include "host/arrow/DatabaseAddress.h"

namespace MCHost {

class DatabaseLink {
 public:
  // For reading alone where the database has such links. `source` names it in messages, so that no
  // password is seen in them. Throws HostIOError.
  DatabaseLink(const DatabaseAddress& address, AdbcDriver& driver, std::string source);
  DatabaseLink(const DatabaseLink&) = delete;
  DatabaseLink& operator=(const DatabaseLink&) = delete;
  ~DatabaseLink();

  // What a query gives, batch by batch. The link must outlive it. Throws HostIOError.
  std::shared_ptr<arrow::RecordBatchReader> Run(const std::string& query);

  // The texts of the first column of what a query gives. Throws HostIOError.
  std::vector<std::string> Texts(const std::string& query);

 private:
  void SetPlace(const DatabaseAddress& address);
  void SetOption(const char* name, const std::string& value);
  void Check(AdbcStatusCode status, AdbcError& error) const;

  std::string fSource;
  AdbcDriver& fDriver;
  AdbcDatabase fDatabase{};
  AdbcConnection fConnection{};
};

}  // namespace MCHost
