// A table of a database, or what a query gives, as a source of data.
//
// A query may give its cases in another order the next time, so it runs once: cases that are needed
// again are put by in a temporary file.
#pragma once

#include <arrow/type_fwd.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/arrow/DatabaseAddress.h"
#include "host/arrow/DatabaseLink.h"
#include "host/arrow/DatabaseTypes.h"
#include "host/arrow/IpcSource.h"
#include "host/data/IArrowSource.h"
#include "host/session/TemporaryFile.h"

namespace MCHost {

struct DatabaseRequest {
  std::string fAddress;                    // as IsDatabaseAddress() takes it
  std::string fQuery;                      // empty for the table that the address names
  std::vector<std::string> fDriverPlaces;  // as LoadDriver() takes them
  bool fbAgain = true;                     // the cases are needed more than once
};

class DatabaseSource final : public IArrowSource {
 public:
  // Connects, and asks what the columns are. A database of one table needs no name of it. Throws
  // HostIOError.
  explicit DatabaseSource(const DatabaseRequest& request);

  const std::string& Name() const override { return fName; }
  void Open(const std::vector<int>* columns, ArrowArrayStream* stream) override;
  bool HasTypes() const override { return true; }
  std::int64_t CaseCount() const override { return fpPutBy ? fpPutBy->CaseCount() : -1; }
  std::vector<std::string> Notes() const override { return fpTypes->Notes(); }

 private:
  void ChooseTable(DatabaseAddress& address);
  void PutBy();

  std::string fName;  // the address without a password
  bool fbAgain;
  std::unique_ptr<DatabaseLink> fpLink;
  std::unique_ptr<DatabaseTypes> fpTypes;
  std::unique_ptr<TemporaryFile> fpFile;  // of the cases that were put by
  std::unique_ptr<IpcSource> fpPutBy;
};

}  // namespace MCHost
