// A source of data over cases whose cells say what they are: JSON Lines, sheets.
//
// They are gone over once when it is made, which settles what the columns hold, and again whenever
// it is opened; memory does not grow with them.
#pragma once

#include <arrow/type_fwd.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/arrow/CellKinds.h"
#include "host/arrow/CellRows.h"
#include "host/arrow/FileStamp.h"
#include "host/data/IArrowSource.h"

namespace MCHost {

struct CellRules {
  std::vector<std::string> fNullTokens;                          // texts that stand for no value
  std::map<std::string, FieldType> fTypes;                       // declared types by column name
  std::map<std::string, std::vector<std::string>> fColumnNulls;  // further texts, by column name
};

class CellRowsSource final : public IArrowSource {
 public:
  using OpenRows = std::function<std::unique_ptr<ICellRows>()>;

  // `name` is the file behind the rows, or what messages call it. Throws HostIOError.
  CellRowsSource(std::string name, OpenRows openRows, CellRules rules);

  const std::string& Name() const override { return fName; }
  void Open(const std::vector<int>* columns, ArrowArrayStream* stream) override;
  // Whole numbers are 64-bit integers, and numbers that no double holds are texts.
  void OpenOriginal(const std::vector<int>* columns, ArrowArrayStream* stream) override;
  Kept KeptOf(int column) override;
  std::int64_t CaseCount() const override { return fNCases; }
  std::vector<std::string> Notes() const override { return fNotes; }

 private:
  using Types = std::vector<std::shared_ptr<arrow::DataType>>;

  void Inspect();
  void Declare(const std::string& name);
  void Observe(const std::vector<RowCell>& cells, const ICellRows& rows);
  void OpenAs(const Types& types, const std::vector<int>* columns, ArrowArrayStream* stream) const;

  std::string fName;
  FileStamp fStamp;
  OpenRows fOpenRows;
  CellRules fRules;
  std::vector<CellKinds> fColumns;
  std::vector<std::vector<std::string>> fNulls;  // of each column
  std::int64_t fNCases = 0;
  std::vector<std::string> fNotes;
};

}  // namespace MCHost
