// Workbooks, through OpenDataFile: the parts of each are written here as spreadsheet programs do.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <minizip/zip.h>

#include <map>
#include <string>
#include <vector>

#include "host/arrow/DataFile.h"
#include "host/session/HostIOError.h"
#include "tests/host/data/TableFixtures.h"

namespace MCHost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using Parts = std::map<std::string, std::string>;

std::string WriteZip(const std::string& path, const Parts& parts) {
  const zipFile zip = zipOpen64(path.c_str(), APPEND_STATUS_CREATE);
  for (const auto& [name, text] : parts) {
    zipOpenNewFileInZip64(zip, name.c_str(), nullptr, nullptr, 0, nullptr, 0, nullptr, 8, 6, 0);
    zipWriteInFileInZip(zip, text.data(), static_cast<unsigned>(text.size()));
    zipCloseFileInZip(zip);
  }
  zipClose(zip, nullptr);
  return path;
}

// A workbook of a sheet "One" with these rows and a sheet "Two & more".
Parts Xlsx(const std::string& rows, const std::string& behind = "", const char* book = "") {
  const auto sheet = [](const std::string& data) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><worksheet xmlns=\"s\">" + data +
           "</worksheet>";
  };
  return {
      {"xl/workbook.xml",
       "<workbook xmlns:r=\"r\">" + std::string(book) +
           "<sheets><sheet name=\"Chart\" r:id=\"c\"/><sheet name=\"One\" r:id=\"a\"/>"
           "<sheet name=\"Two &amp; more\" r:id=\"b\"/></sheets></workbook>"},
      {"xl/_rels/workbook.xml.rels",
       "<Relationships><Relationship Id=\"a\" Type=\"x/worksheet\" Target=\"worksheets/s1.xml\"/>"
       "<Relationship Id=\"b\" Type=\"x/worksheet\" Target=\"/xl/worksheets/s2.xml\"/>"
       "<Relationship Id=\"c\" Type=\"x/chartsheet\" Target=\"c.xml\"/></Relationships>"},
      // Formats of cells: 0 general, 1 to 5 date, date and time, clock, elapsed, amount.
      {"xl/styles.xml",
       "<styleSheet><numFmts><numFmt numFmtId=\"164\" formatCode=\"[$-409]d\\-mmm\\-yy;@\"/>"
       "<numFmt numFmtId=\"165\" formatCode=\"#,##0.00\\ &quot;days&quot;;[Red]-0.00\"/>"
       "<numFmt numFmtId=\"166\" formatCode=\"[hh]:mm\"/><numFmt numFmtId=\"167\" "
       "formatCode=\"h:mm AM/PM\"/></numFmts><cellStyleXfs><xf numFmtId=\"14\"/></cellStyleXfs>"
       "<cellXfs><xf numFmtId=\"0\"/><xf numFmtId=\"164\"/><xf numFmtId=\"22\"/><xf "
       "numFmtId=\"167\"/><xf numFmtId=\"166\"/><xf numFmtId=\"165\"/></cellXfs></styleSheet>"},
      {"xl/sharedStrings.xml",
       "<sst><si><t>name</t></si><si><r><t>b</t></r><r><t>&#246;b</t></r><rPh><t>no</t></rPh></si>"
       "</sst>"},
      {"xl/worksheets/s1.xml", sheet("<sheetData>" + rows + "</sheetData>" + behind)},
      {"xl/worksheets/s2.xml",
       sheet("<sheetData><row><c><v>2024</v></c></row><row><c><v>7</v></c></row></sheetData>")}};
}

// A spreadsheet of a sheet "One" with these rows and a sheet "Two".
Parts Ods(const std::string& rows) {
  return {{"content.xml",
           "<office:document-content xmlns:office=\"o\" xmlns:table=\"t\" xmlns:text=\"x\" "
           "xmlns:calcext=\"c\"><office:body><office:spreadsheet><table:table table:name=\"One\">" +
               rows +
               "</table:table><table:table table:name=\"Two\"><table:table-row><table:table-cell "
               "office:value-type=\"string\"><text:p>y</text:p></table:table-cell>"
               "</table:table-row></table:table></office:spreadsheet></office:body>"
               "</office:document-content>"}};
}

std::string Row(const std::string& cells) { return "<row>" + cells + "</row>"; }

DataFileOptions SheetOf(const std::string& name) {
  DataFileOptions options;
  options.fReading.fSheet = name;
  return options;
}

std::string ErrorOf(const std::string& path, const std::string& sheet = "") {
  try {
    OpenDataFile(path, SheetOf(sheet), TableStorage::kMemory);
  } catch (const HostIOError& error) {
    return error.Place() + ": " + error.Reason();
  }
  return "no error";
}

constexpr char kHeader[] =
    "<row r=\"3\"><c r=\"B3\" t=\"s\"><v>0</v></c><c r=\"C3\" t=\"inlineStr\"><is><t>x</t></is></c>"
    "</row>";

TEST(Sheet, XlsxCellsAreWhatTheirTypesAndFormatsSay) {
  struct Case {
    const char* fCell;
    const char* fValue;
  };
  const Case cases[] = {
      {"<c><v>1.5</v></c>", "1.5"},
      {"<c t=\"n\" s=\"5\"><v>2</v></c>", "2"},
      {"<c><f>A1*2</f><v>4</v></c>", "4"},
      {"<c t=\"b\"><v>1</v></c>", "1"},
      {"<c t=\"b\"><v>true</v></c>", "1"},
      {"<c t=\"s\"><v>1</v></c>", "0:böb"},
      {"<c t=\"str\"><f>A1</f><v>a &lt; b</v></c>", "0:a < b"},
      {"<c t=\"inlineStr\"><is><r><t>in</t></r><rPh><t>x</t></rPh><r><t>line</t></r></is></c>",
       "0:inline"},
      {"<c s=\"1\"><v>45351</v></c>", "19782"},                    // 2024-02-29
      {"<c s=\"1\"><v>1</v></c>", "-25567"},                       // 1900-01-01
      {"<c s=\"2\"><v>45351.520833333336</v></c>", "1709209800"},  // 12:30
      {"<c s=\"3\"><v>0.52083333333333337</v></c>", "45000"},
      {"<c s=\"4\"><v>1.25</v></c>", "108000"},  // 30 hours
      {"<c t=\"d\"><v>2024-02-29</v></c>", "19782"},
      {"<c s=\"1\"><v>-3</v></c>", "-3"},  // what no date is
  };
  const ScratchFolder folder;
  for (const Case& one : cases) {
    SCOPED_TRACE(one.fCell);
    const std::string rows =
        Row("<c t=\"s\"><v>0</v></c>") + Row("") + Row(one.fCell) + Row("<c s=\"1\"/>");
    // Found by its content, whatever it is named.
    const std::string path = WriteZip(folder.Path("t.csv"), Xlsx(rows));
    const auto table = OpenDataFile(path, {}, TableStorage::kStreamed);
    EXPECT_THAT(Dictionary(*table), SizeIs(1));
    EXPECT_THAT(Cells(*table, 0), ElementsAre(one.fValue));
  }
  Parts prefixed = Xlsx(Row("<c t=\"s\"><v>0</v></c>") + Row("<c><v>5</v></c>"));
  std::string& book = prefixed.at("xl/workbook.xml");
  book.replace(book.find("xmlns:r="), 8, "xmlns:of=");
  for (std::size_t at = 0; (at = book.find("r:id", at)) != std::string::npos; ++at) {
    book.replace(at, 4, "of:id");
  }
  EXPECT_THAT(
      Cells(*OpenDataFile(WriteZip(folder.Path("t.xlsx"), prefixed), {}, TableStorage::kMemory), 0),
      ElementsAre("5"));
  const Parts old = Xlsx(Row("<c t=\"s\"><v>0</v></c>") + Row("<c s=\"1\"><v>0</v></c>"), "",
                         "<workbookPr date1904=\"1\"/>");
  const auto table = OpenDataFile(WriteZip(folder.Path("t.xlsx"), old), {}, TableStorage::kMemory);
  EXPECT_THAT(Cells(*table, 0), ElementsAre("-24107"));  // 1904-01-01
}

TEST(Sheet, XlsxRowsAndColumnsMayHaveGapsAndFaultsThatAreTold) {
  const ScratchFolder folder;
  const std::string rows =
      std::string(kHeader) +
      "<row r=\"5\"><c r=\"C5\"><v>1</v></c></row>"
      "<row r=\"6\"><c r=\"B6\" t=\"s\"><v>1</v></c><c r=\"C6\" t=\"e\"><v>#N/A"
      "</v></c><c r=\"E6\" s=\"1\"/></row>"
      "<row r=\"7\"><c r=\"B7\" t=\"str\"><v>z</v></c><c r=\"C7\" t=\"str\">"
      "<v>n.a.</v></c></row>"
      "<row r=\"8\"><c r=\"C8\"><f>B8</f></c></row><row r=\"900\"/>";
  const std::string merged = "<mergeCells><mergeCell ref=\"B6:B7\"/></mergeCells>";
  const auto table =
      OpenDataFile(WriteZip(folder.Path("t.xlsx"), Xlsx(rows, merged)), {}, TableStorage::kMemory);
  EXPECT_THAT(Dictionary(*table), ElementsAre("name:4", "x:4"));
  EXPECT_THAT(Cells(*table, 0), ElementsAre(".", "0:böb", "1:z"));
  EXPECT_THAT(Cells(*table, 1), ElementsAre("0:1", ".", "1:n.a."));
  EXPECT_THAT(
      table->Notes(),
      ElementsAre("Sheet \"One\" is read; --sheet can name \"Two & more\" instead.",
                  "Sheet \"One\" has 1 cell that shows an error, read as missing; the first is C6, "
                  "#N/A.",
                  HasSubstr("has formulas without a result (1)"),
                  HasSubstr("merged cells, such as B6:B7"),
                  HasSubstr("1 cell of 2 that is text (sheet \"One\", cell C7: \"n.a.\")")));
  const auto other =
      OpenDataFile(folder.Path("t.xlsx"), SheetOf("Two & more"), TableStorage::kMemory);
  EXPECT_THAT(Dictionary(*other), ElementsAre("2024:0"));
  EXPECT_THAT(Cells(*other, 0), ElementsAre("7"));
}

std::string OdsCell(const std::string& attributes, const std::string& inside = "") {
  return "<table:table-cell " + attributes + ">" + inside + "</table:table-cell>";
}

TEST(Sheet, OdsCellsAreWhatTheySay) {
  struct Case {
    std::string fCell;
    std::vector<std::string> fValues;
  };
  const auto of = [](const char* type, const char* value) {
    return "office:value-type=\"" + std::string(type) + "\" " + value;
  };
  const Case cases[] = {
      {OdsCell(of("float", "office:value=\"1.5\""), "<text:p>1,5</text:p>"), {"1.5"}},
      {OdsCell(of("percentage", "office:value=\"0.25\"")), {"0.25"}},
      {OdsCell(of("boolean", "office:boolean-value=\"true\"")), {"1"}},
      {OdsCell(of("date", "office:date-value=\"2024-02-29\"")), {"19782"}},
      {OdsCell(of("date", "office:date-value=\"1970-01-02T00:00:01.500000000\"")), {"86401.5"}},
      {OdsCell(of("time", "office:time-value=\"PT12H30M05S\"")), {"45005"}},
      {OdsCell(of("time", "office:time-value=\"PT30H00M00S\"")), {"108000"}},
      {OdsCell(of("time", "office:time-value=\"-PT00H00M00.5S\"")), {"-0.5"}},
      {OdsCell(of("time", "office:time-value=\"-PT00H00M01.25S\"")), {"-1.25"}},
      {OdsCell(of("string", ""),
               "<office:annotation><text:p>a note</text:p></office:annotation><text:p>a<text:s "
               "text:c=\"2\"/>&amp;<text:span>b</text:span></text:p><text:p>c</text:p>"),
       {"0:a  &b\nc"}},
      {OdsCell(of("string", "office:string-value=\"\" calcext:value-type=\"error\""),
               "<text:p>#N/A</text:p>"),
       {}},
  };
  const std::string header = "<table:table-row table:number-rows-repeated=\"3\">" +
                             OdsCell("table:number-columns-repeated=\"16384\"") +
                             "</table:table-row><table:table-row>" +
                             OdsCell(of("string", ""), "<text:p>x</text:p>") + "</table:table-row>";
  const ScratchFolder folder;
  for (const Case& one : cases) {
    SCOPED_TRACE(one.fCell);
    const std::string path = WriteZip(
        folder.Path("t.ods"), Ods(header + "<table:table-row>" + one.fCell + "</table:table-row>" +
                                  "<table:table-row table:number-rows-repeated=\"1048571\">" +
                                  OdsCell("") + "</table:table-row>"));
    EXPECT_THAT(Cells(*OpenDataFile(path, {}, TableStorage::kMemory), 0), one.fValues);
  }
}

TEST(Sheet, OdsDurationsAreTimesOfDayWhereAllOfThemAre) {
  const auto row = [](const std::vector<std::string>& times) {
    std::string cells;
    for (const std::string& time : times) {
      cells += time[0] == 'P' || time[0] == '-'
                   ? OdsCell("office:value-type=\"time\" office:time-value=\"" + time + "\"")
                   : OdsCell("office:value-type=\"string\"", "<text:p>" + time + "</text:p>");
    }
    return "<table:table-row>" + cells + "</table:table-row>";
  };
  const ScratchFolder folder;
  const std::string path =
      WriteZip(folder.Path("t.ods"),
               Ods(row({"a", "b", "c"}) + row({"PT12H00M00S", "PT12H00M00S", "PT12H00M00S"}) +
                   row({"PT23H59M59S", "PT30H00M00S", "x"})));
  const auto table = OpenDataFile(path, {}, TableStorage::kMemory);
  EXPECT_EQ(table->GetVariable(0).GetTime(), KOVA_Variable::kTimeOfDay);
  EXPECT_THAT(Cells(*table, 0), ElementsAre("43200", "86399"));
  EXPECT_EQ(table->GetVariable(1).GetTime(), KOVA_Variable::kNoTime);
  EXPECT_THAT(Cells(*table, 1), ElementsAre("43200", "108000"));
  EXPECT_THAT(Cells(*table, 2), ElementsAre("0:12:00:00", "1:x"));
  DataFileOptions noon;
  noon.fNullTokens = {"12:00:00"};
  EXPECT_THAT(Cells(*OpenDataFile(path, noon, TableStorage::kMemory), 0),
              ElementsAre(".", "86399"));
  DataFileOptions declared;
  declared.fTypes["a"] = FieldType::kBoolean;
  EXPECT_THAT([&] { OpenDataFile(path, declared, TableStorage::kMemory); },
              testing::ThrowsMessage<HostIOError>(testing::HasSubstr("\"12:00:00\" is not")));
}

TEST(Sheet, OdsRepeatsAndMergedCellsAreCounted) {
  const std::string five = "office:value-type=\"float\" office:value=\"5\"";
  const std::string text = "office:value-type=\"string\"";
  const std::string rows =
      "<table:table-row>" + OdsCell(text, "<text:p>a</text:p>") +
      OdsCell(text, "<text:p>b</text:p>") + OdsCell(text, "<text:p>c</text:p>") +
      "</table:table-row><table:table-row table:number-rows-repeated=\"2\">" +
      OdsCell("table:number-columns-repeated=\"2\" " + five) + "</table:table-row>" +
      "<table:table-row>" + OdsCell("table:number-columns-spanned=\"2\" " + five) +
      "<table:covered-table-cell/>" + OdsCell(five) + "</table:table-row>";
  const ScratchFolder folder;
  const auto table =
      OpenDataFile(WriteZip(folder.Path("t.ods"), Ods(rows)), {}, TableStorage::kMemory);
  EXPECT_THAT(Cells(*table, 0), ElementsAre("5", "5", "5"));
  EXPECT_THAT(Cells(*table, 1), ElementsAre("5", "5", "."));
  EXPECT_THAT(Cells(*table, 2), ElementsAre(".", ".", "5"));
  EXPECT_THAT(table->Notes(), ElementsAre(HasSubstr("--sheet can name \"Two\""),
                                          HasSubstr("merged cells, such as A4:B4")));
}

TEST(Sheet, WhatIsWrongIsNamedWithItsCell) {
  const ScratchFolder folder;
  const auto error = [&folder](const Parts& parts, const std::string& sheet = "") {
    return ErrorOf(WriteZip(folder.Path("t.xlsx"), parts), sheet);
  };
  const std::string header = kHeader;
  EXPECT_EQ(error(Xlsx(header), "One & more"),
            ": there is no sheet \"One & more\" in it; say --sheet \"One\" or \"Two & more\"");
  EXPECT_THAT(error(Xlsx(header + "<row r=\"9\"><c r=\"AB9\"><v>1</v></c></row>")),
              HasSubstr("cell AB9: the column has no name in row 3"));
  EXPECT_THAT(error(Xlsx("<row><c><v>1</v></c><c><v>1</v></c></row>")),
              HasSubstr("cell B1: a column named \"1\" is there already"));
  EXPECT_THAT(error(Xlsx("")), HasSubstr("there are no columns in it"));
  EXPECT_THAT(error(Xlsx(header + "<row><c t=\"s\"><v>99</v></c></row>")),
              HasSubstr("row 4: the cell refers to a text that is not there"));
  EXPECT_THAT(error(Xlsx(header + "<row>")), HasSubstr("the document is not well formed"));
  EXPECT_THAT(error({{"a.txt", "b"}}), HasSubstr("neither an .xlsx nor an .ods workbook"));
  EXPECT_THAT(ErrorOf(folder.Write("t.xls", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1...")),
              HasSubstr("save it as .xlsx without a password"));
  EXPECT_THAT(ErrorOf(folder.Write("t.xlsx", "a,b\n1,2\n")),
              HasSubstr("the file is not a sound zip archive"));
}

// A workbook whose bytes are damaged anywhere is read or refused.
TEST(Sheet, DamageIsRefused) {
  const ScratchFolder folder;
  const std::string whole =
      ReadFile(WriteZip(folder.Path("t.xlsx"), Xlsx(std::string(kHeader) + "<row/>")));
  for (std::size_t i = 0; i + 22 < whole.size(); i += 37) {
    std::string damaged = whole;
    damaged[i] = static_cast<char>(damaged[i] ^ 0x15);
    folder.Write("t.xlsx", damaged);
    (void)ErrorOf(folder.Path("t.xlsx"));
    folder.Write("t.xlsx", whole.substr(0, i));
    EXPECT_NE(ErrorOf(folder.Path("t.xlsx")), "no error") << i;
  }
}

}  // namespace
}  // namespace MCHost
