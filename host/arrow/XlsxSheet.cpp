#include "host/arrow/XlsxSheet.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "host/arrow/XmlEntry.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr std::size_t kMostColumns = 16384;

// "C7" as a column from 0; kMostColumns for what is none.
std::size_t ColumnOf(const std::string& cell) {
  std::size_t column = 0;
  for (const char c : cell) {
    if (c < 'A' || c > 'Z' || column > kMostColumns) break;
    column = column * 26 + static_cast<std::size_t>(c - 'A' + 1);
  }
  return std::min(column - 1, kMostColumns);  // none at all wraps around
}

template <class Number>
bool ReadNumber(const std::string& text, Number& value) {
  const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
  return read.ec == std::errc{} && read.ptr == text.data() + text.size();
}

class XlsxSheet final : public ISheet, private IXmlListener {
 public:
  XlsxSheet(const std::string& path, std::shared_ptr<const XlsxBook> book, std::size_t sheet)
      : fPath(path),
        fpBook(std::move(book)),
        fDocument(path, fpBook->fSheets[sheet].fEntry, *this) {}

  bool Next(SheetRow& row) override {
    fRow.fCells.clear();
    fbComplete = false;
    while (!fbComplete) {
      if (!fDocument.Scan()) return false;
    }
    row.fNumber = fRow.fNumber;
    row.fCells.swap(fRow.fCells);
    return true;
  }
  const SheetFindings& Findings() const override { return fFindings; }

 private:
  void Start(std::u16string_view element, const IXmlAttributes& attributes) override {
    if (element == u"row") return StartRow(attributes.Get(u"r"));
    if (element == u"c") return StartCell(attributes);
    if (element == u"rPh") fbSpoken = true;
    if (element == u"f") fbFormula = true;
    const bool isInline = fType == "inlineStr";
    fbValue = fbCell && (isInline ? element == u"t" && !fbSpoken : element == u"v");
    if (element == u"mergeCell" && fFindings.fFirstMerged.empty()) {
      fFindings.fFirstMerged = attributes.Get(u"ref");
    }
  }

  void End(std::u16string_view element) override {
    fbValue = false;
    if (element == u"rPh") fbSpoken = false;
    if (element == u"c" && fbCell) EndCell();
    if (element == u"row") fbComplete = true;
  }

  void Text(std::u16string_view text) override {
    if (fbValue) AppendUtf8(fText, text);
  }

  void StartRow(const std::string& number) {
    ++fRow.fNumber;
    std::int64_t said = 0;
    if (ReadNumber(number, said) && said >= fRow.fNumber) fRow.fNumber = said;
  }

  void StartCell(const IXmlAttributes& attributes) {
    const std::string name = attributes.Get(u"r");
    fColumn = name.empty() ? fRow.fCells.size() : ColumnOf(name);
    if (fColumn >= kMostColumns) Fail("the cell has no column that a sheet has");
    fType = attributes.Get(u"t");
    std::size_t style = 0;
    (void)ReadNumber(attributes.Get(u"s"), style);
    fFormat = style < fpBook->fStyles.size() ? fpBook->fStyles[style] : SheetFormat::kNumber;
    fText.clear();
    fbFormula = false;
    fbCell = true;
  }

  void EndCell() {
    fbCell = false;
    if (fText.empty()) {
      // A formula may well come to an empty text.
      fFindings.fFormulas += fbFormula && fType != "str";
      return;
    }
    if (fType == "e") return NoteError();
    if (fRow.fCells.size() <= fColumn) fRow.fCells.resize(fColumn + 1);
    RowCell& cell = fRow.fCells[fColumn];
    cell.fKind = RowCell::kText;
    cell.fText = fType == "s" ? SharedText() : fText;
    if (fType == "b") {
      cell = {RowCell::kBoolean, fText == "1" || fText == "true" ? "true" : "false"};
    } else if (fType.empty() || fType == "n") {
      cell.fKind = RowCell::kNumber;
      ShowMoment(cell, fFormat, fpBook->fDaysBefore);
    }
  }

  const std::string& SharedText() const {
    std::size_t place = 0;
    if (!ReadNumber(fText, place) || place >= fpBook->fTexts.size()) {
      Fail("the cell refers to a text that is not there");
    }
    return fpBook->fTexts[place];
  }

  void NoteError() {
    if (fFindings.fErrors++ > 0) return;
    fFindings.fFirstError = CellName(fColumn, fRow.fNumber) + ", " + fText;
  }

  [[noreturn]] void Fail(const std::string& reason) const {
    throw HostIOError(fPath, "row " + std::to_string(fRow.fNumber), reason);
  }

  std::string fPath;
  std::shared_ptr<const XlsxBook> fpBook;
  SheetFindings fFindings;
  SheetRow fRow;
  bool fbComplete = false;
  std::size_t fColumn = 0;
  std::string fType;
  SheetFormat fFormat = SheetFormat::kNumber;
  std::string fText;
  bool fbCell = false;
  bool fbFormula = false;
  bool fbValue = false;
  bool fbSpoken = false;
  XmlEntry fDocument;
};

}  // namespace

std::unique_ptr<ISheet> OpenXlsxSheet(const std::string& path, std::shared_ptr<const XlsxBook> book,
                                      std::size_t sheet) {
  return std::make_unique<XlsxSheet>(path, std::move(book), sheet);
}

}  // namespace MCHost
