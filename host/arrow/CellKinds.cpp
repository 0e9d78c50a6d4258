#include "host/arrow/CellKinds.h"

#include <utility>

#include "host/arrow/CsvKinds.h"
#include "host/arrow/DeclaredKinds.h"

namespace MCHost {

CellKinds::CellKinds(std::string name, FieldType declared)
    : fName(std::move(name)), fDeclared(declared), fKinds(DeclaredKinds(declared)) {}

unsigned CellKinds::Kinds() const {
  const bool areTimes = fKinds != kCsvAll && (fKinds & kCsvTime) != 0;
  return areTimes ? fKinds & ~(kCsvNumber | kCsvWhole) : fKinds;
}

bool CellKinds::IsNumber() const { return (Kinds() & kCsvTypes) == kCsvNumber; }

bool CellKinds::Narrow(const RowCell& cell) {
  fKinds &= KindsOf(cell);
  if ((fKinds & kCsvTypes) == 0) fKinds = kCsvText;
  if (IsNumber() && CsvLosesDigits(cell.fText)) fbDigitsLost = true;
  return fKinds != kCsvText || fDeclared == FieldType::kAny || fDeclared == FieldType::kString;
}

unsigned CellKinds::KindsOf(const RowCell& cell) const {
  unsigned kinds = CsvKindsOf(cell.fText);
  const bool isNumber = (kinds & kCsvNumber) != 0;
  if (cell.fKind == RowCell::kText && fDeclared == FieldType::kAny) {
    return kinds & (kCsvNumber | kCsvBoolean) ? kCsvText : kinds;
  }
  if (fDeclared == FieldType::kInteger && isNumber && !CsvIsWhole(cell.fText)) return kCsvText;
  const bool isDigit = cell.Shown() == "0" || cell.Shown() == "1";
  if (fDeclared == FieldType::kBoolean && isDigit) {
    return kCsvBoolean | kCsvWhole;
  }
  if (!cell.fClock.empty()) kinds |= CsvKindsOf(cell.fClock);
  if (isNumber && !(kinds & kCsvHeld) && CsvHoldsDigits(cell.fText)) kinds |= kCsvHeld;
  return kinds;
}

std::vector<std::string> CellKinds::Notes() const {
  if (IsNumber() && fbDigitsLost) {
    return {"Column \"" + fName +
            "\" holds whole numbers beyond 2^53, whose last digits are lost."};
  }
  if (fKinds != kCsvText || fDeclared != FieldType::kAny) return {};
  const bool isMixed = fSeen[RowCell::kNumber].fCells + fSeen[RowCell::kBoolean].fCells > 0;
  if (!isMixed) return {};
  const std::string remedy = fSeen[RowCell::kText].fCells > 0
                                 ? "; --missing \"" + fName + "=...\" takes texts as missing"
                                 : "";
  return {"Column \"" + fName + "\" holds " + OddTexts() + ", so all of it is read as text" +
          remedy + "."};
}

std::string CellKinds::OddTexts() const {
  const Seen& numbers = fSeen[RowCell::kNumber];
  const Seen& texts = fSeen[RowCell::kText];
  const Seen& booleans = fSeen[RowCell::kBoolean];
  if (texts.fCells == 0) return "both numbers and true or false values";
  const Seen& others = numbers.fCells > 0 ? numbers : booleans;
  const std::int64_t cells = numbers.fCells + texts.fCells + booleans.fCells;
  const bool areTextsFew = texts.fCells <= others.fCells;
  const Seen& few = areTextsFew ? texts : others;
  return std::to_string(few.fCells) + " cell" + (few.fCells == 1 ? "" : "s") + " of " +
         std::to_string(cells) + " that " + (few.fCells == 1 ? "is" : "are") +
         (areTextsFew ? " text (" : " no text (") + few.fPlace + ": " + Quoted(few.fText) + ")";
}

}  // namespace MCHost
