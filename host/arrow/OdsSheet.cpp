#include "host/arrow/OdsSheet.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "host/arrow/SheetMoments.h"
#include "host/arrow/XmlEntry.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr char kContent[] = "content.xml";
constexpr std::int64_t kMostColumns = 16384;
constexpr std::int64_t kMostRows = std::int64_t{1} << 20;

std::int64_t CountOf(const std::string& text) {
  std::int64_t count = 1;
  std::from_chars(text.data(), text.data() + text.size(), count);
  return std::max<std::int64_t>(count, 1);
}

class TableNames final : public IXmlListener {
 public:
  void Start(std::u16string_view element, const IXmlAttributes& attributes) override {
    if (element == u"table" && fDepth++ == 0) fNames.push_back(attributes.Get(u"table:name"));
  }
  void End(std::u16string_view element) override { fDepth -= element == u"table"; }
  void Text(std::u16string_view) override {}

  std::vector<std::string> fNames;

 private:
  int fDepth = 0;  // of tables in tables
};

class OdsSheet final : public ISheet, private IXmlListener {
 public:
  OdsSheet(const std::string& path, std::size_t sheet)
      : fPath(path),
        fToPass(static_cast<std::ptrdiff_t>(sheet)),
        fDocument(path, kContent, *this) {}

  bool Next(SheetRow& row) override {
    fRow.fCells.clear();
    fbComplete = false;
    while (!fbComplete) {
      if (fbEnded || !fDocument.Scan()) return false;
    }
    row.fNumber = fRow.fNumber;
    row.fTimes = fRow.fTimes;
    row.fCells.swap(fRow.fCells);
    return true;
  }
  const SheetFindings& Findings() const override { return fFindings; }

 private:
  void Start(std::u16string_view element, const IXmlAttributes& attributes) override {
    if (element == u"table" && fDepth++ == 0) fbInside = fToPass-- == 0;
    if (!fbInside || fDepth > 1) return;
    if (fInCell > 0) return StartInCell(element, attributes);
    if (element == u"table-row") return StartRow(attributes);
    const bool isCovered = element == u"covered-table-cell";
    if (isCovered || element == u"table-cell") StartCell(attributes, isCovered);
  }

  void End(std::u16string_view element) override {
    if (element == u"table" && --fDepth == 0) {
      fbEnded = fbInside;
      fbInside = false;
    }
    if (!fbInside || fDepth > 1) return;
    if (fInCell > 0 && --fInCell == 0) EndCell();
    if (element == u"table-row") {
      fbComplete = true;
      // Rows that are told of together are all there is up to the sheet's end, as a rule.
      fNextRow = fRow.fNumber + fRow.fTimes;
    }
  }

  void Text(std::u16string_view text) override {
    if (fParagraph > 0 && fInCell >= fParagraph) AppendUtf8(fText, text);
  }

  void StartRow(const IXmlAttributes& attributes) {
    fRow.fNumber = fNextRow;
    fRow.fTimes = CountOf(attributes.Get(u"table:number-rows-repeated"));
    if (fRow.fNumber + fRow.fTimes > kMostRows + 1)
      Fail("the sheet has more rows than a sheet can");
    fColumn = 0;
  }

  void StartCell(const IXmlAttributes& attributes, bool isCovered) {
    fInCell = 1;
    fParagraph = 0;
    fText.clear();
    fTimes = CountOf(attributes.Get(u"table:number-columns-repeated"));
    fbCovered = isCovered;
    fbError = attributes.Get(u"calcext:value-type") == "error";
    fType = attributes.Get(u"office:value-type");
    fValue = attributes.Get(fType == "date"      ? u"office:date-value"
                            : fType == "time"    ? u"office:time-value"
                            : fType == "boolean" ? u"office:boolean-value"
                            : fType == "string"  ? u"office:string-value"
                                                 : u"office:value");
    const std::int64_t columns = CountOf(attributes.Get(u"table:number-columns-spanned"));
    const std::int64_t rows = CountOf(attributes.Get(u"table:number-rows-spanned"));
    if (columns * rows > 1 && fFindings.fFirstMerged.empty()) {
      fFindings.fFirstMerged =
          CellName(fColumn, fRow.fNumber) + ":" +
          CellName(fColumn + static_cast<std::size_t>(columns) - 1, fRow.fNumber + rows - 1);
    }
  }

  // What a cell shows are its paragraphs; there may be others in notes and shapes.
  void StartInCell(std::u16string_view element, const IXmlAttributes& attributes) {
    ++fInCell;
    if (fInCell == 2) {
      fParagraph = element == u"p" ? 2 : 0;
      if (fParagraph > 0 && !fText.empty()) fText += '\n';
    }
    if (fParagraph == 0) return;
    if (element == u"s")
      fText.append(static_cast<std::size_t>(
                       std::min<std::int64_t>(CountOf(attributes.Get(u"text:c")), kMostColumns)),
                   ' ');
    if (element == u"tab") fText += '\t';
    if (element == u"line-break") fText += '\n';
  }

  void EndCell() {
    const std::size_t first = fColumn;
    const RowCell cell = CellOf();
    const bool isEmpty = cell.fKind == RowCell::kNone || fbCovered;
    const auto times = static_cast<std::size_t>(std::min(fTimes, kMostColumns));
    fColumn += times;
    if (fbError) return NoteError(first);
    if (isEmpty) return;
    if (fColumn > static_cast<std::size_t>(kMostColumns)) {
      Fail("the row has more cells than a sheet can");
    }
    fRow.fCells.resize(fColumn);
    std::fill_n(fRow.fCells.begin() + static_cast<std::ptrdiff_t>(first), times, cell);
  }

  RowCell CellOf() const {
    if (fType.empty()) return {};
    if (fType == "string") return {RowCell::kText, fValue.empty() ? fText : fValue};
    RowCell cell{RowCell::kNumber, fValue};
    if (fType == "boolean") cell.fKind = RowCell::kBoolean;
    if (fType == "time") ShowDuration(cell);
    if (fType == "date") cell = {RowCell::kText, WithoutNanos(fValue)};
    return cell;
  }

  // Seconds with six digits at most behind the point.
  static std::string WithoutNanos(std::string moment) {
    const std::size_t point = moment.find('.');
    if (point == std::string::npos) return moment;
    moment.resize(std::min(moment.size(), point + 7));
    moment.resize(moment.find_last_not_of('0') + 1);
    if (moment.ends_with('.')) moment.pop_back();
    return moment;
  }

  void NoteError(std::size_t column) {
    if (fFindings.fErrors++ > 0) return;
    fFindings.fFirstError = CellName(column, fRow.fNumber) + ", " + fText;
  }

  [[noreturn]] void Fail(const std::string& reason) const {
    throw HostIOError(fPath, "row " + std::to_string(fRow.fNumber), reason);
  }

  std::string fPath;
  SheetFindings fFindings;
  SheetRow fRow;
  std::int64_t fNextRow = 1;
  std::ptrdiff_t fToPass;  // sheets before this one, which are still to come
  int fDepth = 0;          // of tables in tables
  bool fbInside = false;
  bool fbEnded = false;
  bool fbComplete = false;
  std::size_t fColumn = 0;
  int fInCell = 0;     // elements that are open from the cell on
  int fParagraph = 0;  // the same up to the paragraph, 0 outside of one
  std::int64_t fTimes = 1;
  bool fbCovered = false;
  bool fbError = false;
  std::string fType;
  std::string fValue;
  std::string fText;
  XmlEntry fDocument;
};

}  // namespace

std::vector<std::string> OdsSheetNames(const std::string& path) {
  TableNames names;
  XmlEntry(path, kContent, names).ScanAll();
  return std::move(names.fNames);
}

std::unique_ptr<ISheet> OpenOdsSheet(const std::string& path, std::size_t sheet) {
  return std::make_unique<OdsSheet>(path, sheet);
}

}  // namespace MCHost
