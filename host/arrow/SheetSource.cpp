#include "host/arrow/SheetSource.h"

#include <array>
#include <fstream>
#include <string_view>
#include <utility>

#include "host/arrow/OdsSheet.h"
#include "host/arrow/SheetRows.h"
#include "host/arrow/XlsxSheet.h"
#include "host/arrow/ZipEntry.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

bool IsOldWorkbook(const std::string& path) {
  std::array<char, 8> start{};
  std::ifstream file(path, std::ios::binary);
  file.read(start.data(), start.size());
  return std::string_view(start.data(), start.size()) == "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
}

CellRowsSource::OpenRows XlsxRows(const std::string& path, const std::string& sheet) {
  const auto book = XlsxBook::Read(path);
  std::vector<std::string> names;
  for (const XlsxBook::Sheet& one : book->fSheets) names.push_back(one.fName);
  const SheetChoice choice = ChooseSheet(path, std::move(names), sheet);
  return [path, book, choice] {
    return std::make_unique<SheetRows>(OpenXlsxSheet(path, book, choice.fChosen), choice, path);
  };
}

CellRowsSource::OpenRows OdsRows(const std::string& path, const std::string& sheet) {
  const SheetChoice choice = ChooseSheet(path, OdsSheetNames(path), sheet);
  return [path, choice] {
    return std::make_unique<SheetRows>(OpenOdsSheet(path, choice.fChosen), choice, path);
  };
}

}  // namespace

bool IsSheetFile(const std::string& path) { return ZipEntry::IsZip(path) || IsOldWorkbook(path); }

std::unique_ptr<IArrowSource> OpenSheet(const std::string& path, const std::string& name,
                                        const std::string& sheet, CellRules rules) {
  if (IsOldWorkbook(path)) {
    throw HostIOError(path, "",
                      "this is an .xls workbook, or one with a password; save it as .xlsx without "
                      "a password");
  }
  if (ZipEntry::IsThere(path, "xl/workbook.xml")) {
    return std::make_unique<CellRowsSource>(name, XlsxRows(path, sheet), std::move(rules));
  }
  if (ZipEntry::IsThere(path, "content.xml")) {
    return std::make_unique<CellRowsSource>(name, OdsRows(path, sheet), std::move(rules));
  }
  throw HostIOError(path, "", "the zip archive is neither an .xlsx nor an .ods workbook");
}

}  // namespace MCHost
