#include "host/arrow/XlsxBook.h"

#include <charconv>
#include <map>
#include <string_view>
#include <utility>

#include "host/arrow/XmlEntry.h"
#include "host/arrow/ZipEntry.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr char kBook[] = "xl/workbook.xml";
constexpr double k1904 = 1462.0;  // 1904-01-01, in days since 1899-12-30

int ToInt(const std::string& text) {
  int value = -1;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

// Which part of the archive a sheet's mark stands for.
class Relations final : public IXmlListener {
 public:
  void Start(std::u16string_view element, const IXmlAttributes& attributes) override {
    if (element != u"Relationship" || !attributes.Get(u"Type").ends_with("/worksheet")) return;
    const std::string target = attributes.Get(u"Target");
    fEntries[attributes.Get(u"Id")] = target.starts_with('/') ? target.substr(1) : "xl/" + target;
  }
  void End(std::u16string_view) override {}
  void Text(std::u16string_view) override {}

  std::map<std::string, std::string> fEntries;
};

class Workbook final : public IXmlListener {
 public:
  Workbook(XlsxBook& book, const Relations& relations) : fBook(book), fRelations(relations) {}
  void Start(std::u16string_view element, const IXmlAttributes& attributes) override {
    if (element == u"workbookPr") {
      const std::string is1904 = attributes.Get(u"date1904");
      if (is1904 == "1" || is1904 == "true") fBook.fDaysBefore = k1904;
    }
    if (element != u"sheet") return;
    const auto entry = fRelations.fEntries.find(attributes.GetPrefixed(u"id"));
    if (entry == fRelations.fEntries.end()) return;
    fBook.fSheets.push_back({attributes.Get(u"name"), entry->second});
  }
  void End(std::u16string_view) override {}
  void Text(std::u16string_view) override {}

 private:
  XlsxBook& fBook;
  const Relations& fRelations;
};

class Styles final : public IXmlListener {
 public:
  explicit Styles(XlsxBook& book) : fBook(book) {}
  void Start(std::u16string_view element, const IXmlAttributes& attributes) override {
    if (element == u"numFmt") {
      fFormats[ToInt(attributes.Get(u"numFmtId"))] = FormatOfCode(attributes.Get(u"formatCode"));
    } else if (element == u"cellXfs") {
      fbCells = true;
    } else if (element == u"xf" && fbCells) {
      const int number = ToInt(attributes.Get(u"numFmtId"));
      const auto own = fFormats.find(number);
      fBook.fStyles.push_back(own != fFormats.end() ? own->second : FormatOfNumber(number));
    }
  }
  void End(std::u16string_view element) override { fbCells = fbCells && element != u"cellXfs"; }
  void Text(std::u16string_view) override {}

 private:
  XlsxBook& fBook;
  std::map<int, SheetFormat> fFormats;
  bool fbCells = false;
};

class SharedTexts final : public IXmlListener {
 public:
  explicit SharedTexts(XlsxBook& book) : fBook(book) {}
  void Start(std::u16string_view element, const IXmlAttributes&) override {
    if (element == u"si") fBook.fTexts.emplace_back();
    if (element == u"rPh") fbSpoken = true;  // how the text is pronounced
    fbText = element == u"t" && !fbSpoken && !fBook.fTexts.empty();
  }
  void End(std::u16string_view element) override {
    fbText = false;
    if (element == u"rPh") fbSpoken = false;
  }
  void Text(std::u16string_view text) override {
    if (fbText) AppendUtf8(fBook.fTexts.back(), text);
  }

 private:
  XlsxBook& fBook;
  bool fbText = false;
  bool fbSpoken = false;
};

void ScanIfThere(const std::string& path, const std::string& name, IXmlListener& listener) {
  if (ZipEntry::IsThere(path, name)) XmlEntry(path, name, listener).ScanAll();
}

}  // namespace

std::shared_ptr<const XlsxBook> XlsxBook::Read(const std::string& path) {
  const auto book = std::make_shared<XlsxBook>();
  Relations relations;
  XmlEntry(path, "xl/_rels/workbook.xml.rels", relations).ScanAll();
  Workbook workbook(*book, relations);
  XmlEntry(path, kBook, workbook).ScanAll();
  Styles styles(*book);
  ScanIfThere(path, "xl/styles.xml", styles);
  SharedTexts texts(*book);
  ScanIfThere(path, "xl/sharedStrings.xml", texts);
  return book;
}

}  // namespace MCHost
