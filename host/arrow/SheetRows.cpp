#include "host/arrow/SheetRows.h"

#include <algorithm>
#include <utility>

#include "host/arrow/DeclaredKinds.h"
#include "host/session/HostIOError.h"
#include "host/text/KeywordMatch.h"

namespace MCHost {

namespace {

bool IsEmpty(const RowCell& cell) {
  return cell.fKind == RowCell::kNone || (cell.fKind == RowCell::kText && cell.fText.empty());
}

}  // namespace

SheetRows::SheetRows(std::unique_ptr<ISheet> sheet, SheetChoice choice, std::string source)
    : fpSheet(std::move(sheet)), fChoice(std::move(choice)), fSource(std::move(source)) {
  ReadHeader();
}

// Goes to the next row that is not empty.
bool SheetRows::NextRow() {
  while (fpSheet->Next(fRow)) {
    if (!std::all_of(fRow.fCells.begin(), fRow.fCells.end(), IsEmpty)) return true;
  }
  return false;
}

void SheetRows::ReadHeader() {
  if (!NextRow()) return;
  fHeaderRow = fRow.fNumber;
  fTimes = fRow.fTimes - 1;
  for (std::size_t j = 0; j < fRow.fCells.size(); ++j) {
    const RowCell& cell = fRow.fCells[j];
    fColumns.push_back(IsEmpty(cell) ? kNoColumn : fNames.size());
    if (IsEmpty(cell)) continue;
    const std::string& name = cell.Shown();
    if (std::find(fNames.begin(), fNames.end(), name) != fNames.end()) {
      throw HostIOError(fSource, CellPlace(j),
                        "a column named " + Quoted(name) + " is there already");
    }
    fNames.push_back(name);
    fSheetColumns.push_back(j);
  }
}

bool SheetRows::Next(std::vector<RowCell>& cells) {
  if (fTimes == 0) {
    if (!NextRow()) return false;
    fTimes = fRow.fTimes;
  } else {
    ++fRow.fNumber;
  }
  --fTimes;
  cells.resize(fNames.size());
  for (RowCell& cell : cells) cell.fKind = RowCell::kNone;
  for (std::size_t j = 0; j < fRow.fCells.size(); ++j) {
    if (IsEmpty(fRow.fCells[j])) continue;
    if (j >= fColumns.size() || fColumns[j] == kNoColumn) {
      throw HostIOError(fSource, CellPlace(j),
                        "the column has no name in row " + std::to_string(fHeaderRow) +
                            ", the first that is not empty");
    }
    cells[fColumns[j]] = fRow.fCells[j];
  }
  return true;
}

std::string SheetRows::CellPlace(std::size_t sheetColumn) const {
  return "sheet " + Quoted(fChoice.fNames[fChoice.fChosen]) + ", cell " +
         CellName(sheetColumn, fRow.fNumber);
}

std::string SheetRows::Place(std::size_t column) const { return CellPlace(fSheetColumns[column]); }

std::vector<std::string> SheetRows::Notes() const {
  std::vector<std::string> notes;
  const std::string sheet = "Sheet " + Quoted(fChoice.fNames[fChoice.fChosen]);
  if (fChoice.fNames.size() > 1) {
    std::vector<std::string> others;
    for (std::size_t i = 0; i < fChoice.fNames.size(); ++i) {
      if (i != fChoice.fChosen) others.push_back(Quoted(fChoice.fNames[i]));
    }
    notes.push_back(sheet + " is read; --sheet can name " + JoinAlternatives(others) + " instead.");
  }
  const SheetFindings& found = fpSheet->Findings();
  if (found.fErrors > 0) {
    notes.push_back(sheet + " has " + std::to_string(found.fErrors) + " cell" +
                    (found.fErrors == 1 ? " that shows an error" : "s that show errors") +
                    ", read as missing; the first is " + found.fFirstError + ".");
  }
  if (found.fFormulas > 0) {
    notes.push_back(sheet + " has formulas without a result (" + std::to_string(found.fFormulas) +
                    "), read as missing; a spreadsheet program saves the file with them.");
  }
  if (!found.fFirstMerged.empty()) {
    notes.push_back(sheet + " has merged cells, such as " + found.fFirstMerged +
                    ": the value belongs to the first of them, the others are missing.");
  }
  return notes;
}

}  // namespace MCHost
