// The cases of a sheet: its first row that is not empty holds the names, every other one a case.
//
// Empty rows are passed over, and columns that have neither a name nor a cell. An empty text is no
// value.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/arrow/CellRows.h"
#include "host/arrow/Sheet.h"

namespace MCHost {

class SheetRows final : public ICellRows {
 public:
  // `source` names the file in messages. Throws HostIOError.
  SheetRows(std::unique_ptr<ISheet> sheet, SheetChoice choice, std::string source);

  bool Next(std::vector<RowCell>& cells) override;
  const std::vector<std::string>& Names() const override { return fNames; }
  std::string Place(std::size_t column) const override;
  std::vector<std::string> Notes() const override;

 private:
  static constexpr std::size_t kNoColumn = static_cast<std::size_t>(-1);

  bool NextRow();
  void ReadHeader();
  std::string CellPlace(std::size_t sheetColumn) const;

  std::unique_ptr<ISheet> fpSheet;
  SheetChoice fChoice;
  std::string fSource;
  std::vector<std::string> fNames;
  std::vector<std::size_t> fColumns;       // of the cases, by column of the sheet
  std::vector<std::size_t> fSheetColumns;  // the other way round
  std::int64_t fHeaderRow = 0;
  SheetRow fRow;
  std::int64_t fTimes = 0;  // the row is still to be given so often
};

}  // namespace MCHost
